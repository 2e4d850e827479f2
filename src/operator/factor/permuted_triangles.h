// The matrix in the order of elimination.
#pragma once

#include "operator/factor/sparse_matrix.h"

namespace quor {

/// The upper triangle of P A P^T with the diagonal, and the lower one without. The rows of a column
/// stand in the order in which A has them, as in what Eigen's twistedBy makes of A's lower
/// triangle.
struct PermutedTriangles {
  SparseMatrix upper, lower;

  /// @param matrix       A, symmetric, both triangles stored, compressed
  /// @param permutation  P
  /// @param inverse      of P
  PermutedTriangles(const SparseMatrix& matrix, const Permutation& permutation,
                    const Permutation& inverse);
};

}  // namespace quor
