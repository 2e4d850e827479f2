#include "weld/sparse_cells.h"

#include "weld/point_pass.h"

#include <cassert>
#include <cstddef>

namespace quor {

SparseCells::SparseCells(std::int32_t count, PointArray points, DisjointSets forest,
                         double tolerance)
    : count_(count),
      points_(points),
      forest_(forest),
      squaredTolerance_(tolerance * tolerance),
      numbers_(tolerance),
      table_(count, points, CellHash{numbers_}) {
  assert(numbers_.isUsable());
}

bool SparseCells::link() {
  PointPass pass(count_, points_, table_);
  const auto visitNext = [this](std::int32_t i, std::uint64_t hash) { return visit(i, hash); };
  return pass.run(forest_, visitNext) == count_;
}

bool SparseCells::visit(std::int32_t i, std::uint64_t hash) {
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

void SparseCells::linkIfNear(std::int32_t i, std::int32_t j) {
  if (squaredDistance(points_[i], points_[j]) < squaredTolerance_) {
    forest_.attach(i, j);
  }
}

void SparseCells::linkBeyondWalls(std::int32_t i) {
  const Cell first = numbers_.first(points_[i]);
  const Cell last = numbers_.last(points_[i]);
  if (first != last) {
    linkInOtherCells(i, first, last);
  }
}

void SparseCells::linkInOtherCells(std::int32_t i, const Cell& first, const Cell& last) {
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

}  // namespace quor
