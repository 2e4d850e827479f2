// Runs over points with a hash table of the distinct ones among them.
#pragma once

#include "weld/hash_index.h"
#include "weld/point.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace quor {

/// A hash index of points that hides the two waits of a look-up, one for the slot and one for the
/// point it leads to: both are asked for well before their turn.
/// @tparam Hash  takes a Point and returns its hash
template <typename Hash>
class PointHash {
 public:
  PointHash(std::int32_t count, PointArray points, Hash hash)
      : count_(count),
        points_(points),
        hash_(hash),
        // In a triangle soup one point in six is new.
        index_(static_cast<std::size_t>(count) / 8, count) {}

  /// Calls visit(i, hash of point i) for every point in order until it returns false.
  /// @return how many points were visited with success
  template <typename Visit>
  std::int32_t forEach(const Visit& visit) {
    for (std::int32_t i = 0; i < std::min(kSlotAhead, count_); ++i) {
      prepare(i);
    }
    for (std::int32_t i = 0; i < count_; ++i) {
      const std::uint64_t hash = prepared(i);
      if (i < count_ - kSlotAhead) {
        prepare(i + kSlotAhead);
        prefetch(points_[std::max(index_.guess(prepared(i + kPointAhead)), 0)]);
      }
      if (!visit(i, hash)) {
        return i;
      }
    }
    return count_;
  }

  /// See HashIndex::locate.
  template <typename Accept>
  std::size_t locate(std::uint64_t hash, const Accept& accept) const {
    return index_.locate(hash, accept);
  }
  std::int32_t index(std::size_t slot) const { return index_.index(slot); }

  /// Enters point i into the empty slot where it belongs. If the table must grow, it grows to what
  /// all points will need if they go on as they began.
  void add(std::size_t slot, std::uint64_t hash, std::int32_t i) {
    index_.fill(slot, hash, i);
    if (index_.isFull()) {
      const double share = static_cast<double>(index_.size()) / (i + 1.0);
      index_.grow(static_cast<std::size_t>(share * count_),
                  [this](std::int32_t j) { return hash_(points_[j]); });
    }
  }

 private:
  static constexpr std::int32_t kSlotAhead = 32;
  static constexpr std::int32_t kPointAhead = 16;
  static constexpr std::size_t kRing = 64;

  void prepare(std::int32_t i) {
    prepared(i) = hash_(points_[i]);
    index_.prefetchSlot(prepared(i));
  }
  std::uint64_t& prepared(std::int32_t i) { return ring_[static_cast<std::size_t>(i) % kRing]; }

  std::int32_t count_;
  PointArray points_;
  Hash hash_;
  HashIndex index_;
  std::array<std::uint64_t, kRing> ring_{};
};

}  // namespace quor
