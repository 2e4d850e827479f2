// Assembles the stiffness matrix of a mesh and cuts blocks out of it.
#pragma once

#include "operator/factor/sparse_matrix.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quor {

/// Assembles the n x n stiffness matrix: symmetric, both triangles stored, an entry for every
/// vertex and every edge (also where it is 0), rows that sum to 0.
/// @param n          number of vertices
/// @param vertices   3n coordinates
/// @param triangles  3m corners in 0 .. n-1, m at most (2^31-1)/9, that checkMesh accepts
SparseMatrix assembleStiffness(std::int32_t n, const std::vector<double>& vertices,
                               const std::vector<std::int32_t>& triangles);

/// Copies the block from a row and a column on: all rows below, and a number of columns. Eigen's
/// block() does the same, and takes 3 to 8 % of a construction more.
/// @param matrix  compressed, rows ascending
std::shared_ptr<const SparseMatrix> copyBlock(const SparseMatrix& matrix, Eigen::Index firstRow,
                                              Eigen::Index firstColumn, Eigen::Index columns);

}  // namespace quor
