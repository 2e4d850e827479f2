// Points, boxes and the distances between them, with the arithmetic that decides what is near.
//
// The rule: two points are near when ((dx*dx + dy*dy) + dz*dz) < squaredTolerance, in double, where
// squaredTolerance is the tolerance times itself, in double. All that the search skips or joins
// without computing this for a pair follows from one fact: rounding is monotonic. If u <= v then
// fl(u) <= fl(v), hence for non-negative operands a larger difference gives a larger (or equal)
// square, and larger squares a larger (or equal) sum. So with the same operations in the same order
//   - the distance of two boxes, from the gaps along the axes, is at most that of any two points in
//     them: if it is not below squaredTolerance, no pair between the boxes is near;
//   - the diagonal of a box is at least the distance of any two points in it: if it is below
//     squaredTolerance, every pair in the box is near.
// No margin is needed. The argument holds for overflow to infinity and underflow to zero too, since
// these are monotonic as well. Only finite points take part: NaN has no order. And it holds only if
// the same operations are the same: a compiler that contracts a product and a sum in one of these
// places and not in the other (-ffp-contract=fast) breaks it.
#pragma once

#include "util/exact_arithmetic.h"
#include "util/index.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quor {

/// x, y, z of one point, in the caller's array.
using Point = const double*;

/// An array of 3 * count coordinates, addressed by point.
class PointArray {
 public:
  explicit PointArray(const double* coordinates) : coordinates_(coordinates) {}
  Point operator[](std::int32_t i) const { return coordinates_ + 3 * toSize(i); }

 private:
  const double* coordinates_;
};

inline bool isFinite(Point p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

inline std::uint64_t bitsOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

/// Equal points have the same bits, but for zeros of different sign.
inline bool hasSameBits(Point p, Point q) {
  return ((bitsOf(p[0]) ^ bitsOf(q[0])) | (bitsOf(p[1]) ^ bitsOf(q[1])) |
          (bitsOf(p[2]) ^ bitsOf(q[2]))) == 0;
}

inline bool isEqual(Point p, Point q) {
  return p[0] == q[0] && p[1] == q[1] && p[2] == q[2];
}

/// Of a double, or of several at once in a vector type.
template <typename Number>
Number squaredLength(Number dx, Number dy, Number dz) {
  return (dx * dx + dy * dy) + dz * dz;
}

inline double squaredDistance(Point p, Point q) {
  return squaredLength(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

/// A tight axis-aligned box: its bounds are coordinates of points in it.
struct Box {
  std::array<double, 3> lo;
  std::array<double, 3> hi;

  explicit Box(Point p) : lo{p[0], p[1], p[2]}, hi{lo} {}

  void extend(const Box& box) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      lo[axis] = std::min(lo[axis], box.lo[axis]);
      hi[axis] = std::max(hi[axis], box.hi[axis]);
    }
  }

  double squaredDiagonal() const {
    return squaredLength(hi[0] - lo[0], hi[1] - lo[1], hi[2] - lo[2]);
  }

  std::array<double, 3> center() const {
    return {lo[0] + 0.5 * (hi[0] - lo[0]), lo[1] + 0.5 * (hi[1] - lo[1]),
            lo[2] + 0.5 * (hi[2] - lo[2])};
  }

  std::size_t longestAxis() const {
    std::size_t longest = 0;
    for (std::size_t axis = 1; axis < 3; ++axis) {
      if (hi[axis] - lo[axis] > hi[longest] - lo[longest]) {
        longest = axis;
      }
    }
    return longest;
  }
};

template <typename Number>
Number larger(Number a, Number b) {
  return a > b ? a : b;
}

/// The length of the gap between two intervals, 0 if they overlap.
template <typename Number>
Number gap(Number lo1, Number hi1, Number lo2, Number hi2) {
  return larger(larger(lo1 - hi2, lo2 - hi1), Number{});
}

/// Squared distance of two boxes.
inline double squaredDistance(const Box& a, const Box& b) {
  return squaredLength(gap(a.lo[0], a.hi[0], b.lo[0], b.hi[0]),
                       gap(a.lo[1], a.hi[1], b.lo[1], b.hi[1]),
                       gap(a.lo[2], a.hi[2], b.lo[2], b.hi[2]));
}

}  // namespace quor
