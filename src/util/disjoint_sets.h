// Which elements have become one: a union-find forest.
//
// Source: R. E. Tarjan, J. van Leeuwen, Worst-case analysis of set union algorithms, J. ACM 31
// (1984): linking by index, path halving.
#pragma once

#include "util/index.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <numeric>
#include <vector>

namespace quor {

/// Disjoint sets of the elements 0 .. n-1, kept as a forest in an array of parents that somebody
/// else owns. Invariant: a parent is never greater than its child. So the root of a tree is its
/// smallest element, whatever the order of the links. Path halving alone keeps the trees shallow
/// enough. One thread at a time: looking for a root shortens paths.
class DisjointSets {
 public:
  /// @param parents  n entries, each a valid parent or still to be set; outlives this object
  explicit DisjointSets(std::int32_t* parents) : parents_(parents) {}

  /// n parents that make every element a set of its own.
  static std::vector<std::int32_t> singletons(std::int32_t n) {
    std::vector<std::int32_t> parents(toSize(n));
    std::iota(parents.begin(), parents.end(), 0);
    return parents;
  }

  std::int32_t& parent(std::int32_t i) { return parents_[toSize(i)]; }

  /// The smallest element of a set.
  std::int32_t root(std::int32_t i) {
    while (parent(i) != i) {
      assert(parent(i) < i);
      parent(i) = parent(parent(i));
      i = parent(i);
    }
    return i;
  }

  /// Links element i to an earlier one. Cheap as long as i is a set of its own.
  void attach(std::int32_t i, std::int32_t earlier) {
    assert(earlier < i);
    if (parent(i) == i) {
      parent(i) = earlier;
    } else {
      link(i, earlier);
    }
  }

  /// @return whether they were in different sets
  bool link(std::int32_t i, std::int32_t j) {
    const std::int32_t ri = root(i);
    const std::int32_t rj = root(j);
    parent(std::max(ri, rj)) = std::min(ri, rj);
    return ri != rj;
  }

 private:
  std::int32_t* parents_;
};

}  // namespace quor
