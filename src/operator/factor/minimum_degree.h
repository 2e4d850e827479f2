// The order in which the unknowns are eliminated.
#pragma once

#include "operator/factor/sparse_matrix.h"
#include "util/progress.h"

namespace quor {

/// Finds the permutation P for which P A P^T fills in little: exactly that of Eigen's AMDOrdering,
/// in less time.
/// Throws std::length_error("vector") if its working memory has no place in 32-bit indices.
/// @param matrix    A, symmetric, both triangles stored, compressed, rows ascending
/// @param inverse   receives the inverse of P
/// @param progress  is reported to by unknowns, every few thousand
/// @return P
Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse,
                                 const Progress& progress = {});

}  // namespace quor
