#include "operator/front_tree.h"

#include "operator/elimination_tree.h"

#include <algorithm>

namespace quor {
namespace {

/// The fronts that supernodes join, as long as they grow.
class Grouping {
 public:
  explicit Grouping(const Supernodes& supernodes)
      : supernodes_(supernodes),
        topOf_(Eigen::VectorXi::LinSpaced(supernodes.count(), 0, supernodes.count() - 1)),
        columns_(supernodes.count()),
        zeros_(Eigen::Matrix<std::int64_t, Eigen::Dynamic, 1>::Zero(supernodes.count())) {
    for (int s = 0; s < supernodes.count(); ++s) {
      columns_[s] = supernodes.columns(s).size();
    }
    for (int s = 0; s < supernodes.count(); ++s) {  // children before parents
      if (supernodes.parent(s) != -1) {
        joinIfFewZeros(s, supernodes.parent(s));
      }
    }
    for (int s = supernodes.count() - 1; s >= 0; --s) {  // parents before children
      topOf_[s] = topOf_[topOf_[s]];
    }
  }

  /// The top supernode of the front that s is in.
  int topOf(int s) const { return topOf_[s]; }
  /// The number of columns of a front, by its top supernode.
  int columns(int top) const { return columns_[top]; }

 private:
  /// In the parent's front the child's columns get all rows of that front.
  void joinIfFewZeros(int child, int parent) {
    const std::int64_t columns = columns_[child] + columns_[parent];
    const std::int64_t rows = supernodes_.rows(parent).size();
    const std::int64_t newRows = columns_[parent] + rows - supernodes_.rows(child).size();
    const std::int64_t zeros = zeros_[child] + zeros_[parent] + columns_[child] * newRows;
    const std::int64_t entries = columns * (columns + 1) / 2 + columns * rows;
    if (static_cast<double>(zeros) <= zerosAllowed(columns) * static_cast<double>(entries)) {
      topOf_[child] = parent;
      columns_[parent] = static_cast<int>(columns);
      zeros_[parent] = zeros;
    }
  }

  /// The part of a front's entries of L that may be zeros. By measurement; the time hardly depends
  /// on it.
  static double zerosAllowed(std::int64_t columns) {
    return columns <= 4 ? 1.0 : columns <= 16 ? 0.8 : columns <= 48 ? 0.1 : 0.05;
  }

  const Supernodes& supernodes_;
  Eigen::VectorXi topOf_;
  Eigen::VectorXi columns_;
  Eigen::Matrix<std::int64_t, Eigen::Dynamic, 1> zeros_;
};

/// The parent of each front, both by number among `tops`.
Eigen::VectorXi frontParents(const Supernodes& supernodes, const Grouping& grouping,
                             const Eigen::VectorXi& tops) {
  Eigen::VectorXi numberOf(supernodes.count());
  for (int f = 0; f < tops.size(); ++f) {
    numberOf[tops[f]] = f;
  }
  Eigen::VectorXi parent(tops.size());
  for (int f = 0; f < tops.size(); ++f) {
    const int above = supernodes.parent(tops[f]);
    parent[f] = above == -1 ? -1 : numberOf[grouping.topOf(above)];
  }
  return parent;
}

/// What the remainders of fronts come to on a stack, from which every front takes its children's.
std::int64_t largestStack(const std::vector<Front>& fronts) {
  std::vector<std::int64_t> stack;
  std::int64_t entries = 0;
  std::int64_t largest = 0;
  for (const Front& front : fronts) {
    for (int child = 0; child < front.children; ++child) {
      entries -= stack.back();
      stack.pop_back();
    }
    stack.push_back(front.remainder());
    entries += stack.back();
    largest = std::max(largest, entries);
  }
  return largest;
}

}  // namespace

FrontTree groupIntoFronts(const Supernodes& supernodes) {
  const Grouping grouping(supernodes);
  const int count = supernodes.count();
  Eigen::VectorXi tops(count);
  int frontCount = 0;
  for (int s = 0; s < count; ++s) {
    if (grouping.topOf(s) == s) {
      tops[frontCount++] = s;
    }
  }
  tops.conservativeResize(frontCount);
  const Eigen::VectorXi parent = frontParents(supernodes, grouping, tops);
  const Eigen::VectorXi order = postorder(parent);

  FrontTree tree;
  tree.fronts.reserve(static_cast<std::size_t>(frontCount));
  Eigen::VectorXi placeOf(count);  // of the front with that top supernode
  for (const int f : order) {
    const int top = tops[f];
    placeOf[top] = static_cast<int>(tree.fronts.size());
    tree.fronts.push_back({top, grouping.columns(top), supernodes.rows(top).size(), 0, 0, 0});
    tree.largestFront = std::max(tree.largestFront, tree.fronts.back().size());
  }
  const auto frontOf = [&](int top) -> Front& {
    return tree.fronts[static_cast<std::size_t>(placeOf[top])];
  };
  for (const int f : order) {
    if (parent[f] != -1) {
      ++frontOf(tops[parent[f]]).children;
    }
  }
  tree.largestStack = largestStack(tree.fronts);

  for (int s = 0; s < count; ++s) {
    ++frontOf(grouping.topOf(s)).memberEnd;
  }
  int begin = 0;
  for (Front& front : tree.fronts) {
    front.memberBegin = begin;
    begin += front.memberEnd;
    front.memberEnd = front.memberBegin;
  }
  tree.members.resize(count);
  for (int s = 0; s < count; ++s) {
    tree.members[frontOf(grouping.topOf(s)).memberEnd++] = s;
  }
  return tree;
}

}  // namespace quor
