#include "operator/factor/front_tree.h"

#include "operator/factor/elimination_tree.h"

#include <algorithm>
#include <cassert>
#include <numeric>

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
  bool isTop(int s) const { return topOf_[s] == s; }
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

/// The place of each supernode's front in the order of elimination: children before parents, and
/// their subtrees side by side.
Eigen::VectorXi placeFronts(const Supernodes& supernodes, const Grouping& grouping) {
  Eigen::VectorXi number(supernodes.count());  // of the front with that top supernode
  int count = 0;
  for (int s = 0; s < supernodes.count(); ++s) {
    number[s] = grouping.isTop(s) ? count++ : -1;
  }
  Eigen::VectorXi parent(count);
  for (int s = 0; s < supernodes.count(); ++s) {
    if (grouping.isTop(s)) {
      const int above = supernodes.parent(s);
      parent[number[s]] = above == -1 ? -1 : number[grouping.topOf(above)];
    }
  }
  const Eigen::VectorXi order = postorder(parent);
  Eigen::VectorXi placeOfNumber(count);
  for (int place = 0; place < count; ++place) {
    placeOfNumber[order[place]] = place;
  }
  Eigen::VectorXi places(supernodes.count());
  for (int s = 0; s < supernodes.count(); ++s) {
    places[s] = placeOfNumber[number[grouping.topOf(s)]];
  }
  return places;
}

/// The fronts by place, still without members.
std::vector<Front> makeFronts(const Supernodes& supernodes, const Grouping& grouping,
                              const Eigen::VectorXi& places) {
  std::vector<Front> fronts(
      static_cast<std::size_t>(places.size() == 0 ? 0 : places.maxCoeff() + 1));
  for (int s = 0; s < supernodes.count(); ++s) {
    if (grouping.isTop(s)) {
      Front& front = fronts[static_cast<std::size_t>(places[s])];
      front.top = s;
      front.columns = grouping.columns(s);
      front.rows = supernodes.rows(s).size();
      if (supernodes.parent(s) != -1) {
        ++fronts[static_cast<std::size_t>(places[supernodes.parent(s)])].children;
      }
    }
  }
  return fronts;
}

/// Lists the supernodes of each front, ascending: a counting sort by place.
void listMembers(const Eigen::VectorXi& places, FrontTree& tree) {
  Eigen::VectorXi next = Eigen::VectorXi::Zero(static_cast<Eigen::Index>(tree.fronts.size()) + 1);
  for (const int place : places) {
    ++next[place + 1];
  }
  std::partial_sum(next.begin(), next.end(), next.begin());
  for (std::size_t place = 0; place < tree.fronts.size(); ++place) {
    tree.fronts[place].memberBegin = next[static_cast<Eigen::Index>(place)];
    tree.fronts[place].memberEnd = next[static_cast<Eigen::Index>(place) + 1];
  }
  tree.members.resize(places.size());
  for (int s = 0; s < places.size(); ++s) {
    tree.members[next[places[s]]++] = s;
  }
}

int largestFront(const std::vector<Front>& fronts) {
  int largest = 0;
  for (const Front& front : fronts) {
    largest = std::max(largest, front.size());
  }
  return largest;
}

/// What the remainders of fronts come to on a stack, from which every front takes its children's.
std::int64_t largestStack(const std::vector<Front>& fronts) {
  std::vector<std::int64_t> stack;
  std::int64_t entries = 0;
  std::int64_t largest = 0;
  for (const Front& front : fronts) {
    for (int child = 0; child < front.children; ++child) {
      assert(!stack.empty());
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
  const Eigen::VectorXi places = placeFronts(supernodes, grouping);
  FrontTree tree;
  tree.fronts = makeFronts(supernodes, grouping, places);
  listMembers(places, tree);
  tree.largestFront = largestFront(tree.fronts);
  tree.largestStack = largestStack(tree.fronts);
  return tree;
}

}  // namespace quor
