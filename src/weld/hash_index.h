// A hash table from records, which live elsewhere, to their indices.
#pragma once

#include "weld/machine.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace quor {

/// Mixes one more 64-bit word into a hash. The product carries every bit upwards, the fold brings
/// the upper half down again; both are bijective, so nothing is lost on the way.
inline std::uint64_t mixHash(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32U);
}

/// Open addressing with linear probing. A slot is 32 bits wide: the index in its lower bits and
/// above it as much of the hash as there is room for, so that nearly every comparison of records
/// finds equal ones. The caller keeps the table at most half full.
class HashIndex {
 public:
  static constexpr std::int32_t kNone = -1;

  /// @param expected    at least twice as many slots are made
  /// @param indexLimit  all indices are below it
  HashIndex(std::size_t expected, std::int32_t indexLimit) {
    while ((std::size_t{1} << slotBits_) < 2 * expected) {
      ++slotBits_;
    }
    // Wide enough for the limit itself, so that no index has all bits set.
    while ((std::uint64_t{1} << indexBits_) <= static_cast<std::uint64_t>(indexLimit)) {
      ++indexBits_;
    }
    slots_.assign(std::size_t{1} << slotBits_, kEmpty);
  }

  /// How many entries keep the table at most half full.
  std::size_t capacity() const { return slots_.size() / 2; }

  void prefetchSlot(std::uint64_t hash) const { prefetch(&slots_[home(hash)]); }

  /// The index that stands first where `hash` leads: likely, not surely, the one of its record.
  std::int32_t guess(std::uint64_t hash) const { return index(home(hash)); }

  /// @param isSame  tells whether the record of a given index is the one looked for
  /// @return the slot that holds it, or the empty one where it belongs
  template <typename IsSame>
  std::size_t locate(std::uint64_t hash, const IsSame& isSame) const {
    std::size_t slot = home(hash);
    while (slots_[slot] != kEmpty && !(isTagged(slots_[slot], hash) && isSame(index(slot)))) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  /// The index in a slot, kNone if it is empty.
  std::int32_t index(std::size_t slot) const {
    return slots_[slot] == kEmpty ? kNone : static_cast<std::int32_t>(slots_[slot] & indexMask());
  }

  void fill(std::size_t slot, std::uint64_t hash, std::int32_t index) {
    slots_[slot] =
        (static_cast<std::uint32_t>(hash) & ~indexMask()) | static_cast<std::uint32_t>(index);
  }

 private:
  static constexpr std::uint32_t kEmpty = std::numeric_limits<std::uint32_t>::max();

  // The slot comes from the upper bits of the hash, the tag from bits 31 downwards.
  std::size_t home(std::uint64_t hash) const {
    return static_cast<std::size_t>(hash >> (64U - slotBits_));
  }
  std::uint32_t indexMask() const { return (std::uint32_t{1} << indexBits_) - 1; }
  bool isTagged(std::uint32_t entry, std::uint64_t hash) const {
    return ((entry ^ static_cast<std::uint32_t>(hash)) >> indexBits_) == 0;
  }

  std::vector<std::uint32_t> slots_;
  unsigned slotBits_ = 6;
  unsigned indexBits_ = 0;
};

}  // namespace quor
