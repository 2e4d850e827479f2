// How one triangle is divided until none of its edges is longer than a length.
#pragma once

#include "kit/mesh.h"
#include "kit/split_pattern.h"
#include "kit/triangle_shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

namespace quorkit {

struct SizedCorner {
  Vec3 point;
  double size;         ///< no edge that ends here is to be longer
  std::int32_t index;  ///< of the vertex; without a meaning where triangles are only counted
};
using SizedTriangle = std::array<SizedCorner, 3>;

/// A length for all edges, and shorter ones for those near some vertices.
struct EdgeLengths {
  double longest;
  const double* sizes = nullptr;  ///< of each vertex of the input, or null

  double at(std::int32_t vertex) const {
    return sizes != nullptr ? std::min(longest, sizes[vertex]) : longest;
  }
};

/// @param lengths  what no edge is to be longer than
inline SizedTriangle cornersOf(const MeshView& mesh, std::size_t t, const EdgeLengths& lengths) {
  SizedTriangle corners{};
  for (std::size_t k = 0; k < 3; ++k) {
    const std::int32_t index = mesh.triangles[3 * t + k];
    corners[k] = {pointAt(mesh.vertices, index), lengths.at(index), index};
  }
  return corners;
}

/// The same bits either way round; halves cannot overflow.
inline Vec3 midpoint(Vec3 p, Vec3 q) {
  return {0.5 * p.x + 0.5 * q.x, 0.5 * p.y + 0.5 * q.y, 0.5 * p.z + 0.5 * q.z};
}

/// Sixteen steps of rounding, as a part of the largest coordinate of both ends: no edge of at most
/// this length is split.
constexpr double kFewSteps = 16.0 * std::numeric_limits<double>::epsilon();

/// Divides triangles by depth, the parts of each in the order of their patterns. Whether an edge is
/// split, and where, depends on its ends alone and is the same either way round.
class Division {
 public:
  explicit Division(double longest) : longest_(longest) {}

  /// @param number  (corner, corner, midpoint) -> index of the midpoint's vertex
  /// @param emit    (corners) -> whether to go on; gets every part that is not divided any more
  /// @return whether it came to an end
  /// Throws std::length_error if it goes too deep. No edge of a finite triangle can be halved so
  /// often; parts that stopped shrinking would.
  template <typename Number, typename Emit>
  bool divide(const SizedTriangle& triangle, const Number& number, const Emit& emit) {
    waiting_.assign(1, triangle);
    while (!waiting_.empty()) {
      std::array<SizedCorner, 6> corners{waiting_.back()[0], waiting_.back()[1],
                                         waiting_.back()[2]};
      waiting_.pop_back();
      unsigned sides = 0;
      for (std::size_t e = 0; e < 3; ++e) {
        sides |= isSplit(corners[e], corners[(e + 1) % 3]) ? 1U << e : 0U;
      }
      if (sides == 0) {
        if (!emit(SizedTriangle{corners[0], corners[1], corners[2]})) {
          return false;
        }
        continue;
      }
      for (std::size_t e = 0; e < 3; ++e) {
        if ((sides >> e & 1U) != 0) {
          const SizedCorner& p = corners[e];
          const SizedCorner& q = corners[(e + 1) % 3];
          corners[3 + e].point = midpoint(p.point, q.point);
          corners[3 + e].size = sizeBetween(p, q);
          corners[3 + e].index = number(p, q, corners[3 + e].point);
        }
      }
      if (waiting_.size() > std::size_t{3} * kMostDepth) {
        throw std::length_error("too many triangles");
      }
      const SplitPattern& pattern = kPatterns[sides][isOtherShorter(sides, corners) ? 1 : 0];
      for (std::size_t part = pattern.count; part-- > 0;) {
        const auto& c = pattern.parts[part];
        waiting_.push_back({corners[c[0]], corners[c[1]], corners[c[2]]});
      }
    }
    return true;
  }

 private:
  static constexpr auto kPatterns = [] {
    std::array<std::array<SplitPattern, 2>, 8> patterns{};
    for (unsigned sides = 0; sides < 8; ++sides) {
      patterns[sides][0] = splitPattern(sides, false);
      patterns[sides][1] = splitPattern(sides, true);
    }
    return patterns;
  }();

  /// An edge of a few steps of rounding is left: parts would take any shape, and not get smaller.
  /// Below the smallest normal number there are no such steps, but a midpoint may round to an end.
  static bool isSplit(const SizedCorner& p, const SizedCorner& q) {
    const double least = std::max(std::min(p.size, q.size), fewSteps(p.point, q.point));
    if (!(squaredDistance(p.point, q.point) > least * least)) {
      return false;
    }
    const Vec3 middle = midpoint(p.point, q.point);
    return middle != p.point && middle != q.point;
  }

  static double fewSteps(Vec3 p, Vec3 q) {
    const double largest = std::max(
        {std::abs(p.x), std::abs(p.y), std::abs(p.z), std::abs(q.x), std::abs(q.y), std::abs(q.z)});
    return kFewSteps * largest;
  }

  /// The size at the midpoint of an edge: grows by half of the distance from the smaller end.
  double sizeBetween(const SizedCorner& p, const SizedCorner& q) const {
    const double size = std::min(p.size, q.size);
    if (size == longest_) {
      return size;
    }
    return std::min(longest_, size + 0.25 * std::sqrt(squaredDistance(p.point, q.point)));
  }

  static bool isOtherShorter(unsigned sides, const std::array<SizedCorner, 6>& corners) {
    if (sides != 3 && sides != 5 && sides != 6) {
      return false;
    }
    const Quadrilateral quad = quadrilateralOf(sides);
    return squaredDistance(corners[quad.j].point, corners[quad.q].point) <
           squaredDistance(corners[quad.i].point, corners[quad.p].point);
  }

  /// Between the largest and the smallest number there are 2,098 halvings.
  static constexpr std::size_t kMostDepth = 4096;

  double longest_;
  std::vector<SizedTriangle> waiting_;  ///< parts that are begun and not yet emitted
};

}  // namespace quorkit
