#include "weld/equal_points.h"

#include "weld/hash_index.h"

#include <array>
#include <cstring>

namespace quor {
namespace {

std::uint64_t bitsOf(double value) {
  value += 0.0;  // -0.0 becomes 0.0: they are equal
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

std::uint64_t hashOf(Point p) {
  return mixHash(mixHash(mixHash(0, bitsOf(p[0])), bitsOf(p[1])), bitsOf(p[2]));
}

class EqualPointLinker {
 public:
  EqualPointLinker(std::int32_t count, PointArray points, PointForest forest)
      : count_(count),
        points_(points),
        forest_(forest),
        index_(static_cast<std::size_t>(count) / 8, count) {
    distinct_.reserve(index_.capacity());
  }

  std::vector<std::int32_t> run() {
    const std::int32_t linked = linkWhileWorthwhile();
    index_ = HashIndex(0, 0);
    for (std::int32_t i = linked; i < count_; ++i) {
      forest_.parent(i) = i;
      if (isFinite(points_[i])) {
        distinct_.push_back(i);
      }
    }
    return std::move(distinct_);
  }

 private:
  // A look-up touches two lines of memory, a slot and the point it leads to. Both are asked for
  // well ahead, since waiting for them would take most of the time.
  static constexpr std::int32_t kSlotAhead = 32;
  static constexpr std::int32_t kPointAhead = 16;
  static constexpr std::size_t kRing = 64;

  /// @return how many points were looked up
  std::int32_t linkWhileWorthwhile() {
    const std::int32_t trial = count_ / 8;
    for (std::int32_t i = 0; i < std::min(kSlotAhead, count_); ++i) {
      prepare(i);
    }
    for (std::int32_t i = 0; i < count_; ++i) {
      if (i < count_ - kSlotAhead) {
        prepare(i + kSlotAhead);
        prefetch(points_[std::max(index_.guess(hash(i + kPointAhead)), 0)]);
      }
      linkOrKeep(i);
      if (i == trial && isRare(static_cast<std::int32_t>(distinct_.size()), i)) {
        return i + 1;
      }
    }
    return count_;
  }

  /// Fewer than one in 32 was an equal of an earlier point.
  static bool isRare(std::int32_t distinct, std::int32_t seen) {
    return distinct > seen - seen / 32;
  }

  void prepare(std::int32_t i) {
    hash(i) = hashOf(points_[i]);
    index_.prefetchSlot(hash(i));
  }

  void linkOrKeep(std::int32_t i) {
    const Point p = points_[i];
    const std::size_t slot =
        index_.locate(hash(i), [&](std::int32_t j) { return isEqual(points_[j], p); });
    const std::int32_t equal = index_.index(slot);
    if (equal != HashIndex::kNone) {
      forest_.parent(i) = equal;
      return;
    }
    forest_.parent(i) = i;
    if (isFinite(p)) {
      index_.fill(slot, hash(i), i);
      distinct_.push_back(i);
      if (distinct_.size() == index_.capacity()) {
        grow();
      }
    }
  }

  void grow() {
    const std::size_t larger = 2 * index_.capacity();
    index_ = HashIndex(0, 0);  // gives its memory back before the larger one is made
    index_ = HashIndex(larger, count_);
    for (const std::int32_t i : distinct_) {
      const std::uint64_t h = hashOf(points_[i]);
      index_.fill(index_.locate(h, [](std::int32_t) { return false; }), h, i);
    }
    distinct_.reserve(index_.capacity());
  }

  std::uint64_t& hash(std::int32_t i) { return ring_[static_cast<std::size_t>(i) % kRing]; }

  std::int32_t count_;
  PointArray points_;
  PointForest forest_;
  HashIndex index_;
  std::array<std::uint64_t, kRing> ring_{};
  std::vector<std::int32_t> distinct_;
};

}  // namespace

std::vector<std::int32_t> linkEqualPoints(std::int32_t count, PointArray points,
                                          PointForest forest) {
  return EqualPointLinker(count, points, forest).run();
}

}  // namespace quor
