// A hash table from records, which live elsewhere, to their indices.
#pragma once

#include "util/index.h"
#include "util/machine.h"
#include "weld/hashing.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace quor {

/// Open addressing with linear probing, at most half full. A slot is 32 bits wide: one more than
/// the index in its lower bits, and above it as much of the hash as there is room for, so that
/// nearly every record looked at is one with the hash in question. An empty slot is 0, and a table
/// of zeros comes from the system as it is, without a pass over it.
///
/// Hashes may lead many records to few slots: one that finds a stretch of slots from its home on
/// taken goes on at other homes, anywhere in the table, to which the lower bits of its hash lead.
/// That is for records as they come. Who knows the hash can choose records that share all their
/// homes, so all slots that searches look at are counted, and whoever searches has to stop, and to
/// go on without a table, where isCrowded() says so.
class HashIndex {
 public:
  static constexpr std::int32_t kNone = -1;

  /// Throws std::bad_alloc.
  /// @param expected    entries that fit without growing
  /// @param indexLimit  all indices are below it
  HashIndex(std::size_t expected, std::int32_t indexLimit) {
    while (indexMask_ < toSize(indexLimit)) {
      indexMask_ = 2 * indexMask_ + 1;
    }
    resize(expected);
  }

  void prefetchSlot(std::uint64_t hash) const { prefetch(&slots()[home(hash)]); }

  /// The index that stands first where `hash` leads, if it is likely to be one with that hash, else
  /// another.
  std::int32_t guess(std::uint64_t hash, std::int32_t other) const {
    const std::size_t slot = home(hash);
    return select(slots()[slot] != 0 && isTagged(slots()[slot], hash), index(slot), other);
  }

  /// Offers the entries with this hash, and now and then another one, until one is accepted. Takes
  /// no more steps than there are entries, and kFar.
  /// @param accept  takes an index
  /// @return the slot of the accepted one, or the empty slot where a new one belongs
  template <typename Accept>
  std::size_t locate(std::uint64_t hash, const Accept& accept) {
    std::size_t slot = home(hash);
    std::uint64_t further = 0;
    while (slots()[slot] != 0 && !(isTagged(slots()[slot], hash) && accept(index(slot)))) {
      slot = (slot + 1) & (slotCount_ - 1);
      if (++further % kStretch == 0 && further < kFar) {
        slot = home(mixHash(hash, further));
      }
    }
    if (further != 0) {
      steps_ += further;
    }
    return slot;
  }

  /// The index in a slot, kNone if it is empty.
  std::int32_t index(std::size_t slot) const { return indexIn(slots()[slot]); }

  /// Fills an empty slot that locate returned. The table must not be full: a search ends at an
  /// empty slot, and half of them always are.
  void fill(std::size_t slot, std::uint64_t hash, std::int32_t index) {
    assert(slots()[slot] == 0 && !isFull());
    assert(toSize(index) < indexMask_);
    slots()[slot] =
        (static_cast<std::uint32_t>(hash) & ~indexMask()) | static_cast<std::uint32_t>(index + 1);
    ++size_;
  }

  std::size_t size() const { return size_; }
  bool isFull() const { return 2 * size_ >= slotCount_; }

  /// Slots that searches looked at after the first one.
  std::uint64_t steps() const { return steps_; }

  /// Whether searches took so many steps that something other than this table is faster.
  /// @param seen  records so far, those found included
  bool isCrowded(std::int32_t seen) const { return steps_ > kStepsPerRecord * (toSize(seen) + 64); }

  /// Makes room for more entries, at least for twice as many. Breaks off where the table is, or
  /// becomes, crowded: what it holds is then of no use.
  /// @param hashOf  takes an index and returns the hash of its record
  /// @param seen    see isCrowded
  template <typename HashOf>
  void grow(std::size_t expected, const HashOf& hashOf, std::int32_t seen) {
    const Slots old = std::move(slots_);
    const std::size_t oldCount = slotCount_;
    resize(std::max(expected, oldCount));
    for (std::size_t slot = 0; slot < oldCount && !isCrowded(seen); ++slot) {
      if (old.get()[slot] != 0) {
        const std::int32_t index = indexIn(old.get()[slot]);
        const std::uint64_t hash = hashOf(index);
        fill(locate(hash, [](std::int32_t) { return false; }), hash, index);
      }
    }
  }

 private:
  static constexpr std::uint64_t kStretch = 32;
  static constexpr std::uint64_t kFar = 32 * kStretch;  ///< then no more homes: the search must end
  static constexpr std::uint64_t kStepsPerRecord = 8;

  struct Free {
    void operator()(std::uint32_t* slots) const { std::free(slots); }
  };
  using Slots = std::unique_ptr<std::uint32_t, Free>;

  void resize(std::size_t entries) {
    shift_ = 64 - 6;
    while ((std::size_t{1} << (64 - shift_)) < 2 * entries) {
      --shift_;
    }
    slotCount_ = std::size_t{1} << (64 - shift_);
    slots_.reset(static_cast<std::uint32_t*>(std::calloc(slotCount_, sizeof(std::uint32_t))));
    if (slots_ == nullptr) {
      throw std::bad_alloc();
    }
    size_ = 0;
  }

  std::uint32_t* slots() const { return slots_.get(); }
  // The slot comes from the upper bits of the hash, the tag from bits 31 downwards.
  std::size_t home(std::uint64_t hash) const { return toSize(hash >> shift_); }
  std::uint32_t indexMask() const { return static_cast<std::uint32_t>(indexMask_); }
  std::int32_t indexIn(std::uint32_t entry) const { return toIndex(entry & indexMask()) - 1; }
  bool isTagged(std::uint32_t entry, std::uint64_t hash) const {
    return ((entry ^ static_cast<std::uint32_t>(hash)) & ~indexMask()) == 0;
  }

  Slots slots_;
  std::size_t slotCount_ = 0;
  std::size_t size_ = 0;
  std::uint64_t steps_ = 0;
  // In 64 bits, which no store of the caller's 32-bit results can change: they stay in registers.
  std::uint64_t shift_ = 0;      ///< from a hash to its slot
  std::uint64_t indexMask_ = 0;  ///< the index's bits of a slot
};

}  // namespace quor
