#include "operator/factor/supernodes.h"

#include <cassert>
#include <numeric>

namespace quor {

Supernodes::Supernodes(const SparseMatrix& upper, const Eigen::VectorXi& parent,
                       const Eigen::VectorXi& columnCounts) {
  const int count = findChains(parent, columnCounts);
  listColumns(count);
  parent_.resize(count);
  rowStart_.resize(count + 1);
  rowStart_[0] = 0;
  for (int s = 0; s < count; ++s) {
    const int last = columns(s).back();
    parent_[s] = parent[last] == -1 ? -1 : supernodeOf_[parent[last]];
    rowStart_[s + 1] = rowStart_[s] + columnCounts[last];
  }
  listRows(upper, columnCounts);
}

/// Numbers the supernodes. A column's pattern is at least its parent and the parent's pattern
/// without the parent, so that equal counts say equal patterns.
/// @return how many there are
int Supernodes::findChains(const Eigen::VectorXi& parent, const Eigen::VectorXi& columnCounts) {
  const auto n = static_cast<int>(parent.size());
  Eigen::VectorXi predecessor = Eigen::VectorXi::Constant(n, -1);  // in the chain, one for each
  for (int j = 0; j < n; ++j) {
    if (parent[j] != -1 && columnCounts[j] == columnCounts[parent[j]] + 1) {
      predecessor[parent[j]] = j;
    }
  }
  supernodeOf_.resize(n);
  int count = 0;
  for (int j = n - 1; j >= 0; --j) {
    const bool continues = parent[j] != -1 && predecessor[parent[j]] == j;
    supernodeOf_[j] = continues ? supernodeOf_[parent[j]] : count++;
  }
  supernodeOf_ = (count - 1) - supernodeOf_.array();  // last columns were met in descending order
  return count;
}

void Supernodes::listColumns(int count) {
  const auto n = static_cast<int>(supernodeOf_.size());
  columnStart_ = Eigen::VectorXi::Zero(count + 1);
  for (const int s : supernodeOf_) {
    ++columnStart_[s + 1];
  }
  std::partial_sum(columnStart_.begin(), columnStart_.end(), columnStart_.begin());
  columns_.resize(n);
  Eigen::VectorXi next = columnStart_;
  for (int j = 0; j < n; ++j) {
    columns_[next[supernodeOf_[j]]++] = j;
  }
}

/// Row i of L is a subtree of the elimination tree with root i: all columns on the paths from the
/// entries of row i of the matrix up to i. Walked by supernodes, row by row, so that every list
/// comes out ascending.
void Supernodes::listRows(const SparseMatrix& upper, const Eigen::VectorXi& columnCounts) {
  rows_.resize(rowStart_[count()]);
  Eigen::VectorXi next = rowStart_;
  Eigen::VectorXi visitedBy = Eigen::VectorXi::Constant(count(), -1);
  for (int i = 0; i < columnCounts.size(); ++i) {
    visitedBy[supernodeOf_[i]] = i;
    for (SparseMatrix::InnerIterator entry(upper, i); entry; ++entry) {
      for (int s = supernodeOf_[entry.index()]; visitedBy[s] != i; s = parent_[s]) {
        visitedBy[s] = i;
        rows_[next[s]++] = i;
      }
    }
  }
  assert(next.head(count()) == rowStart_.tail(count()));  // as many rows as were counted
}

}  // namespace quor
