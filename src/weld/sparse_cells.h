// Links near points in one pass, for tolerances that are small beside the spacing of the points.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/cell_numbers.h"
#include "weld/point.h"
#include "weld/point_table.h"

#include <cstddef>
#include <cstdint>

namespace quor {

/// The search that is tried first, for every tolerance that it can take: a hash table of cells 64
/// tolerances wide. It is the fastest as long as most points repeat earlier ones and a cell holds
/// few different ones. Where cells turn out to be crowded or too many to number, or repeats to be
/// rare, it gives up. So it takes no more than some eight steps a point.
class SparseCells {
 public:
  /// Throws std::bad_alloc.
  /// @param count      number of points, at least 1
  /// @param forest     over `count` points, any content
  /// @param tolerance  above 0; CellNumbers with it are usable
  SparseCells(std::int32_t count, PointArray points, DisjointSets forest, double tolerance);

  /// Makes a tree of one point of every point, then links every two that are near.
  /// @return whether all points have been linked; otherwise the forest is of no use
  bool link();

  /// See HashIndex::steps.
  std::uint64_t steps() const { return table_.steps(); }

 private:
  struct CellHash {
    CellNumbers numbers;
    std::uint64_t operator()(Point p) const { return hashOf(numbers.of(p)); }
  };

  /// Links point i to the near ones before it.
  /// @return false if cells do not suit these points
  bool visit(std::int32_t i, std::uint64_t hash);
  void linkIfNear(std::int32_t i, std::int32_t j);
  /// Points of other cells that are near to point i lie beyond a wall that it stands close to.
  void linkBeyondWalls(std::int32_t i);
  void linkInOtherCells(std::int32_t i, const Cell& first, const Cell& last);

  std::int32_t count_;
  PointArray points_;
  DisjointSets forest_;
  double squaredTolerance_;
  CellNumbers numbers_;
  PointTable<CellHash> table_;
  std::int64_t different_ = 0;  ///< points, so far
};

}  // namespace quor
