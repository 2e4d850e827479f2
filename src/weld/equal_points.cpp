#include "weld/equal_points.h"

#include "util/index.h"
#include "weld/point_pass.h"

#include <cstddef>
#include <utility>

namespace quor {

std::vector<std::int32_t> EqualPoints::link() {
  PointPass pass(count_, points_, table_);
  const std::int32_t seen =
      pass.run(forest_, [this](std::int32_t i, std::uint64_t hash) { return visit(i, hash); });
  distinct_.reserve(distinct_.size() + toSize(count_ - seen));
  for (std::int32_t i = seen; i < count_; ++i) {
    forest_.parent(i) = i;
    if (isFinite(points_[i])) {
      distinct_.push_back(i);
    }
  }
  return std::move(distinct_);
}

bool EqualPoints::visit(std::int32_t i, std::uint64_t hash) {
  if (areEqualsRare(toIndex(distinct_.size()), i, count_) || table_.isCrowded(i)) {
    return false;
  }
  const Point p = points_[i];
  const std::size_t slot =
      table_.locate(hash, [&](std::int32_t j) { return isEqual(points_[j], p); });
  const std::int32_t equal = table_.index(slot);
  if (equal != HashIndex::kNone) {
    forest_.parent(i) = equal;
  } else if (isFinite(p)) {
    distinct_.push_back(i);
    table_.add(slot, hash, i);
  }
  return true;
}

}  // namespace quor
