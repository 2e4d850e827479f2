#include "kit/refine.h"

#include "kit/edge_midpoints.h"
#include "kit/split_pattern.h"
#include "kit/triangle_shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace quorkit {
namespace {

struct Corner {
  Point point;
  std::int32_t index;  ///< of the vertex; without a meaning where triangles are only counted
};
using Corners = std::array<Corner, 3>;

/// The same bits either way round; halves cannot overflow.
Point midpoint(Point p, Point q) {
  return {0.5 * p.x + 0.5 * q.x, 0.5 * p.y + 0.5 * q.y, 0.5 * p.z + 0.5 * q.z};
}

bool isSame(Point p, Point q) {
  return p.x == q.x && p.y == q.y && p.z == q.z;
}

/// Whether an edge is to be split. One whose midpoint rounds to an end cannot be.
bool isSplit(Point p, Point q, double squaredLongest) {
  if (!(squaredDistance(p, q) > squaredLongest)) {
    return false;
  }
  const Point middle = midpoint(p, q);
  return !isSame(middle, p) && !isSame(middle, q);
}

constexpr auto kPatterns = [] {
  std::array<std::array<SplitPattern, 2>, 8> patterns{};
  for (unsigned sides = 0; sides < 8; ++sides) {
    patterns[sides][0] = splitPattern(sides, false);
    patterns[sides][1] = splitPattern(sides, true);
  }
  return patterns;
}();

/// Divides one triangle by depth, its parts in the order of their patterns.
class Division {
 public:
  explicit Division(double longest) : squaredLongest_(longest * longest) {}

  /// @param number  (corner, corner, midpoint) -> index of the midpoint's vertex
  /// @param emit    (corners) -> whether to go on; gets every part that is not divided any more
  template <typename Number, typename Emit>
  bool divide(const Corners& triangle, const Number& number, const Emit& emit) {
    waiting_.assign(1, triangle);
    while (!waiting_.empty()) {
      std::array<Corner, 6> corners{waiting_.back()[0], waiting_.back()[1], waiting_.back()[2]};
      waiting_.pop_back();
      unsigned sides = 0;
      for (std::size_t e = 0; e < 3; ++e) {
        if (isSplit(corners[e].point, corners[(e + 1) % 3].point, squaredLongest_)) {
          sides |= 1U << e;
        }
      }
      if (sides == 0) {
        if (!emit(Corners{corners[0], corners[1], corners[2]})) {
          return false;
        }
        continue;
      }
      for (std::size_t e = 0; e < 3; ++e) {
        if ((sides >> e & 1U) != 0) {
          const Corner& p = corners[e];
          const Corner& q = corners[(e + 1) % 3];
          corners[3 + e].point = midpoint(p.point, q.point);
          corners[3 + e].index = number(p, q, corners[3 + e].point);
        }
      }
      const SplitPattern& pattern = kPatterns[sides][isOtherShorter(sides, corners) ? 1 : 0];
      for (std::size_t part = pattern.count; part-- > 0;) {
        const auto& c = pattern.parts[part];
        waiting_.push_back({corners[c[0]], corners[c[1]], corners[c[2]]});
      }
    }
    return true;
  }

  /// Parts that are begun and not yet emitted.
  std::size_t waiting() const { return waiting_.size(); }

 private:
  static bool isOtherShorter(unsigned sides, const std::array<Corner, 6>& corners) {
    if (sides != 3 && sides != 5 && sides != 6) {
      return false;
    }
    const Quadrilateral quad = quadrilateralOf(sides);
    return squaredDistance(corners[quad.j].point, corners[quad.q].point) <
           squaredDistance(corners[quad.i].point, corners[quad.p].point);
  }

  double squaredLongest_;
  std::vector<Corners> waiting_;
};

Corners cornersOf(const MeshView& mesh, std::size_t t) {
  Corners corners{};
  for (std::size_t k = 0; k < 3; ++k) {
    const std::int32_t index = mesh.triangles[3 * t + k];
    corners[k] = {pointAt(mesh.vertices, index), index};
  }
  return corners;
}

/// What the search for a length wants to know.
struct Extent {
  double longestEdge = 0.0;
  double area = 0.0;
};

Extent extentOf(const MeshView& mesh) {
  Extent extent;
  double squared = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const Corners c = cornersOf(mesh, t);
    for (std::size_t e = 0; e < 3; ++e) {
      squared = std::max(squared, squaredDistance(c[e].point, c[(e + 1) % 3].point));
    }
    extent.area += 0.5 * doubleArea(c[0].point, c[1].point, c[2].point);
  }
  extent.longestEdge = std::sqrt(squared);
  return extent;
}

Mesh copyOf(const MeshView& mesh) {
  Mesh copy;
  copy.vertices.assign(mesh.vertices, mesh.vertices + 3 * mesh.vertexCount());
  copy.triangles.assign(mesh.triangles, mesh.triangles + 3 * mesh.triangleCount());
  copy.triangleOrigins.resize(mesh.triangleCount());
  std::iota(copy.triangleOrigins.begin(), copy.triangleOrigins.end(), 0);
  copy.vertexOrigins.resize(2 * mesh.vertexCount());
  for (std::size_t k = 0; k < copy.vertexOrigins.size(); ++k) {
    copy.vertexOrigins[k] = static_cast<std::int32_t>(k / 2);
  }
  return copy;
}

/// Refines to a length for which the number of triangles is known.
Mesh refineToCount(const MeshView& mesh, double longest, std::size_t count) {
  Mesh refined;
  // A new vertex lies on two triangles most often, each of which it divides once more.
  const std::size_t likely = (count - mesh.triangleCount()) / 2;
  refined.vertices.reserve(3 * (mesh.vertexCount() + likely));
  refined.vertices.assign(mesh.vertices, mesh.vertices + 3 * mesh.vertexCount());
  refined.triangles.reserve(3 * count);
  refined.triangleOrigins.reserve(count);
  EdgeMidpoints midpoints(mesh.n, likely);

  Division division(longest);
  const auto number = [&](const Corner& p, const Corner& q, Point middle) {
    const EdgeMidpoints::Found found = midpoints.find(p.index, q.index);
    if (found.isNew) {
      refined.vertices.insert(refined.vertices.end(), {middle.x, middle.y, middle.z});
    }
    return found.vertex;
  };
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    division.divide(cornersOf(mesh, t), number, [&](const Corners& c) {
      refined.triangles.insert(refined.triangles.end(), {c[0].index, c[1].index, c[2].index});
      refined.triangleOrigins.push_back(static_cast<std::int32_t>(t));
      return true;
    });
  }
  refined.vertexOrigins = midpoints.release();
  refined.longestEdge = longest;
  return refined;
}

}  // namespace

std::int64_t countRefined(const MeshView& mesh, double longest, std::int64_t most) {
  Division division(longest);
  std::int64_t count = 0;
  const auto noNumber = [](const Corner&, const Corner&, Point) { return std::int32_t{0}; };
  for (std::size_t t = 0; t < mesh.triangleCount() && count <= most; ++t) {
    division.divide(cornersOf(mesh, t), noNumber, [&](const Corners&) {
      ++count;
      return count + static_cast<std::int64_t>(division.waiting()) <= most;
    });
    count += static_cast<std::int64_t>(division.waiting());
  }
  return count;
}

Mesh refine(const MeshView& mesh, double longest) {
  const std::int64_t count = countRefined(mesh, longest, kMostTriangles);
  if (count > kMostTriangles ||
      mesh.n + (count - mesh.m) > std::numeric_limits<std::int32_t>::max()) {
    throw std::length_error("too many triangles");
  }
  return refineToCount(mesh, longest, static_cast<std::size_t>(count));
}

Mesh refineTo(const MeshView& mesh, std::int32_t wanted) {
  const auto countAt = [&](double length) { return countRefined(mesh, length, wanted); };
  const Extent extent = extentOf(mesh);
  double good = std::nextafter(extent.longestEdge, std::numeric_limits<double>::max());
  if (mesh.m >= wanted || !(extent.longestEdge > 0.0) || countAt(good) > wanted) {
    Mesh copy = copyOf(mesh);
    copy.longestEdge = extent.longestEdge;
    return copy;
  }
  // Triangles of half the square of their longest edge are not far from what comes out.
  constexpr double kStep = 0.7;
  constexpr int kMostSteps = 200;  // so many only where edges cannot be halved any more
  double bad = std::min(good, std::sqrt(4.0 * extent.area / wanted));
  int steps = 0;
  while (bad > 0.0 && countAt(bad) <= wanted && steps < kMostSteps) {
    good = bad;
    bad *= kStep;
    ++steps;
  }
  if (steps == 0) {
    for (double length = bad / kStep; length < good; length /= kStep) {
      if (countAt(length) <= wanted) {
        good = length;
        break;
      }
      bad = length;
    }
  }
  constexpr double kPrecision = 1.001;
  while (bad > 0.0 && steps < kMostSteps && good > kPrecision * bad) {
    const double length = std::sqrt(good) * std::sqrt(bad);
    (countAt(length) <= wanted ? good : bad) = length;
  }
  return refine(mesh, good);
}

}  // namespace quorkit
