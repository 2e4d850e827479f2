// This Source Code Form is subject to the terms of the Mozilla Public License, v. 2.0. If a copy of
// the MPL was not distributed with this file, You can obtain one at https://mozilla.org/MPL/2.0/.

#include "operator/factor/quotient_graph.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

namespace quor {

std::int64_t QuotientGraph::room(const SparseMatrix& matrix) {
  return matrix.nonZeros() + matrix.nonZeros() / 5 + 2 * matrix.cols();
}

QuotientGraph::QuotientGraph(const SparseMatrix& matrix, int largestMark)
    : n_(toIndex(matrix.cols())),
      nodes_(toSize(n_) + 1),
      elements_(toSize(n_) + 1, Element{0, kUnmarked}),
      sizes_(toSize(n_) + 1, 1),
      parent_(Eigen::VectorXi::Constant(n_ + 1, kNone)),
      firstOfDegree_(parent_),
      lists_(room(matrix)),
      largestMark_(largestMark) {
  assert(base_ <= largestMark - 2 * n_);
  while (bucketBits_ < kMaxBucketBits && (1 << bucketBits_) < n_) {
    ++bucketBits_;
  }
  buckets_.assign(std::size_t{1} << bucketBits_, kNone);
  listNeighbours(matrix);
  sortOutByDegree();
}

/// The diagonal is left out.
void QuotientGraph::listNeighbours(const SparseMatrix& matrix) {
  for (int i = 0; i < n_; ++i) {
    const int begin = listsEnd_;
    for (SparseMatrix::InnerIterator entry(matrix, i); entry; ++entry) {
      lists_[listsEnd_] = entry.index();
      listsEnd_ += entry.index() != i ? 1 : 0;
    }
    const int entries = matrix.outerIndexPtr()[i + 1] - matrix.outerIndexPtr()[i];
    node(i) = {begin, listsEnd_ - begin, 0, entries, kNone, kNone};
  }
  assert(listsEnd_ <= lists_.size());
}

/// Unknowns on their own come first, as roots. Dense rows, which would only cost time, and rows
/// without a diagonal entry come last, below a dummy element. The others await their turn.
void QuotientGraph::sortOutByDegree() {
  node(n_) = {0, 0, 0, 0, kNone, kNone};
  elementOf(n_).mark = kAbsorbed;
  const int dense = std::min(n_ - 2, std::max(16, static_cast<int>(10 * std::sqrt(n_))));
  for (int i = 0; i < n_; ++i) {
    Node& row = node(i);
    const bool hasDiagonal = row.length < row.degree;
    if (hasDiagonal && row.length == 0) {
      elementOf(i).mark = kAbsorbed;
      ++eliminated_;
    } else if (!hasDiagonal || row.degree > dense) {
      sizeOf(i) = 0;
      parent_[i] = n_;
      ++eliminated_;
    } else {
      insertByDegree(i);
    }
  }
}

void QuotientGraph::postorder(int* order) {
  Eigen::VectorXi& firstChild = firstOfDegree_;
  firstChild.setConstant(kNone);
  int firstRoot = kNone;
  for (const bool isElement : {false, true}) {
    for (int i = n_; i >= 0; --i) {
      if ((sizeOf(i) > 0) == isElement) {
        int& first = parent_[i] == kNone ? firstRoot : firstChild[parent_[i]];
        node(i).next = std::exchange(first, i);
      }
    }
  }
  int next = firstRoot;
  for (int place = 0; place < n_; ++place) {  // the dummy is the last root
    while (firstChild[next] != kNone) {
      next = std::exchange(firstChild[next], kNone);
    }
    order[place] = next;
    next = node(next).next != kNone ? node(next).next : parent_[next];
  }
}

}  // namespace quor
