#include "kit/flip.h"

#include "kit/edge_pairs.h"
#include "kit/measure.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>

namespace quorkit {
namespace {

/// How far four corners may be from one plane, as a part of their longest distance. STL files hold
/// single precision, so faces across the axes are flat to about 1e-7.
constexpr double kFlat = 1e-6;

/// The corners of two triangles i j k and j i l, relative to i.
struct Pair {
  Vec3 j, k, l;
};

bool isFlatAndConvex(const Pair& p) {
  const Vec3 upper = cross(p.j, p.k);
  const Vec3 lower = cross(p.l, p.j);
  const Vec3 left = cross(p.l, p.k);
  const Vec3 right = cross(p.k - p.j, p.l - p.j);
  const double squared[] = {dot(upper, upper), dot(lower, lower), dot(left, left),
                            dot(right, right)};
  const double smallest = std::sqrt(*std::min_element(std::begin(squared), std::end(squared)));
  const double size =
      std::sqrt(std::max({dot(p.j, p.j), dot(p.k, p.k), dot(p.l, p.l), squaredDistance(p.k, p.l),
                          squaredDistance(p.j, p.k), squaredDistance(p.j, p.l)}));
  const double volume = std::abs(dot(p.l, upper));  // six times that of the tetrahedron
  // The height over a triangle is the volume divided by twice its area. The new triangles must not
  // be degenerate either.
  return volume <= kFlat * size * smallest && smallest > kFlat * size * size &&
         dot(upper, lower) > 0.0 && dot(upper, left) > 0.0 && dot(upper, right) > 0.0;
}

/// Whether the angles at k and l add up to more than pi, clearly: their cotangents add up to less
/// than 0.
bool isDelaunayViolated(const Pair& p) {
  constexpr double kRounding = 1e-9;
  const auto cotangent = [&p](Vec3 apex) {
    const Vec3 u = Vec3{0.0, 0.0, 0.0} - apex;
    const Vec3 v = p.j - apex;
    const Vec3 normal = cross(u, v);
    return dot(u, v) / std::sqrt(dot(normal, normal));
  };
  return cotangent(p.k) + cotangent(p.l) < -kRounding;
}

class Flipping {
 public:
  Flipping(const double* vertices, std::int32_t n, std::vector<std::int32_t>& triangles,
           const std::vector<std::int32_t>& labels, std::vector<bool>& isFixed)
      : vertices_(vertices),
        corners_(triangles),
        labels_(labels),
        isFixed_(isFixed),
        pairs_(pairSides({n, vertices, toIndex(triangles.size() / 3), triangles.data()})) {}

  void run() {
    std::vector<std::int32_t> waiting(corners_.size());
    std::vector<bool> isWaiting(corners_.size(), true);
    for (std::size_t k = 0; k < waiting.size(); ++k) {
      waiting[k] = toIndex(waiting.size() - 1 - k);
    }
    constexpr std::size_t kFlipsPerSide = 32;
    std::size_t left = kFlipsPerSide * corners_.size();
    while (!waiting.empty() && left > 0) {
      const std::int32_t side = waiting.back();
      waiting.pop_back();
      isWaiting[toSize(side)] = false;
      if (!isToBeFlipped(side)) {
        continue;
      }
      --left;
      const std::int32_t other = pairs_[toSize(side)];
      flip(side, other);
      for (const std::int32_t around :
           {nextSide(side), previousSide(side), nextSide(other), previousSide(other)}) {
        if (!isWaiting[toSize(around)]) {
          isWaiting[toSize(around)] = true;
          waiting.push_back(around);
        }
      }
    }
  }

 private:
  std::int32_t from(std::int32_t side) const { return corners_[toSize(side)]; }

  bool isToBeFlipped(std::int32_t side) const {
    const std::int32_t other = pairs_[toSize(side)];
    if (other == kNoSide || isFixed_[toSize(side)] || isFixed_[toSize(other)] ||
        (!labels_.empty() && labels_[toSize(side / 3)] != labels_[toSize(other / 3)])) {
      return false;
    }
    const std::int32_t i = from(side);
    const std::int32_t j = from(other);
    const std::int32_t k = from(previousSide(side));
    const std::int32_t l = from(previousSide(other));
    if (k == l) {
      return false;
    }
    const Vec3 origin = pointAt(vertices_, i);
    const Pair pair = {pointAt(vertices_, j) - origin, pointAt(vertices_, k) - origin,
                       pointAt(vertices_, l) - origin};
    return isDelaunayViolated(pair) && isFlatAndConvex(pair) && !isEdge(side, l);
  }

  /// Whether the corner opposite to a side is joined to a vertex already: goes around that corner
  /// both ways, up to the border.
  bool isEdge(std::int32_t side, std::int32_t vertex) const {
    const std::int32_t start = previousSide(side);  // leads from the corner
    std::int32_t around = start;
    do {
      if (from(nextSide(around)) == vertex) {
        return true;
      }
      const std::int32_t other = pairs_[toSize(previousSide(around))];
      if (other == kNoSide) {
        return isEdgeOtherWay(start, vertex);
      }
      around = other;
    } while (around != start);
    return false;
  }

  bool isEdgeOtherWay(std::int32_t start, std::int32_t vertex) const {
    for (std::int32_t around = start;;) {
      if (from(previousSide(around)) == vertex) {
        return true;
      }
      const std::int32_t other = pairs_[toSize(around)];
      if (other == kNoSide) {
        return false;
      }
      around = nextSide(other);
    }
  }

  /// Triangles i j k and j i l become l k i and k l j.
  void flip(std::int32_t side, std::int32_t other) {
    struct Outer {
      std::int32_t to, from, pair;
      bool isFixed;
    };
    const auto outer = [this](std::int32_t to, std::int32_t at) {
      return Outer{to, from(at), pairs_[toSize(at)], isFixed_[toSize(at)]};
    };
    const std::array<Outer, 4> moves = {
        outer(nextSide(side), previousSide(side)), outer(previousSide(side), nextSide(other)),
        outer(nextSide(other), previousSide(other)), outer(previousSide(other), nextSide(side))};
    corners_[toSize(side)] = moves[2].from;
    corners_[toSize(other)] = moves[0].from;
    for (const Outer& move : moves) {
      corners_[toSize(move.to)] = move.from;
      isFixed_[toSize(move.to)] = move.isFixed;
      pairs_[toSize(move.to)] = move.pair;
      if (move.pair != kNoSide) {
        assert(move.pair / 3 != side / 3 && move.pair / 3 != other / 3);
        pairs_[toSize(move.pair)] = move.to;
      }
    }
  }

  const double* vertices_;
  std::vector<std::int32_t>& corners_;
  const std::vector<std::int32_t>& labels_;
  std::vector<bool>& isFixed_;
  std::vector<std::int32_t> pairs_;
};

}  // namespace

void flipFlatEdges(const double* vertices, std::int32_t n, std::vector<std::int32_t>& triangles,
                   const std::vector<std::int32_t>& labels, std::vector<bool>& isFixed) {
  assert(isFixed.size() == triangles.size());
  assert(labels.empty() || 3 * labels.size() == triangles.size());
  Flipping(vertices, n, triangles, labels, isFixed).run();
}

MeshData flip(const MeshView& mesh, const std::int32_t* faces) {
  MeshData flipped = copyOf(mesh);
  std::vector<std::int32_t> labels;
  if (faces != nullptr) {
    labels.assign(faces, faces + mesh.triangleCount());
  }
  std::vector<bool> isFixed(flipped.triangles.size());
  flipFlatEdges(mesh.vertices, mesh.n, flipped.triangles, labels, isFixed);
  return flipped;
}

}  // namespace quorkit
