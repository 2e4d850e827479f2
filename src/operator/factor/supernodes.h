// Columns of L with the same pattern.
//
// Source: J. W. H. Liu, E. G. Ng, B. W. Peyton, On finding supernodes for sparse matrix
// computations, SIAM J. Matrix Anal. Appl. 14 (1993).
#pragma once

#include "operator/factor/sparse_matrix.h"

#include <Eigen/Core>

namespace quor {

/// A part of an index array, ascending.
class IndexList {
 public:
  IndexList(const Eigen::VectorXi& array, int begin, int end)
      : begin_(array.data() + begin), end_(array.data() + end) {}
  const int* begin() const { return begin_; }
  const int* end() const { return end_; }
  int size() const { return static_cast<int>(end_ - begin_); }
  int operator[](int i) const { return begin_[i]; }
  int back() const { return end_[-1]; }

 private:
  const int* begin_;
  const int* end_;
};

/// Supernodes: chains c1 < c2 < ... < ck of the elimination tree in which the pattern of each
/// column below the diagonal is its successor and the successor's pattern. So column ci of L has
/// entries exactly in c(i+1) ... ck and in rows that all columns of the supernode share.
/// Supernodes are numbered by their last columns; a parent has a higher number than its children.
class Supernodes {
 public:
  /// None.
  Supernodes() = default;

  /// @param upper         the matrix whose pattern it is, with the entries (i, j), i <= j
  /// @param parent        its elimination tree
  /// @param columnCounts  entries of L below the diagonal, their sum at most 2^31 - 1
  Supernodes(const SparseMatrix& upper, const Eigen::VectorXi& parent,
             const Eigen::VectorXi& columnCounts);

  int count() const { return static_cast<int>(parent_.size()); }

  /// The supernode that holds the first shared row of this one, -1 if there is none.
  int parent(int s) const { return parent_[s]; }

  IndexList columns(int s) const { return {columns_, columnStart_[s], columnStart_[s + 1]}; }

  /// The rows that all columns have in common, below all of them.
  IndexList rows(int s) const { return {rows_, rowStart_[s], rowStart_[s + 1]}; }

 private:
  int findChains(const Eigen::VectorXi& parent, const Eigen::VectorXi& columnCounts);
  void listColumns(int count);
  void listRows(const SparseMatrix& upper, const Eigen::VectorXi& columnCounts);

  Eigen::VectorXi supernodeOf_;  ///< of each column
  Eigen::VectorXi parent_;
  Eigen::VectorXi columns_, columnStart_;
  Eigen::VectorXi rows_, rowStart_;
};

}  // namespace quor
