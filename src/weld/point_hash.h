// Runs over points with a hash table of the distinct ones among them.
#pragma once

#include "util/machine.h"
#include "weld/hash_index.h"
#include "weld/point.h"
#include "weld/point_forest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quor {

/// A hash index of points, behind a small table of those seen last. The index is large and its
/// slots are asked for in no order, so that look-ups wait for memory; but most points of a triangle
/// soup repeat one that came shortly before, and the small table stays in the cache.
///
/// Points are taken block by block, and every step runs over a whole block before the next step:
/// what a step will need is asked for in the one before, and the waits overlap.
/// @tparam Hash  takes a Point and returns its hash, the same for equal points
template <typename Hash>
class PointHash {
 public:
  /// @param count  number of points, at least 1
  PointHash(std::int32_t count, PointArray points, const Hash& hash)
      : count_(count),
        points_(points),
        hash_(hash),
        // In a triangle soup one point in six is new.
        index_(static_cast<std::size_t>(count) / 8, count),
        recent_(std::size_t{1} << recentBits(count)),
        recentShift_(64 - recentBits(count)) {}

  /// Makes every point that equals one seen shortly before a child of that one in the forest, and
  /// calls visit(i, hash of point i) for the others in order until it returns false. All points
  /// that are not finite are among the others.
  /// @return the point for which visit returned false, and the content of the forest from there on
  ///         is of no use; else the number of points
  template <typename Visit>
  std::int32_t forEach(PointForest forest, const Visit& visit) {
    if (!visit(0, hash_(points_[0]))) {
      return 0;
    }
    for (std::int32_t begin = 1; begin < count_; begin += blockSize(begin)) {
      const std::int32_t end = begin + blockSize(begin);
      linkToGuesses(begin, end, forest);
      const std::size_t others = findOthers(begin, end, forest);
      const std::size_t visited = visitOthers(others, visit);
      if (visited < others) {
        return others_[visited];
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
  static constexpr std::int32_t kBlock = 1024;
  static constexpr std::size_t kSlotAhead = 32;
  static constexpr std::size_t kPointAhead = 16;

  /// The last point with a hash that leads here, at first point 0, and the hash's upper half.
  struct Recent {
    std::uint32_t tag;
    std::int32_t point;
  };

  /// At most 128 KB, and 4 bytes a point where there are few.
  static unsigned recentBits(std::int32_t count) {
    unsigned bits = 4;
    while (bits < 14 && (std::int32_t{4} << bits) < count) {
      ++bits;
    }
    return bits;
  }

  std::int32_t blockSize(std::int32_t begin) const { return std::min(kBlock, count_ - begin); }

  /// The same for points with the same bits. Only its upper bits are of use: those of a product
  /// depend on all lower bits of its factor, and the turn brings a coordinate's upper half, in
  /// which often all its content is, down there.
  static std::uint64_t quickHash(Point p) {
    const auto turned = [](double c) { return bitsOf(c) << 32U | bitsOf(c) >> 32U; };
    return turned(p[0]) * 0x9E3779B97F4A7C15U + turned(p[1]) * 0xD6E8FEB86659FD93U +
           turned(p[2]) * 0xA0761D6478BD642FU;
  }

  /// Makes every point of the block the child of one before it: of the last one with the same hash,
  /// most likely its equal, or of the very last, which is in the cache at least.
  void linkToGuesses(std::int32_t begin, std::int32_t end, PointForest forest) {
    const PointArray points = points_;
    Recent* const table = recent_.data();
    const std::int32_t nextBlock = std::min(kBlock, count_ - end);
    for (std::int32_t i = begin; i < end; ++i) {
      prefetch(points[i + nextBlock]);
      const std::uint64_t hash = quickHash(points[i]);
      const auto tag = static_cast<std::uint32_t>(hash >> 32U);
      Recent& recent = table[hash >> recentShift_];
      const std::int32_t guess = select(recent.tag == tag, recent.point, i - 1);
      prefetch(points[guess]);
      forest.parent(i) = guess;
      recent = {tag, i};
    }
  }

  /// @return the number of points of the block, now in others_, that differ from their parents
  std::size_t findOthers(std::int32_t begin, std::int32_t end, PointForest forest) {
    const PointArray points = points_;
    std::size_t others = 0;
    for (std::int32_t i = begin; i < end; ++i) {
      const Point p = points[i];
      const Point q = points[forest.parent(i)];
      // Differences are 0 for equal finite coordinates only.
      const double apart = std::abs(p[0] - q[0]) + std::abs(p[1] - q[1]) + std::abs(p[2] - q[2]);
      others_[others] = i;
      others += static_cast<std::size_t>(!(apart == 0.0));  // a branch would often go wrong
    }
    return others;
  }

  /// Visits the first others_. Each visit waits for a slot of the index and then for the point to
  /// which the slot leads, so both are asked for some visits ahead.
  /// @return how many were visited with success
  template <typename Visit>
  std::size_t visitOthers(std::size_t others, const Visit& visit) {
    // Not by functions of their own, which a compiler may drop: a prefetch has no visible effect.
    for (std::size_t k = 0; k < others; ++k) {
      hashes_[k] = hash_(points_[others_[k]]);
      if (k < kSlotAhead) {
        index_.prefetchSlot(hashes_[k]);
      }
    }
    for (std::size_t k = 0; k < std::min(kPointAhead, others); ++k) {
      prefetch(points_[index_.guess(hashes_[k], others_[k])]);
    }
    for (std::size_t k = 0; k < others; ++k) {
      if (k + kSlotAhead < others) {
        index_.prefetchSlot(hashes_[k + kSlotAhead]);
      }
      if (k + kPointAhead < others) {
        const Point guess = points_[index_.guess(hashes_[k + kPointAhead], others_[k])];
        prefetch(guess);
        prefetch(guess + 2);  // three coordinates are often in two cache lines
      }
      if (!visit(others_[k], hashes_[k])) {
        return k;
      }
    }
    return others;
  }

  std::int32_t count_;
  PointArray points_;
  Hash hash_;
  HashIndex index_;
  std::vector<Recent> recent_;
  unsigned recentShift_;  ///< from a hash to its entry
  // Of the block:
  std::array<std::int32_t, kBlock> others_;
  std::array<std::uint64_t, kBlock> hashes_;
};

}  // namespace quor
