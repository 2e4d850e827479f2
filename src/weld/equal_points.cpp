#include "weld/equal_points.h"

#include "weld/hashing.h"
#include "weld/point_pass.h"
#include "weld/point_table.h"

namespace quor {
namespace {

struct EqualHash {
  /// Adding 0.0 turns -0.0 into 0.0: they are equal.
  std::uint64_t operator()(Point p) const {
    return mixHash(mixHash(mixHash(0, bitsOf(p[0] + 0.0)), bitsOf(p[1] + 0.0)), bitsOf(p[2] + 0.0));
  }
};

}  // namespace

std::vector<std::int32_t> linkEqualPoints(std::int32_t count, PointArray points,
                                          DisjointSets forest, std::uint64_t& steps) {
  std::vector<std::int32_t> distinct;
  std::int32_t seen = 0;
  {
    PointTable table(count, points, EqualHash{});
    PointPass pass(count, points, table);
    seen = pass.run(forest, [&](std::int32_t i, std::uint64_t hash) {
      if (areEqualsRare(static_cast<std::int64_t>(distinct.size()), i, count) ||
          table.isCrowded(i)) {
        return false;
      }
      const Point p = points[i];
      const std::size_t slot =
          table.locate(hash, [&](std::int32_t j) { return isEqual(points[j], p); });
      const std::int32_t equal = table.index(slot);
      if (equal != HashIndex::kNone) {
        forest.parent(i) = equal;
      } else if (isFinite(p)) {
        distinct.push_back(i);
        table.add(slot, hash, i);
      }
      return true;
    });
    steps += table.steps();
  }  // neither table is needed any longer
  distinct.reserve(distinct.size() + static_cast<std::size_t>(count - seen));
  for (std::int32_t i = seen; i < count; ++i) {
    forest.parent(i) = i;
    if (isFinite(points[i])) {
      distinct.push_back(i);
    }
  }
  return distinct;
}

}  // namespace quor
