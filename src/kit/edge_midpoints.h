// The vertices that were put on the midpoints of edges.
#pragma once

#include "util/index.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace quorkit {

using quor::toIndex;
using quor::toSize;

/// A table of edges, each with the vertex on its midpoint. New vertices are numbered from n on, in
/// the order in which their edges are first asked for.
///
/// Who knows the hash can choose edges that share their slots. So all slots that are looked at are
/// counted, and where they are more than some eight for each question a search tree takes over.
class EdgeMidpoints {
 public:
  struct Found {
    std::int32_t vertex;
    bool isNew;
  };

  /// @param n       number of vertices that are no midpoints
  /// @param likely  how many midpoints there may be; more are fine
  EdgeMidpoints(std::int32_t n, std::size_t likely) : first_(n) {
    ends_.reserve(2 * (toSize(n) + likely));
    for (std::int32_t v = 0; v < n; ++v) {
      ends_.insert(ends_.end(), {v, v});
    }
    std::size_t size = kSmallest;
    while (size < 2 * likely) {
      size *= 2;
    }
    resize(size);
  }

  /// The vertex on the edge between two different vertices, a new one the first time.
  Found find(std::int32_t u, std::int32_t v) {
    const Ends ends = std::minmax(u, v);
    if (isTree_) {
      return findInTree(ends);
    }
    ++asked_;
    const std::size_t slot = locate(ends);
    if (slots_[slot] != kFree) {
      return {slots_[slot], false};
    }
    slots_[slot] = append(ends);
    if (2 * midpoints() > slots_.size()) {
      resize(2 * slots_.size());
    }
    if (isCrowded()) {
      moveToTree();
    }
    return {last(), true};
  }

  /// Slots that were looked at in vain.
  std::uint64_t steps() const { return steps_; }

  /// Two entries per vertex: the ends of its edge, or twice the vertex itself. To be called last.
  std::vector<std::int32_t> release() { return std::move(ends_); }

 private:
  using Ends = std::pair<std::int32_t, std::int32_t>;
  static constexpr std::int32_t kFree = -1;
  static constexpr std::size_t kSmallest = 64;
  static constexpr std::uint64_t kStepsPerEdge = 8;

  std::size_t midpoints() const { return ends_.size() / 2 - toSize(first_); }
  std::int32_t last() const { return toIndex(ends_.size() / 2) - 1; }

  std::int32_t append(Ends ends) {
    ends_.insert(ends_.end(), {ends.first, ends.second});
    return last();
  }

  bool isCrowded() const { return steps_ > kStepsPerEdge * (asked_ + kSmallest); }

  void moveToTree() {
    isTree_ = true;
    slots_ = {};
    for (std::int32_t vertex = first_; vertex <= last(); ++vertex) {
      tree_.emplace(endsOf(vertex), vertex);
    }
  }

  Found findInTree(Ends ends) {
    const auto [place, isNew] = tree_.emplace(ends, last() + 1);
    if (isNew) {
      append(ends);
    }
    return {place->second, isNew};
  }

  Ends endsOf(std::int32_t vertex) const {
    const std::size_t at = 2 * toSize(vertex);
    return {ends_[at], ends_[at + 1]};
  }

  /// Edges of midpoints, which are nearly all, are near each other if their later ends are, as
  /// those of neighbouring triangles: most look-ups find their slot in a cache. A midpoint has few
  /// earlier neighbours. Vertices of the input may have any number: multiplicative hashing.
  std::size_t slotOf(Ends ends) const {
    if (ends.first >= first_) {
      const auto mixed = static_cast<std::uint32_t>(ends.first) * 0x9E3779B9U;
      return (2 * toSize(ends.second - first_) + (mixed >> 28U)) & mask_;
    }
    const auto key =
        static_cast<std::uint64_t>(ends.first) << 32U | static_cast<std::uint64_t>(ends.second);
    const std::uint64_t mixed = (key ^ key >> 29U) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>((mixed ^ mixed >> 32U) & mask_);
  }

  /// The slot of the edge, or the free one where it belongs.
  std::size_t locate(Ends ends) {
    std::size_t slot = slotOf(ends);
    for (; slots_[slot] != kFree && endsOf(slots_[slot]) != ends; slot = (slot + 1) & mask_) {
      ++steps_;
    }
    return slot;
  }

  /// Breaks off where the table is crowded.
  void resize(std::size_t size) {
    slots_.assign(size, kFree);
    mask_ = size - 1;
    for (std::int32_t vertex = first_; vertex <= last() && !isCrowded(); ++vertex) {
      slots_[locate(endsOf(vertex))] = vertex;
    }
  }

  std::int32_t first_;               ///< the first that is a midpoint
  std::vector<std::int32_t> ends_;   ///< see release
  std::vector<std::int32_t> slots_;  ///< vertices by the hash of their edges; a power of two
  std::size_t mask_ = 0;
  std::uint64_t asked_ = 0;
  std::uint64_t steps_ = 0;
  bool isTree_ = false;
  std::map<Ends, std::int32_t> tree_;  ///< takes the place of slots_ then
};

}  // namespace quorkit
