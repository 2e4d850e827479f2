// Vertices that belong together.
//
// Source: R. E. Tarjan, J. van Leeuwen, Worst-case analysis of set union algorithms, J. ACM 31
// (1984): linking by index, path halving.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace quorkit {

/// Disjoint sets of the vertices 0 .. n-1. The root of a set is its lowest vertex.
class VertexSets {
 public:
  explicit VertexSets(std::int32_t n)
      : parent_(static_cast<std::size_t>(n)), isShared_(static_cast<std::size_t>(n)) {
    std::iota(parent_.begin(), parent_.end(), 0);
  }

  std::int32_t root(std::int32_t v) {
    while (parent(v) != v) {
      parent(v) = parent(parent(v));
      v = parent(v);
    }
    return v;
  }

  /// @return whether they were in different sets
  bool unite(std::int32_t u, std::int32_t v) {
    u = root(u);
    v = root(v);
    if (u == v) {
      return false;
    }
    if (u > v) {
      std::swap(u, v);
    }
    parent(v) = u;
    isShared_[static_cast<std::size_t>(u)] = true;
    return true;
  }

  /// Whether the set with this root has more than one vertex.
  bool isShared(std::int32_t root) const { return isShared_[static_cast<std::size_t>(root)]; }

 private:
  std::int32_t& parent(std::int32_t v) { return parent_[static_cast<std::size_t>(v)]; }

  std::vector<std::int32_t> parent_;
  std::vector<bool> isShared_;
};

}  // namespace quorkit
