// Collapses points with equal coordinates: a triangle soup shrinks to about a sixth.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/hashing.h"
#include "weld/point.h"
#include "weld/point_table.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Links points of equal coordinates. They have distance 0, so this is right for every tolerance
/// above 0. It is work saved for the search that follows, not a service of its own: where equal
/// points turn out to be rare, or to take more than some eight steps a point, it stops looking for
/// them and leaves them apart.
class EqualPoints {
 public:
  /// Throws std::bad_alloc.
  /// @param count   number of points, at least 1
  /// @param forest  over `count` points, any content
  EqualPoints(std::int32_t count, PointArray points, DisjointSets forest)
      : count_(count), points_(points), forest_(forest), table_(count, points, EqualHash{}) {}

  /// Makes a tree of one point of every point, then links those of equal coordinates to the first
  /// of them.
  /// @return in ascending order the points that remain to be searched: all finite ones but those
  ///         linked. A point with a NaN or infinite coordinate is near nothing.
  std::vector<std::int32_t> link();

  /// See HashIndex::steps.
  std::uint64_t steps() const { return table_.steps(); }

 private:
  struct EqualHash {
    /// Adding 0.0 turns -0.0 into 0.0: they are equal.
    std::uint64_t operator()(Point p) const {
      return mixHash(mixHash(mixHash(0, bitsOf(p[0] + 0.0)), bitsOf(p[1] + 0.0)),
                     bitsOf(p[2] + 0.0));
    }
  };

  /// @return false if looking for equal points does not pay
  bool visit(std::int32_t i, std::uint64_t hash);

  std::int32_t count_;
  PointArray points_;
  DisjointSets forest_;
  PointTable<EqualHash> table_;
  std::vector<std::int32_t> distinct_;
};

}  // namespace quor
