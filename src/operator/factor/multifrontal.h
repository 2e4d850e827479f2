// The numeric L D L^T factorization of a sparse symmetric matrix by the multifrontal method.
//
// Sources: I. S. Duff, J. K. Reid, The multifrontal solution of indefinite sparse symmetric linear
// equations, ACM Trans. Math. Softw. 9 (1983); J. W. H. Liu, The multifrontal method for sparse
// matrix solution: theory and practice, SIAM Review 34 (1992).
#pragma once

#include "operator/factor/dense_front.h"
#include "operator/factor/front_tree.h"
#include "operator/factor/permuted_triangles.h"
#include "operator/factor/supernodes.h"
#include "util/progress.h"

#include <cstdint>

namespace quor {

/// Where the factor goes: L without its diagonal of ones, by columns, rows ascending, at exactly
/// its structural entries; and D.
struct FactorArrays {
  const int* columnStart;  ///< where each column of L begins in `rows` and `values`
  int* rows;
  double* values;
  double* diagonal;
};

/// How many doubles factorizeFronts allocates for its fronts. Besides, it needs a few numbers per
/// row.
std::int64_t workSize(const FrontTree& tree);

/// Factorizes. Every front adds up the entries of its columns and what is left of its children's
/// fronts, eliminates its columns, stores them, and leaves the rest on a stack for its parent. The
/// fronts' order makes the children's remainders the topmost ones. Nothing is recursive.
/// Throws std::bad_alloc.
/// @param matrix  in the order of elimination; its upper triangle is released when its diagonal has
///                been taken from it
/// @param progress  is reported to by operations, after every front, and within the large ones
/// @return false, and undefined arrays, if a pivot is zero or not finite
bool factorizeFronts(PermutedTriangles& matrix, const Supernodes& supernodes, const FrontTree& tree,
                     VectorWidth width, const FactorArrays& factor, const Progress& progress = {});

}  // namespace quor
