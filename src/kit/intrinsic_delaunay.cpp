#include "kit/intrinsic_delaunay.h"

#include "kit/edge_pairs.h"
#include "kit/measure.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quorkit {
namespace {

/// Four times the area of a triangle with these sides; 0 if rounding makes them none.
double fourAreas(double a, double b, double c) {
  if (a < b) {
    std::swap(a, b);
  }
  if (a < c) {
    std::swap(a, c);
  }
  if (b < c) {
    std::swap(b, c);
  }
  const double product = (a + (b + c)) * (c - (a - b)) * (c + (a - b)) * (a + (b - c));
  return product > 0.0 ? std::sqrt(product) : 0.0;
}

class Triangulation {
 public:
  Triangulation(const MeshView& mesh, const std::vector<bool>& fixed)
      : corners_(mesh.triangles, mesh.triangles + 3 * mesh.triangleCount()),
        pairs_(pairSides(mesh)),
        lengths_(corners_.size()),
        areas_(mesh.triangleCount()),
        isFixed_(fixed) {
    for (std::int32_t side = 0; side < sideCount(); ++side) {
      lengths_[toSize(side)] = distance(pointAt(mesh.vertices, from(side)),
                                        pointAt(mesh.vertices, from(nextSide(side))));
    }
    for (std::size_t t = 0; t < areas_.size(); ++t) {
      const std::int32_t* const c = mesh.triangles + 3 * t;
      areas_[t] = 2.0 * doubledArea(pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                                    pointAt(mesh.vertices, c[2]));
    }
  }

  /// Flips until every edge that may be flipped is Delaunay.
  void flip() {
    std::vector<std::int32_t> waiting(corners_.size());
    std::vector<bool> isWaiting(corners_.size(), true);
    for (std::int32_t side = 0; side < sideCount(); ++side) {
      waiting[toSize(side)] = sideCount() - 1 - side;
    }
    constexpr std::size_t kFlipsPerSide = 64;
    std::size_t left = kFlipsPerSide * corners_.size();
    while (!waiting.empty() && left > 0) {
      const std::int32_t side = waiting.back();
      waiting.pop_back();
      isWaiting[toSize(side)] = false;
      if (!canFlip(side) || !flipSide(side)) {
        continue;
      }
      --left;
      const std::int32_t other = pairs_[toSize(side)];
      for (const std::int32_t around :
           {nextSide(side), previousSide(side), nextSide(other), previousSide(other)}) {
        if (!isWaiting[toSize(around)]) {
          isWaiting[toSize(around)] = true;
          waiting.push_back(around);
        }
      }
    }
  }

  std::vector<WeightedEdge> edges() const {
    std::vector<WeightedEdge> edges;
    edges.reserve(corners_.size() / 2 + areas_.size() / 2);
    for (std::int32_t side = 0; side < sideCount(); ++side) {
      const std::int32_t other = pairs_[toSize(side)];
      const std::int32_t u = from(side);
      const std::int32_t v = from(nextSide(side));
      if ((other == kNoSide || side < other) && u != v) {
        const double sum = cotangent(side) + (other == kNoSide ? 0.0 : cotangent(other));
        edges.push_back({u, v, 0.5 * sum});
      }
    }
    return edges;
  }

 private:
  std::int32_t sideCount() const { return toIndex(corners_.size()); }
  std::int32_t from(std::int32_t side) const { return corners_[toSize(side)]; }
  double length(std::int32_t side) const { return lengths_[toSize(side)]; }
  double area4(std::int32_t side) const { return areas_[toSize(side / 3)]; }

  /// Of the angle opposite to a side.
  double cotangent(std::int32_t side) const {
    const double a = length(side);
    const double b = length(nextSide(side));
    const double c = length(previousSide(side));
    return ((b - a) * (b + a) + c * c) / area4(side);
  }

  bool canFlip(std::int32_t side) const {
    const std::int32_t other = pairs_[toSize(side)];
    return other != kNoSide && !isFixed_[toSize(side)] && !isFixed_[toSize(other)] &&
           side / 3 != other / 3;
  }

  /// Flips a side whose opposite angles add up to more than pi.
  /// @return whether it did
  bool flipSide(std::int32_t side) {
    constexpr double kRounding = 1e-9;
    const std::int32_t other = pairs_[toSize(side)];
    const double sum = cotangent(side) + cotangent(other);
    if (!(sum < -kRounding)) {
      return false;
    }
    // The pair unfolded: the side along x from 0, one opposite corner above it, the other below.
    const double base = length(side);
    const double left = length(previousSide(side));
    const double right = length(nextSide(side));
    const double otherLeft = length(nextSide(other));
    const double otherRight = length(previousSide(other));
    const double top = along(base, left, right);
    const double bottom = along(base, otherLeft, otherRight);
    const double height = 0.5 * (area4(side) + area4(other)) / base;
    const double diagonal = std::sqrt((top - bottom) * (top - bottom) + height * height);
    const double leftArea = fourAreas(left, otherLeft, diagonal);
    const double rightArea = fourAreas(right, otherRight, diagonal);
    if (!(leftArea > 0.0 && rightArea > 0.0)) {
      return false;
    }
    turn(side, other, diagonal, leftArea, rightArea);
    return true;
  }

  /// The place along the base of a corner at these distances from its ends.
  static double along(double base, double left, double right) {
    return 0.5 * (base + (left - right) * (left + right) / base);
  }

  /// Triangles i j k and j i l, with the side from i to j, become k i l and l j k. The side and its
  /// pair keep their places and become the diagonal.
  void turn(std::int32_t side, std::int32_t other, double diagonal, double leftArea,
            double rightArea) {
    const std::int32_t right = nextSide(side);            // from j to k
    const std::int32_t left = previousSide(side);         // from k to i
    const std::int32_t otherLeft = nextSide(other);       // from i to l
    const std::int32_t otherRight = previousSide(other);  // from l to j
    const std::int32_t k = from(left);
    const std::int32_t l = from(otherRight);
    const Outer leftSide = outerOf(left);
    const Outer rightSide = outerOf(right);
    const Outer otherLeftSide = outerOf(otherLeft);
    const Outer otherRightSide = outerOf(otherRight);
    // First triangle: l k, k i, i l. Second: k l, l j, j k.
    corners_[toSize(side)] = l;
    place(right, leftSide);
    place(left, otherLeftSide);
    corners_[toSize(other)] = k;
    place(otherLeft, otherRightSide);
    place(otherRight, rightSide);
    lengths_[toSize(side)] = lengths_[toSize(other)] = diagonal;
    areas_[toSize(side / 3)] = leftArea;
    areas_[toSize(other / 3)] = rightArea;
  }

  /// A side of the pair's border, before it moves.
  struct Outer {
    std::int32_t side, from, pair;
    double length;
    bool isFixed;
  };
  Outer outerOf(std::int32_t side) const {
    return {side, from(side), pairs_[toSize(side)], length(side), isFixed_[toSize(side)]};
  }

  /// Puts a side of the border to a new place. Two sides of one border may be each other's pair:
  /// the first has updated its pair, so the second finds the new place.
  void place(std::int32_t to, const Outer& outer) {
    corners_[toSize(to)] = outer.from;
    lengths_[toSize(to)] = outer.length;
    isFixed_[toSize(to)] = outer.isFixed;
    moved_.push_back({outer.side, to, outer.pair});
    if (moved_.size() == 4) {
      for (const Move& move : moved_) {
        std::int32_t pair = move.pair;
        for (const Move& also : moved_) {
          pair = also.from == move.pair ? also.to : pair;
        }
        pairs_[toSize(move.to)] = pair;
        if (pair != kNoSide) {
          pairs_[toSize(pair)] = move.to;
        }
      }
      moved_.clear();
    }
  }

  struct Move {
    std::int32_t from, to, pair;
  };

  std::vector<std::int32_t> corners_;
  std::vector<std::int32_t> pairs_;
  std::vector<double> lengths_;
  std::vector<double> areas_;  ///< four times
  std::vector<bool> isFixed_;
  std::vector<Move> moved_;  ///< of the flip at work
};

}  // namespace

std::vector<WeightedEdge> intrinsicDelaunayEdges(const MeshView& mesh,
                                                 const std::vector<bool>& fixed) {
  assert(fixed.size() == 3 * mesh.triangleCount());
  Triangulation triangulation(mesh, fixed);
  triangulation.flip();
  return triangulation.edges();
}

}  // namespace quorkit
