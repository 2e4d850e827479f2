#include "kit/edge_weights.h"

#include "kit/triangle_shape.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <tuple>

namespace quorkit {
namespace {

/// From here on a negative sum is not rounding: that of two right angles is about 1e-16, and of
/// needles at most a million times as much.
constexpr double kNegative = -1e-9;

/// What a triangle contributes to the weight of an edge.
struct Share {
  std::int32_t other;  ///< the end of the edge that has the higher number
  std::int32_t triangle;
  double weight;
};

void count(QuorkitFinding& finding, std::int32_t triangle) {
  finding.first = finding.count == 0 ? triangle : std::min(finding.first, triangle);
  ++finding.count;
}

/// The triangles at each vertex that is not the highest of their corners: those with an edge of
/// which it is the lower end.
class LowerEnds {
 public:
  LowerEnds(const MeshView& mesh, const std::vector<bool>& isSound)
      : mesh_(mesh), starts_(mesh.vertexCount() + 2) {
    forEach(isSound, [this](std::int32_t vertex, std::int32_t) { ++starts_[toSize(vertex) + 2]; });
    for (std::size_t v = 2; v < starts_.size(); ++v) {
      starts_[v] += starts_[v - 1];
    }
    triangles_.resize(starts_.back());
    forEach(isSound, [this](std::int32_t vertex, std::int32_t t) {
      triangles_[starts_[toSize(vertex) + 1]++] = t;
    });
  }

  const std::int32_t* begin(std::int32_t vertex) const {
    return triangles_.data() + starts_[toSize(vertex)];
  }
  const std::int32_t* end(std::int32_t vertex) const {
    return triangles_.data() + starts_[toSize(vertex) + 1];
  }

 private:
  template <typename Visit>
  void forEach(const std::vector<bool>& isSound, const Visit& visit) const {
    for (std::int32_t t = 0; t < mesh_.m; ++t) {
      if (isSound[toSize(t)]) {
        const std::int32_t* const corner = mesh_.triangles + 3 * toSize(t);
        const std::int32_t highest = std::max({corner[0], corner[1], corner[2]});
        for (std::size_t k = 0; k < 3; ++k) {
          if (corner[k] != highest) {
            visit(corner[k], t);
          }
        }
      }
    }
  }

  const MeshView& mesh_;
  std::vector<std::size_t> starts_;  ///< of vertex v at v, once all are filled in
  std::vector<std::int32_t> triangles_;
};

class Weights {
 public:
  Weights(const MeshView& mesh, const std::vector<bool>& isSound)
      : mesh_(mesh), ends_(mesh, isSound) {}

  NegativeWeights run() {
    for (std::int32_t v = 0; v < mesh_.n; ++v) {
      shares_.clear();
      for (const std::int32_t* t = ends_.begin(v); t != ends_.end(v); ++t) {
        addShares(v, *t);
      }
      std::sort(shares_.begin(), shares_.end(), [](const Share& a, const Share& b) {
        return std::tie(a.other, a.triangle) < std::tie(b.other, b.triangle);
      });
      sum();
    }
    return found_;
  }

 private:
  /// Those of the triangle's edges that lead from v to a higher vertex.
  void addShares(std::int32_t v, std::int32_t t) {
    const std::int32_t* const corner = mesh_.triangles + 3 * toSize(t);
    const TriangleShape shape =
        shapeOf({pointAt(mesh_.vertices, corner[0]), pointAt(mesh_.vertices, corner[1]),
                 pointAt(mesh_.vertices, corner[2])});
    const std::array<double, 3>& sides = shape.squaredSides;
    for (std::size_t e = 0; e < 3; ++e) {
      const std::int32_t a = corner[e];
      const std::int32_t b = corner[(e + 1) % 3];
      if (std::min(a, b) == v) {  // half the cotangent of the angle opposite
        const double weight =
            (sides[(e + 1) % 3] + sides[(e + 2) % 3] - sides[e]) / (4.0 * shape.twiceArea);
        shares_.push_back({std::max(a, b), t, weight});
      }
    }
  }

  void sum() {
    for (std::size_t begin = 0; begin < shares_.size();) {
      std::size_t end = begin;
      double weight = 0.0;
      for (; end < shares_.size() && shares_[end].other == shares_[begin].other; ++end) {
        weight += shares_[end].weight;
      }
      if (weight < kNegative) {
        count(end - begin == 1 ? found_.atBorder : found_.inside, shares_[begin].triangle);
      }
      begin = end;
    }
  }

  const MeshView& mesh_;
  LowerEnds ends_;
  std::vector<Share> shares_;  ///< of the edges to higher vertices
  NegativeWeights found_;
};

}  // namespace

NegativeWeights negativeWeights(const MeshView& mesh, const std::vector<bool>& isSound) {
  assert(isSound.size() == mesh.triangleCount());
  return Weights(mesh, isSound).run();
}

}  // namespace quorkit
