// The elimination tree of a sparse symmetric matrix, and what its factor L will look like.
//
// Sources: J. W. H. Liu, The role of elimination trees in sparse factorization, SIAM J. Matrix
// Anal. Appl. 11 (1990); J. R. Gilbert, E. G. Ng, B. W. Peyton, An efficient algorithm to compute
// row and column counts for sparse Cholesky factorization, same journal 15 (1994); T. A. Davis,
// Direct Methods for Sparse Linear Systems (2006), chapter 4.
#pragma once

#include "operator/factor/sparse_matrix.h"

#include <Eigen/Core>

namespace quor {

/// The tree: the parent of column j is the first row below the diagonal in column j of L. A parent
/// has a higher index than its children.
/// @param upper  the matrix; only entries (i, j) with i < j are looked at
/// @return the parent of each column, -1 at a root
Eigen::VectorXi eliminationTree(const SparseMatrix& upper);

/// An order in which every vertex of a forest stands behind its descendants, and these side by
/// side.
/// @param parent  the parent of each vertex, a higher index, or -1
/// @return the vertices in that order; children by ascending index
Eigen::VectorXi postorder(const Eigen::VectorXi& parent);

/// The number of entries of each column of L below the diagonal, in nearly linear time, without L.
/// @param lower   the matrix; only entries (i, j) with i > j are looked at
/// @param parent  its elimination tree
Eigen::VectorXi columnCounts(const SparseMatrix& lower, const Eigen::VectorXi& parent);

}  // namespace quor
