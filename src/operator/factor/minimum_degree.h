// The order in which the unknowns are eliminated.
#pragma once

#include "operator/factor/sparse_matrix.h"

namespace quor {

/// Finds the permutation P for which P A P^T fills in little: exactly that of Eigen's AMDOrdering,
/// in less time.
/// Throws std::length_error("vector") if its working memory has no place in 32-bit indices.
/// @param matrix   A, symmetric, both triangles stored, compressed, rows ascending
/// @param inverse  receives the inverse of P
/// @return P
Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse);

}  // namespace quor
