// Puts points into the order of the cells of a grid along a space-filling curve.
#pragma once

#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Points sorted by cell. The cells are numbered along a Morton curve (Morton, 1966) so that those
/// whose numbers share their upper bits form a box; a box is halved by its next bit.
struct CellOrder {
  std::vector<std::int32_t> points;      ///< point indices, cell by cell
  std::vector<std::uint32_t> cellStart;  ///< 2^cellBits + 1 positions in `points`
  unsigned cellBits = 0;

  /// First position of the cells from `cell` on.
  std::int32_t start(std::uint32_t cell) const {
    return static_cast<std::int32_t>(cellStart[cell]);
  }
};

/// Sorts the given points into a grid of about as many cells. The grid covers the bulk of the
/// points; what lies outside goes to its border cells. It serves as a good order only: a bad one
/// (all points in few cells) costs time elsewhere, never correctness, so cell arithmetic may round
/// as it likes.
/// @param selected  indices of finite points
CellOrder orderByCell(const std::vector<std::int32_t>& selected, PointArray points);

}  // namespace quor
