#include "weld/sparse_cells.h"

#include "weld/hashing.h"
#include "weld/point_pass.h"
#include "weld/point_table.h"

#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>

namespace quor {
namespace {

/// Numbers of a cell along the axes, as the bit patterns that CellNumbers makes.
using Cell = std::array<std::uint64_t, 3>;

std::uint64_t hashOf(const Cell& cell) {
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
  Cell first(Point p) const {
    return {of(p[0] - tolerance_), of(p[1] - tolerance_), of(p[2] - tolerance_)};
  }
  Cell last(Point p) const {
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

struct CellHash {
  CellNumbers numbers;
  std::uint64_t operator()(Point p) const { return hashOf(numbers.of(p)); }
};

class SparseCells {
 public:
  SparseCells(std::int32_t count, PointArray points, DisjointSets forest, double tolerance)
      : count_(count),
        points_(points),
        forest_(forest),
        squaredTolerance_(tolerance * tolerance),
        numbers_(tolerance),
        table_(count, points, CellHash{numbers_}) {}

  bool run() {
    PointPass pass(count_, points_, table_);
    const auto visitNext = [this](std::int32_t i, std::uint64_t hash) { return visit(i, hash); };
    return pass.run(forest_, visitNext) == count_;
  }

  /// See HashIndex::steps.
  std::uint64_t steps() const { return table_.steps(); }

 private:
  /// Links point i to the near ones before it.
  /// @return false if cells do not suit these points
  bool visit(std::int32_t i, std::uint64_t hash) {
    const Point p = points_[i];
    const std::size_t slot = table_.locate(hash, [&](std::int32_t j) {
      if (hasSameBits(p, points_[j])) {
        forest_.attach(i, j);
        return true;  // whatever is near to point i has been linked to j, or will be
      }
      linkIfNear(i, j);
      return false;
    });
    if (table_.index(slot) != HashIndex::kNone) {
      return !table_.isCrowded(i);
    }
    if (!numbers_.canNumber(p)) {  // one that is not finite is near nothing
      return !isFinite(p) && !table_.isCrowded(i);
    }
    table_.add(slot, hash, i);
    linkBeyondWalls(i);
    ++different_;
    return !table_.isCrowded(i) && !areEqualsRare(different_, i, count_);
  }

  void linkIfNear(std::int32_t i, std::int32_t j) {
    if (squaredDistance(points_[i], points_[j]) < squaredTolerance_) {
      forest_.attach(i, j);
    }
  }

  /// Points of other cells that are near to point i lie beyond a wall that it stands close to.
  void linkBeyondWalls(std::int32_t i) {
    const Cell first = numbers_.first(points_[i]);
    const Cell last = numbers_.last(points_[i]);
    if (first != last) {
      linkInOtherCells(i, first, last);
    }
  }

  void linkInOtherCells(std::int32_t i, const Cell& first, const Cell& last) {
    const Cell own = numbers_.of(points_[i]);
    assert(last[0] - first[0] <= 1 && last[1] - first[1] <= 1 && last[2] - first[2] <= 1);
    for (std::uint64_t x = first[0]; x <= last[0]; ++x) {
      for (std::uint64_t y = first[1]; y <= last[1]; ++y) {
        for (std::uint64_t z = first[2]; z <= last[2]; ++z) {
          if (const Cell cell{x, y, z}; cell != own) {
            table_.locate(hashOf(cell), [&](std::int32_t j) {
              linkIfNear(i, j);
              return false;
            });
          }
        }
      }
    }
  }

  std::int32_t count_;
  PointArray points_;
  DisjointSets forest_;
  double squaredTolerance_;
  CellNumbers numbers_;
  PointTable<CellHash> table_;
  std::int64_t different_ = 0;  ///< points, so far
};

}  // namespace

bool linkInSparseCells(std::int32_t count, PointArray points, DisjointSets forest, double tolerance,
                       std::uint64_t& steps) {
  if (!CellNumbers(tolerance).isUsable()) {
    return false;
  }
  SparseCells cells(count, points, forest, tolerance);
  const bool isDone = cells.run();
  steps += cells.steps();
  return isDone;
}

}  // namespace quor
