// Assembles the stiffness matrix of a mesh, as two blocks.
#pragma once

#include "operator/factor/sparse_matrix.h"
#include "util/progress.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quor {

/// The rows of the free vertices: the columns of the prescribed ones, and those of the free ones.
struct StiffnessBlocks {
  std::shared_ptr<const SparseMatrix> FP;
  std::shared_ptr<const SparseMatrix> FF;
};

/// Assembles the n x n stiffness matrix: symmetric, both triangles stored, an entry for every
/// vertex and every edge (also where it is 0), rows that sum to 0. An entry is the sum of its
/// contributions in the order of the triangles, as Eigen's setFromTriplets would add them.
/// @param n           number of vertices
/// @param prescribed  how many of them are prescribed: the first ones
/// @param vertices    3n coordinates
/// @param triangles   3m corners in 0 .. n-1, m at most (2^31-1)/9, that checkMesh accepts
/// @param progress    is reported to every few thousand columns
StiffnessBlocks assembleStiffness(std::int32_t n, std::int32_t prescribed,
                                  const std::vector<double>& vertices,
                                  const std::vector<std::int32_t>& triangles,
                                  const Progress& progress = {});

}  // namespace quor
