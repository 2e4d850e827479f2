// A few points side by side, for comparing one with all of them at once.
#pragma once

#include "weld/point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace quor {

/// Up to kCapacity points; sets of them are bit masks.
class PointBlock {
 public:
  static constexpr std::size_t kCapacity = 32;
  using Mask = std::uint32_t;

  std::size_t size() const { return size_; }
  std::int32_t id(std::size_t j) const { return id_[j]; }

  void add(std::int32_t id, Point p) {
    id_[size_] = id;
    x_[size_] = p[0];
    y_[size_] = p[1];
    z_[size_] = p[2];
    ++size_;
  }

  /// Which points are near to p.
  Mask nearTo(Point p, double reach) const {
#if defined(__GNUC__)
    // Two points at a time, with the very operations of squaredLength. A comparison gives a lane of
    // ones or zeros, which selects the bit of its point. The lane beyond an odd size is 0 0 0.
    const Pair px{p[0], p[0]};
    const Pair py{p[1], p[1]};
    const Pair pz{p[2], p[2]};
    const Pair limit{reach, reach};
    PairMask bit{1, 2};
    PairMask near{0, 0};
    for (std::size_t j = 0; j < size_; j += 2) {
      const Pair dx = px - pairAt(x_, j);
      const Pair dy = py - pairAt(y_, j);
      const Pair dz = pz - pairAt(z_, j);
      near |= ((dx * dx + dy * dy) + dz * dz < limit) & bit;
      bit <<= 2;
    }
    return static_cast<Mask>(near[0] | near[1]) & all();
#else
    Mask near = 0;
    for (std::size_t j = 0; j < size_; ++j) {
      const double distance = squaredLength(p[0] - x_[j], p[1] - y_[j], p[2] - z_[j]);
      near |= static_cast<Mask>(distance < reach) << j;
    }
    return near;
#endif
  }

  /// All points.
  Mask all() const {
    return static_cast<Mask>((std::uint64_t{1} << size_) - 1);
  }

  /// The tight box of all points. @pre size() > 0
  Box box() const {
    Box box(Point{x_.data()});
    const auto [xLo, xHi] = minmax(x_);
    const auto [yLo, yHi] = minmax(y_);
    const auto [zLo, zHi] = minmax(z_);
    box.lo = {xLo, yLo, zLo};
    box.hi = {xHi, yHi, zHi};
    return box;
  }

 private:
#if defined(__GNUC__)
  using Pair = double __attribute__((vector_size(2 * sizeof(double))));
  using PairMask = std::int64_t __attribute__((vector_size(2 * sizeof(std::int64_t))));

  static Pair pairAt(const std::array<double, kCapacity>& v, std::size_t j) {
    return Pair{v[j], v[j + 1]};
  }
#endif

  std::pair<double, double> minmax(const std::array<double, kCapacity>& v) const {
    double lo = v[0];
    double hi = v[0];
    for (std::size_t j = 1; j < size_; ++j) {
      lo = std::min(lo, v[j]);
      hi = std::max(hi, v[j]);
    }
    return {lo, hi};
  }

  std::size_t size_ = 0;
  std::array<double, kCapacity> x_{};
  std::array<double, kCapacity> y_{};
  std::array<double, kCapacity> z_{};
  std::array<std::int32_t, kCapacity> id_{};
};

}  // namespace quor
