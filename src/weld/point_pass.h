// One pass over points, block by block, behind which a table of the distinct ones is built up.
#pragma once

#include "util/disjoint_sets.h"
#include "util/index.h"
#include "util/machine.h"
#include "weld/point.h"
#include "weld/point_table.h"
#include "weld/recent_points.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace quor {

/// Points that repeat one seen shortly before are found in a small table; only the others are
/// looked for in the large one, whose slots are asked for in no order, so that look-ups wait for
/// memory.
///
/// Points are taken block by block, so that it is known some visits ahead which points will be
/// looked for: what a visit will need is asked for before its turn, and the waits overlap.
template <typename Hash>
class PointPass {
 public:
  /// @param count  number of points, at least 1
  /// @param table  of the points that visit() adds to it
  PointPass(std::int32_t count, PointArray points, const PointTable<Hash>& table)
      : count_(count), points_(points), table_(table), recent_(count) {}

  /// Makes every point a tree of its own, or a child of one seen shortly before that it equals, and
  /// calls visit(i, hash of point i) for those on their own, in order, until it returns false. All
  /// points that are not finite are among these.
  /// @param forest  over the points, any content; what it holds from the result on is of no use
  /// @return the point for which visit returned false, else the number of points
  template <typename Visit>
  std::int32_t run(DisjointSets forest, const Visit& visit) {
    forest.parent(0) = 0;
    if (!visit(0, table_.hashOf(points_[0]))) {
      return 0;
    }
    for (std::int32_t begin = 1; begin < count_; begin += blockSize(begin)) {
      const std::int32_t end = begin + blockSize(begin);
      const std::size_t unmatched = linkEquals(begin, end, forest);
      const std::size_t visited = visitUnmatched(unmatched, visit);
      if (visited < unmatched) {
        return unmatched_[visited];
      }
    }
    return count_;
  }

 private:
  static constexpr std::int32_t kBlock = 1024;
  static constexpr std::size_t kSlotAhead = 32;
  static constexpr std::size_t kPointAhead = 16;

  std::int32_t blockSize(std::int32_t begin) const { return std::min(kBlock, count_ - begin); }

  /// Links every point of the block that equals the guess for it: the last one before it with the
  /// same hash, most likely its equal, or the very last, which is in the cache at least.
  /// @return the number of the others, now in unmatched_
  std::size_t linkEquals(std::int32_t begin, std::int32_t end, DisjointSets forest) {
    const PointArray points = points_;
    std::size_t unmatched = 0;
    for (std::int32_t i = begin; i < end; ++i) {
      const Point p = points[i];
      const std::int32_t guess = recent_.exchange(i, p, i - 1);
      assert(guess >= 0 && guess < i);
      const Point q = points[guess];
      // Differences are 0 for equal finite coordinates only.
      const double apart = std::abs(p[0] - q[0]) + std::abs(p[1] - q[1]) + std::abs(p[2] - q[2]);
      forest.parent(i) = guess;
      unmatched_[unmatched] = i;
      unmatched += toSize(!(apart == 0.0));  // a branch would often go wrong
    }
    for (std::size_t k = 0; k < unmatched; ++k) {
      forest.parent(unmatched_[k]) = unmatched_[k];
    }
    return unmatched;
  }

  /// Visits the first of unmatched_. Each visit waits for a slot of the table and then for the
  /// point to which the slot leads, so both are asked for some visits ahead.
  /// @return how many were visited with success
  template <typename Visit>
  std::size_t visitUnmatched(std::size_t unmatched, const Visit& visit) {
    for (std::size_t k = 0; k < unmatched; ++k) {
      hashes_[k] = table_.hashOf(points_[unmatched_[k]]);
    }
    // Not by functions of their own, which a compiler may drop: a prefetch has no visible effect.
    for (std::size_t k = 0; k < unmatched; ++k) {
      if (k + kSlotAhead < unmatched) {
        table_.prefetchSlot(hashes_[k + kSlotAhead]);
      }
      if (k + kPointAhead < unmatched) {
        // Where the slot leads to no likely point, to the point that is visited now: it is in the
        // cache, and asking for it takes nothing away.
        const Point guess = points_[table_.guess(hashes_[k + kPointAhead], unmatched_[k])];
        prefetch(guess);
        prefetch(guess + 2);  // three coordinates are often in two cache lines
      }
      if (!visit(unmatched_[k], hashes_[k])) {
        return k;
      }
    }
    return unmatched;
  }

  std::int32_t count_;
  PointArray points_;
  const PointTable<Hash>& table_;
  RecentPoints recent_;
  // Of the block:
  std::array<std::int32_t, kBlock> unmatched_;  ///< points that do not equal their guesses
  std::array<std::uint64_t, kBlock> hashes_;    ///< of these
};

}  // namespace quor
