// A hash table of points, which grows as their number becomes known.
#pragma once

#include "util/index.h"
#include "weld/hash_index.h"
#include "weld/point.h"

#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quor {

/// @tparam Hash  takes a Point and returns its hash, the same for points to be found together
template <typename Hash>
class PointTable {
 public:
  /// @param count  number of points that may come, at least 1
  PointTable(std::int32_t count, PointArray points, const Hash& hash)
      : count_(count),
        points_(points),
        hash_(hash),
        // In a triangle soup one point in six is new.
        index_(toSize(count) / 8, count) {
    assert(count >= 1);
  }

  std::uint64_t hashOf(Point p) const { return hash_(p); }

  void prefetchSlot(std::uint64_t hash) const { index_.prefetchSlot(hash); }
  /// See HashIndex::guess.
  std::int32_t guess(std::uint64_t hash, std::int32_t other) const {
    return index_.guess(hash, other);
  }

  /// See HashIndex::locate.
  template <typename Accept>
  std::size_t locate(std::uint64_t hash, const Accept& accept) {
    return index_.locate(hash, accept);
  }
  std::int32_t index(std::size_t slot) const { return index_.index(slot); }
  /// See HashIndex::steps.
  std::uint64_t steps() const { return index_.steps(); }
  /// See HashIndex::isCrowded.
  bool isCrowded(std::int32_t seen) const { return index_.isCrowded(seen); }

  /// Enters point i into the empty slot where it belongs. If the table must grow, it grows to what
  /// all points will need if they go on as they began. See HashIndex::grow about crowded tables.
  void add(std::size_t slot, std::uint64_t hash, std::int32_t i) {
    index_.fill(slot, hash, i);
    if (index_.isFull()) {
      const double share = static_cast<double>(index_.size()) / (i + 1.0);
      index_.grow(
          static_cast<std::size_t>(share * count_),
          [this](std::int32_t j) { return hash_(points_[j]); }, i);
    }
  }

 private:
  std::int32_t count_;
  PointArray points_;
  Hash hash_;
  HashIndex index_;
};

/// Whether so few points have turned out to equal earlier ones, fewer than one in 32, that looking
/// for equal points first saves no work. Not before so many have been seen that it can be told.
/// @param different  points among those seen that equal no earlier one
/// @param seen       points so far
/// @param count      of all
inline bool areEqualsRare(std::int64_t different, std::int64_t seen, std::int64_t count) {
  return seen > count / 32 && different > 64 + seen - seen / 32;
}

}  // namespace quor
