// The order in which the unknowns are eliminated.
//
// Sources: P. R. Amestoy, T. A. Davis, I. S. Duff, An approximate minimum degree ordering
// algorithm, SIAM J. Matrix Anal. Appl. 17 (1996); T. A. Davis, Direct Methods for Sparse Linear
// Systems (2006), section 7.1, whose way to break ties, and so whose result, is Eigen's too.
#pragma once

#include "api/solver_handle.h"

#include <Eigen/Core>

namespace quor {

using Permutation = Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, int>;

/// Finds the permutation P for which P A P^T fills in little: exactly that of Eigen's AMDOrdering,
/// in two thirds of its time.
/// Throws std::length_error("vector") if its working memory has no place in 32-bit indices.
/// @param matrix   A, symmetric, both triangles stored, compressed, rows ascending
/// @param inverse  receives the inverse of P
/// @return P
Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse);

}  // namespace quor
