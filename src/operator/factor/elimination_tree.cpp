#include "operator/factor/elimination_tree.h"

#include <cassert>
#include <utility>

namespace quor {
namespace {

/// Follows `up` from a vertex to the first that is its own target, and points all on the way there.
int findRoot(Eigen::VectorXi& up, int vertex) {
  int root = vertex;
  while (up[root] != root) {
    root = up[root];
  }
  while (vertex != root) {
    vertex = std::exchange(up[vertex], root);
  }
  return root;
}

/// The place in the postorder of the first descendant of each vertex, of itself at a leaf.
Eigen::VectorXi firstDescendants(const Eigen::VectorXi& parent, const Eigen::VectorXi& order) {
  Eigen::VectorXi first = Eigen::VectorXi::Constant(parent.size(), -1);
  for (int place = 0; place < order.size(); ++place) {
    for (int j = order[place]; j != -1 && first[j] == -1; j = parent[j]) {
      first[j] = place;
    }
  }
  return first;
}

}  // namespace

Eigen::VectorXi eliminationTree(const SparseMatrix& upper) {
  const auto n = static_cast<int>(upper.cols());
  Eigen::VectorXi parent = Eigen::VectorXi::Constant(n, -1);
  Eigen::VectorXi ancestor = parent;  // towards the root, in long steps
  for (int j = 0; j < n; ++j) {
    for (SparseMatrix::InnerIterator entry(upper, j); entry; ++entry) {
      int i = entry.index();
      while (i != -1 && i < j) {
        const int next = std::exchange(ancestor[i], j);
        if (next == -1) {
          parent[i] = j;
        }
        i = next;
      }
    }
  }
  return parent;
}

Eigen::VectorXi postorder(const Eigen::VectorXi& parent) {
  const auto n = static_cast<int>(parent.size());
  Eigen::VectorXi firstChild = Eigen::VectorXi::Constant(n, -1);
  Eigen::VectorXi sibling(n);
  int firstRoot = -1;
  for (int j = n - 1; j >= 0; --j) {
    assert(parent[j] == -1 || (parent[j] > j && parent[j] < n));
    int& first = parent[j] == -1 ? firstRoot : firstChild[parent[j]];
    sibling[j] = std::exchange(first, j);
  }
  Eigen::VectorXi order(n);
  for (int place = 0, next = firstRoot; place < n; ++place) {
    while (firstChild[next] != -1) {  // down to a leaf, or a vertex whose children are all placed
      next = std::exchange(firstChild[next], -1);
    }
    order[place] = next;
    next = sibling[next] != -1 ? sibling[next] : parent[next];
  }
  return order;
}

Eigen::VectorXi columnCounts(const SparseMatrix& lower, const Eigen::VectorXi& parent) {
  // Row i of L is a subtree with root i of the elimination tree. Its leaves are found in postorder:
  // column j is one if no earlier entry of the row is a descendant of j. Every leaf adds one to the
  // columns from it to i, every two leaves that follow each other share those from their lowest
  // common ancestor on: `change` holds these as differences along the tree.
  const auto n = static_cast<int>(parent.size());
  const Eigen::VectorXi order = postorder(parent);
  const Eigen::VectorXi first = firstDescendants(parent, order);
  Eigen::VectorXi change = Eigen::VectorXi::Ones(n);  // the diagonal
  Eigen::VectorXi lastFirst = Eigen::VectorXi::Constant(n, -1);
  Eigen::VectorXi lastLeaf = lastFirst;
  Eigen::VectorXi ancestor = Eigen::VectorXi::LinSpaced(n, 0, n - 1);
  for (const int j : order) {
    for (SparseMatrix::InnerIterator entry(lower, j); entry; ++entry) {
      const int i = entry.index();
      if (i <= j || first[j] <= lastFirst[i]) {
        continue;
      }
      lastFirst[i] = first[j];
      const int earlier = std::exchange(lastLeaf[i], j);
      ++change[j];
      --change[earlier == -1 ? i : findRoot(ancestor, earlier)];
    }
    if (parent[j] != -1) {
      ancestor[j] = parent[j];
    }
  }
  // Each column's own diagonal entry does not reach its parent.
  for (int j = 0; j < n; ++j) {
    --change[j];
    if (parent[j] != -1) {
      change[parent[j]] += change[j];
    }
  }
  return change;
}

}  // namespace quor
