// The cells of a regular grid, for finding near points with a hash table.
#pragma once

#include "weld/hashing.h"
#include "weld/point.h"

#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>

namespace quor {

/// Numbers of a cell along the axes, as the bit patterns that CellNumbers makes.
using Cell = std::array<std::uint64_t, 3>;

inline std::uint64_t hashOf(const Cell& cell) {
  // The sum tells apart all cells of any real extent, the mixing spreads them.
  const std::uint64_t sum = sumOfMultiples(cell[0], cell[1], cell[2]);
  return mixHash(sum, sum >> 32U);
}

/// Numbers cells along an axis: a coordinate's cell is the integer nearest to its product with the
/// number of cells per unit. Adding 1.5 * 2^52 leaves just that integer in the lower bits of a
/// double, so that bit patterns count like the integers as long as those are below 2^51. The number
/// of a coordinate is a monotonic function of it, since the product and the sum are.
///
/// If p and q are near, |fl(p - q)| < tolerance on each axis (see point.h), hence
/// fl(p - tolerance) <= q <= fl(p + tolerance): were q above, then q > p + tolerance exactly, since
/// q itself is a double, and fl(q - p) >= tolerance. So q's cell is one from that of
/// fl(p - tolerance) to that of fl(p + tolerance). These two are 1/32 of a cell apart, and as long
/// as numbers stay below 2^48 rounding moves either by less than 1/16: they have the same number,
/// or two that follow each other.
class CellNumbers {
 public:
  explicit CellNumbers(double tolerance)
      : tolerance_(tolerance), cellsPerUnit_(1 / (64 * tolerance)) {}

  /// Whether the tolerance is neither too large nor too small for cells at all. The upper bound
  /// keeps the number of a coordinate whose square does not overflow from overflowing.
  bool isUsable() const { return cellsPerUnit_ > 0.0 && cellsPerUnit_ < 0x1p511; }
  bool canNumber(Point p) const { return canNumber(p[0]) && canNumber(p[1]) && canNumber(p[2]); }
  Cell of(Point p) const { return {of(p[0]), of(p[1]), of(p[2])}; }
  /// The cells where points near to p may be are those from the first to the last, on each axis.
  /// @param p  one that can be numbered
  Cell first(Point p) const {
    assert(canNumber(p));
    return {of(p[0] - tolerance_), of(p[1] - tolerance_), of(p[2] - tolerance_)};
  }
  Cell last(Point p) const {
    assert(canNumber(p));
    return {of(p[0] + tolerance_), of(p[1] + tolerance_), of(p[2] + tolerance_)};
  }

 private:
  bool canNumber(double coordinate) const {
    return (std::abs(coordinate) + tolerance_) * cellsPerUnit_ < 0x1p48;
  }
  std::uint64_t of(double coordinate) const {
    return bitsOf(coordinate * cellsPerUnit_ + 0x1.8p52);
  }

  double tolerance_;
  double cellsPerUnit_;
};

}  // namespace quor
