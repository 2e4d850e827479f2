// The two substitutions of a solve, with a factor that was computed by blocks.
//
// Source: J. W. H. Liu, E. G. Ng, B. W. Peyton, On finding supernodes for sparse matrix
// computations, SIAM J. Matrix Anal. Appl. 14 (1993), for columns with nested patterns.
#pragma once

#include "operator/factor/factorization.h"

namespace quor {

/// Solves L D L^T x = b in place.
///
/// Nearly all of the time goes into reading L. Columns that follow each other with nested patterns,
/// each its successor and the successor's pattern, are taken up to eight at once: their row numbers
/// are read once, the entries of x that they share are fetched once, and L's memory is asked for
/// ahead. In the forward substitution every entry of x still goes through the same operations as in
/// Eigen's; in the backward one its sum has another order.
/// @param factor  successful, and computed by blocks: all entries of L are finite
/// @param x       b, and receives the solution; both in the order of elimination
void substitute(const Factorization& factor, double* x);

}  // namespace quor
