// A hash table from records, which live elsewhere, to their indices.
#pragma once

#include "util/machine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace quor {

/// Mixes one more 64-bit word into a hash. The product carries every bit upwards, the fold brings
/// the upper half down again; both are bijective, so nothing is lost on the way.
inline std::uint64_t mixHash(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32U);
}

/// Open addressing with linear probing, at most half full. A slot is 32 bits wide: the index in its
/// lower bits and above it as much of the hash as there is room for, so that nearly every record
/// looked at is one with the hash in question.
class HashIndex {
 public:
  static constexpr std::int32_t kNone = -1;

  /// @param expected    entries that fit without growing
  /// @param indexLimit  all indices are below it
  HashIndex(std::size_t expected, std::int32_t indexLimit) {
    // Wide enough for the limit itself, so that no index has all bits set.
    while ((std::uint64_t{1} << indexBits_) <= static_cast<std::uint64_t>(indexLimit)) {
      ++indexBits_;
    }
    resize(expected);
  }

  void prefetchSlot(std::uint64_t hash) const { prefetch(&slots_[home(hash)]); }

  /// The index that stands first where `hash` leads: likely, not surely, one with that hash.
  std::int32_t guess(std::uint64_t hash) const { return index(home(hash)); }

  /// Offers the entries with this hash, and now and then another one, until one is accepted.
  /// @param accept  takes an index
  /// @return the slot of the accepted one, or the empty slot where a new one belongs
  template <typename Accept>
  std::size_t locate(std::uint64_t hash, const Accept& accept) const {
    std::size_t slot = home(hash);
    while (slots_[slot] != kEmpty && !(isTagged(slots_[slot], hash) && accept(index(slot)))) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  /// The index in a slot, kNone if it is empty.
  std::int32_t index(std::size_t slot) const {
    return slots_[slot] == kEmpty ? kNone : static_cast<std::int32_t>(slots_[slot] & indexMask());
  }

  /// Fills an empty slot that locate returned.
  void fill(std::size_t slot, std::uint64_t hash, std::int32_t index) {
    slots_[slot] =
        (static_cast<std::uint32_t>(hash) & ~indexMask()) | static_cast<std::uint32_t>(index);
    ++size_;
  }

  std::size_t size() const { return size_; }
  bool isFull() const { return 2 * size_ >= slots_.size(); }

  /// Makes room for more entries, at least for twice as many.
  /// @param hashOf  takes an index and returns the hash of its record
  template <typename HashOf>
  void grow(std::size_t expected, const HashOf& hashOf) {
    const std::vector<std::uint32_t> old = std::move(slots_);
    resize(std::max(expected, old.size()));
    for (const std::uint32_t entry : old) {
      if (entry != kEmpty) {
        const auto index = static_cast<std::int32_t>(entry & indexMask());
        const std::uint64_t hash = hashOf(index);
        fill(locate(hash, [](std::int32_t) { return false; }), hash, index);
      }
    }
  }

 private:
  static constexpr std::uint32_t kEmpty = std::numeric_limits<std::uint32_t>::max();

  void resize(std::size_t entries) {
    slotBits_ = 6;
    while ((std::size_t{1} << slotBits_) < 2 * entries) {
      ++slotBits_;
    }
    slots_.assign(std::size_t{1} << slotBits_, kEmpty);
    size_ = 0;
  }

  // The slot comes from the upper bits of the hash, the tag from bits 31 downwards.
  std::size_t home(std::uint64_t hash) const {
    return static_cast<std::size_t>(hash >> (64U - slotBits_));
  }
  std::uint32_t indexMask() const { return (std::uint32_t{1} << indexBits_) - 1; }
  bool isTagged(std::uint32_t entry, std::uint64_t hash) const {
    return ((entry ^ static_cast<std::uint32_t>(hash)) >> indexBits_) == 0;
  }

  std::vector<std::uint32_t> slots_;
  std::size_t size_ = 0;
  unsigned slotBits_ = 0;
  unsigned indexBits_ = 0;
};

}  // namespace quor
