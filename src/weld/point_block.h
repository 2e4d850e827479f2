// A few points side by side, for comparing all of them at once with a point or a box.
#pragma once

#include "weld/point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

namespace quor {

/// Up to kCapacity points; sets of them are bit masks.
class PointBlock {
 public:
  static constexpr std::size_t kCapacity = 32;
  using Mask = std::uint32_t;

  PointBlock() { x_[0] = y_[0] = z_[0] = 0.0; }

  std::size_t size() const { return size_; }
  std::int32_t id(std::size_t j) const { return id_[j]; }

  /// All points.
  Mask all() const { return static_cast<Mask>((std::uint64_t{1} << size_) - 1); }

  void add(std::int32_t id, Point p) {
    id_[size_] = id;
    const std::size_t next = size_ | 1U;  // completes a pair until the next point comes
    x_[size_] = x_[next] = p[0];
    y_[size_] = y_[next] = p[1];
    z_[size_] = z_[next] = p[2];
    ++size_;
  }

  /// Which points are near to p.
  Mask nearTo(Point p, double reach) const {
    return below(
        reach, [p](auto x, auto y, auto z) { return squaredLength(p[0] - x, p[1] - y, p[2] - z); });
  }

  /// Which points may be near to some point in the box.
  Mask nearTo(const Box& box, double reach) const {
    return below(reach, [&box](auto x, auto y, auto z) {
      using Number = decltype(x);
      const auto gapOnAxis = [&box](Number v, std::size_t axis) {
        return gap(v, v, Number{} + box.lo[axis], Number{} + box.hi[axis]);
      };
      return squaredLength(gapOnAxis(x, 0), gapOnAxis(y, 1), gapOnAxis(z, 2));
    });
  }

  /// The tight box of all points. @pre size() > 0
  Box box() const {
    Box box(Point{x_.data()});
    std::tie(box.lo[0], box.hi[0]) = minmax(x_);
    std::tie(box.lo[1], box.hi[1]) = minmax(y_);
    std::tie(box.lo[2], box.hi[2]) = minmax(z_);
    return box;
  }

 private:
  using Coordinates = std::array<double, kCapacity>;

  /// For which points a distance is below the reach.
  /// @param distance  of x, y, z; called with doubles or with vectors of them
  template <typename Distance>
  Mask below(double reach, const Distance& distance) const {
#if defined(__GNUC__)
    // Two points at a time. A comparison gives a lane of ones or zeros, which selects the bit of
    // its point.
    using Pair = double __attribute__((vector_size(2 * sizeof(double))));
    using PairMask = std::int64_t __attribute__((vector_size(2 * sizeof(std::int64_t))));
    const auto at = [](const Coordinates& v, std::size_t j) { return Pair{v[j], v[j + 1]}; };
    PairMask bit{1, 2};
    PairMask result{0, 0};
    for (std::size_t j = 0; j < size_; j += 2) {
      result |= (distance(at(x_, j), at(y_, j), at(z_, j)) < reach) & bit;
      bit <<= 2;
    }
    return static_cast<Mask>(result[0] | result[1]) & all();
#else
    Mask result = 0;
    for (std::size_t j = 0; j < size_; ++j) {
      result |= static_cast<Mask>(distance(x_[j], y_[j], z_[j]) < reach) << j;
    }
    return result;
#endif
  }

  std::pair<double, double> minmax(const Coordinates& v) const {
    double lo = v[0];
    double hi = v[0];
    for (std::size_t j = 1; j < size_; ++j) {
      lo = std::min(lo, v[j]);
      hi = std::max(hi, v[j]);
    }
    return {lo, hi};
  }

  std::size_t size_ = 0;
  Coordinates x_;
  Coordinates y_;
  Coordinates z_;
  std::array<std::int32_t, kCapacity> id_;
};

}  // namespace quor
