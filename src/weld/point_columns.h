// The coordinates of ordered points, axis by axis, for comparing several of them at once with a
// point or a box.
#pragma once

#include "util/index.h"
#include "util/machine.h"
#include "weld/point.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace quor {

/// Positions begin .. end-1 of ordered points.
struct Range {
  std::int32_t begin;
  std::int32_t end;
  std::int32_t size() const { return end - begin; }
};

/// The points are put in one by one, from position 0 on. Questions are about the points of a range
/// of at most kMaskBits, and answers sets of them: bit k stands for position range.begin + k.
class PointColumns {
 public:
  using Mask = std::uint32_t;
  static constexpr std::int32_t kMaskBits = 32;

  /// Throws std::bad_alloc.
  /// @param count  number of points there will be
  explicit PointColumns(std::size_t count)
      : stride_(count + 1), coordinates_(new double[3 * stride_]) {}

  void put(std::int32_t position, Point p) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      double* const place = coordinates_.get() + offset(axis, position);
      place[0] = place[1] = p[axis];  // the second completes a pair until the next point comes
    }
  }

  std::array<double, 3> point(std::int32_t position) const {
    return {*column(0, position), *column(1, position), *column(2, position)};
  }

  /// All points of a range.
  static Mask all(Range range) {
    assert(range.size() >= 0 && range.size() <= kMaskBits);
    return static_cast<Mask>((std::uint64_t{1} << toSize(range.size())) - 1);
  }

  /// Those that are near to p.
  Mask nearTo(Point p, Range range, double squaredTolerance) const {
    return below(range, squaredTolerance, [p](auto x, auto y, auto z) {
      return squaredLength(p[0] - x, p[1] - y, p[2] - z);
    });
  }

  /// Those that may be near to some point in the box: all that are not are proven to be too far by
  /// the argument at the head of point.h.
  Mask nearTo(const Box& box, Range range, double squaredTolerance) const {
    return below(range, squaredTolerance, [&box](auto x, auto y, auto z) {
      using Number = decltype(x);
      const auto gapOnAxis = [&box](Number v, std::size_t axis) {
        return gap(v, v, Number{} + box.lo[axis], Number{} + box.hi[axis]);
      };
      return squaredLength(gapOnAxis(x, 0), gapOnAxis(y, 1), gapOnAxis(z, 2));
    });
  }

  /// Those whose distance from a box in any direction is below a limit, all of it rounded.
  /// @param directions  three unit vectors at right angles
  /// @param half        how far it reaches from the center along each
  Mask nearTo(const std::array<double, 3>& center,
              const std::array<std::array<double, 3>, 3>& directions,
              const std::array<double, 3>& half, Range range, double squaredLimit) const {
    return below(range, squaredLimit, [&](auto x, auto y, auto z) {
      using Number = decltype(x);
      const Number dx = x - center[0];
      const Number dy = y - center[1];
      const Number dz = z - center[2];
      const auto gapAlong = [&](std::size_t k) {
        const Number along =
            (dx * directions[k][0] + dy * directions[k][1]) + dz * directions[k][2];
        return gap(along, along, Number{} - half[k], Number{} + half[k]);
      };
      return squaredLength(gapAlong(0), gapAlong(1), gapAlong(2));
    });
  }

  /// The tight box of a range, which is not empty.
  Box box(Range range) const {
    assert(range.size() > 0);
    Box box(point(range.begin).data());
    for (std::int32_t i = range.begin + 1; i < range.end; ++i) {
      box.extend(Box(point(i).data()));
    }
    return box;
  }

 private:
  std::size_t offset(std::size_t axis, std::int32_t position) const {
    assert(toSize(position) + 1 < stride_);
    return axis * stride_ + toSize(position);
  }
  const double* column(std::size_t axis, std::int32_t position) const {
    return coordinates_.get() + offset(axis, position);
  }

  /// Those whose distance is below the squared tolerance.
  /// @param distance  of x, y, z; called with doubles or with vectors of them
  template <typename Distance>
  Mask below(Range range, double squaredTolerance, const Distance& distance) const {
    assert(range.begin >= 0 && range.size() >= 0 && range.size() <= kMaskBits);
    const double* const x = column(0, range.begin);
    const double* const y = column(1, range.begin);
    const double* const z = column(2, range.begin);
    const std::int32_t size = range.size();
#if defined(QUOR_GNU_EXTENSIONS)
    // Two points at a time. A comparison gives a lane of ones or zeros, which selects the bit of
    // its point.
    using Pair = double __attribute__((vector_size(2 * sizeof(double))));
    using PairMask = std::int64_t __attribute__((vector_size(2 * sizeof(std::int64_t))));
    const auto at = [](const double* v) {
      Pair pair;
      std::memcpy(&pair, v, sizeof pair);
      return pair;
    };
    PairMask bit{1, 2};
    PairMask result{0, 0};
    for (std::int32_t k = 0; k < size; k += 2) {
      result |= (distance(at(x + k), at(y + k), at(z + k)) < squaredTolerance) & bit;
      bit <<= 2;
    }
    return static_cast<Mask>(result[0] | result[1]) & all(range);
#else
    Mask result = 0;
    for (std::int32_t k = 0; k < size; ++k) {
      result |= static_cast<Mask>(distance(x[k], y[k], z[k]) < squaredTolerance) << k;
    }
    return result;
#endif
  }

  std::size_t stride_;
  /// One column after the other. Not a vector, which would be written twice.
  std::unique_ptr<double[]> coordinates_;  // NOLINT(modernize-avoid-c-arrays)
};

}  // namespace quor
