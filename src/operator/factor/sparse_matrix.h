// What the factorization works on.
#pragma once

#include <Eigen/SparseCore>

namespace quor {

/// Sparse matrix of the solver: column-major, 32-bit indices, like everything derived from it.
using SparseMatrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;

/// An order of rows and columns, with 32-bit indices.
using Permutation = Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, int>;

}  // namespace quor
