// Puts points into the order of the voxels of a grid along a space-filling curve.
#pragma once

#include "util/index.h"
#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Points sorted by voxel. The voxels are numbered along a Morton curve (Morton, 1966): those whose
/// numbers share their upper bits form a box, which the next bit halves. Numbers have one bit more
/// than the grid needs: all points outside the grid share the first voxel of the upper half.
struct MortonOrder {
  std::vector<std::int32_t> points;       ///< point indices, voxel by voxel
  std::vector<std::uint32_t> voxelStart;  ///< positions in `points`
  unsigned voxelBits = 0;                 ///< of a voxel number

  /// First position of the voxels from `voxel` on.
  std::int32_t start(std::uint32_t voxel) const {
    return toIndex(voxel < voxelStart.size() ? voxelStart[voxel] : points.size());
  }
};

/// Sorts the given points into a grid of about half as many voxels, no more than twice as long as
/// wide, that covers the bulk of them; a few far away must not shrink the others into one voxel. It
/// serves as a good order only: a bad one costs time elsewhere, never correctness, so voxel
/// arithmetic may round as it likes.
/// @param selected  indices of finite points
MortonOrder orderAlongMortonCurve(const std::vector<std::int32_t>& selected, PointArray points);

}  // namespace quor
