// A small table of the points seen last.
#pragma once

#include "util/index.h"
#include "util/machine.h"
#include "weld/hashing.h"
#include "weld/point.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quor {

/// Guesses which earlier point has the same bits. Most points of a triangle soup repeat one that
/// came shortly before, and this table stays in the cache, which one of all points does not.
class RecentPoints {
 public:
  /// Takes at most 128 KB, and 4 bytes a point where there are few. Throws std::bad_alloc.
  /// @param count  number of points there will be
  explicit RecentPoints(std::int32_t count)
      : table_(std::size_t{1} << bits(count)), shift_(64 - bits(count)) {}

  /// Puts point i in the place of the last point whose hash leads there.
  /// @return that one if the hashes are the same as far as they are kept, else `other`
  std::int32_t exchange(std::int32_t i, Point p, std::int32_t other) {
    const std::uint64_t hash = hashOf(p);
    const auto tag = static_cast<std::uint32_t>(hash >> 32U);
    Entry& entry = table_[toSize(hash >> shift_)];
    const std::int32_t guess = select(entry.tag == tag, entry.point, other);
    entry = {tag, i};
    return guess;
  }

 private:
  /// The last point with a hash that leads here, at first point 0, and the hash's upper half.
  struct Entry {
    std::uint32_t tag;
    std::int32_t point;
  };

  static unsigned bits(std::int32_t count) {
    unsigned bits = 4;
    while (bits < 14 && (std::int32_t{4} << bits) < count) {
      ++bits;
    }
    return bits;
  }

  /// The same for points with the same bits. Only its upper bits are of use: those of a product
  /// depend on all lower bits of its factor, and the turn brings a coordinate's upper half, in
  /// which often all its content is, down there.
  static std::uint64_t hashOf(Point p) {
    const auto turned = [](double c) { return bitsOf(c) << 32U | bitsOf(c) >> 32U; };
    return sumOfMultiples(turned(p[0]), turned(p[1]), turned(p[2]));
  }

  std::vector<Entry> table_;
  unsigned shift_;  ///< from a hash to its entry
};

}  // namespace quor
