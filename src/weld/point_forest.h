// Which points have become one: a union-find forest.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quor {

/// A forest over points 0 .. n-1, kept in the caller's array of parents. Invariant: a parent is
/// never greater than its child, so the root of a tree is its smallest point, whatever the order of
/// the links. Path halving alone keeps the trees shallow enough (Tarjan and van Leeuwen, 1984).
class PointForest {
 public:
  explicit PointForest(std::int32_t* parents) : parents_(parents) {}

  std::int32_t& parent(std::int32_t i) { return parents_[static_cast<std::size_t>(i)]; }

  std::int32_t root(std::int32_t i) {
    while (parent(i) != i) {
      assert(parent(i) < i);
      parent(i) = parent(parent(i));
      i = parent(i);
    }
    return i;
  }

  /// Links point i to an earlier one. Cheap as long as i is a tree of its own.
  void attach(std::int32_t i, std::int32_t earlier) {
    assert(earlier < i);
    if (parent(i) == i) {
      parent(i) = earlier;
    } else {
      link(i, earlier);
    }
  }

  void link(std::int32_t i, std::int32_t j) {
    const std::int32_t ri = root(i);
    const std::int32_t rj = root(j);
    parent(std::max(ri, rj)) = std::min(ri, rj);
  }

 private:
  std::int32_t* parents_;
};

}  // namespace quor
