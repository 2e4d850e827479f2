// Puts points into the order of the cells of a grid along a space-filling curve.
#pragma once

#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Points sorted by cell. The cells are numbered along a Morton curve (Morton, 1966): those whose
/// numbers share their upper bits form a box, which the next bit halves. Numbers have one bit more
/// than the grid needs: all points outside the grid share the first cell of the upper half.
struct CellOrder {
  std::vector<std::int32_t> points;      ///< point indices, cell by cell
  std::vector<std::uint32_t> cellStart;  ///< positions in `points`
  unsigned cellBits = 0;                 ///< of a cell number

  /// First position of the cells from `cell` on.
  std::int32_t start(std::uint32_t cell) const {
    return static_cast<std::int32_t>(cell < cellStart.size() ? cellStart[cell] : points.size());
  }
};

/// Sorts the given points into a grid of about as many cells, no more than twice as long as wide,
/// that covers the bulk of them; a few far away must not shrink the others into one cell. It serves
/// as a good order only: a bad one costs time elsewhere, never correctness, so cell arithmetic may
/// round as it likes.
/// @param selected  indices of finite points
CellOrder orderByCell(const std::vector<std::int32_t>& selected, PointArray points);

}  // namespace quor
