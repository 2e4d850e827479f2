#include "operator/stiffness_column.h"

#include "util/machine.h"

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>

namespace quor {
namespace {

constexpr std::size_t kMostSortedByCounting = 16;

std::size_t index(std::int32_t i) {
  return static_cast<std::size_t>(i);
}

/// Asks for the memory of a triangle ahead of its use: those around a vertex are not neighbours
/// there.
void askFor(std::size_t t, const std::int32_t* triangles, const ElementStiffness* elements) {
  prefetch(triangles + 3 * t);
  prefetch(&elements[t].corner.front());
  prefetch(&elements[t].edge.back());
}

}  // namespace

void StiffnessColumn::compute(std::int32_t vertex, const VertexCorners& corners,
                              const std::int32_t* triangles, const ElementStiffness* elements) {
  const std::size_t most = std::max(2 * corners.size() + 1, kMostSortedByCounting);
  if (rows_.size() < most) {
    rows_.resize(most);
    sums_.resize(most);
  }
  sum(vertex, corners, triangles, elements);
  sort();
}

void StiffnessColumn::sum(std::int32_t vertex, const VertexCorners& corners,
                          const std::int32_t* triangles, const ElementStiffness* elements) {
  std::int32_t* const places = places_.data();
  std::int32_t* const rows = rows_.data();
  double* const sums = sums_.data();
  base_ += static_cast<std::int32_t>(count_);
  const std::int32_t base = base_;
  std::int32_t count = 1;  // the vertex itself
  double diagonal = -0.0;  // to which a sum adds its first term as it is, even another -0
  // Without a branch, which half of the time would be predicted wrong.
  const auto add = [&](std::int32_t row, double value) {
    const std::int32_t place = places[row] - base;
    const bool isNew = place < 0;
    const std::int32_t k = isNew ? count : place;
    places[row] = base + k;
    rows[k] = row;
    sums[k] = (isNew ? -0.0 : sums[k]) + value;
    count += isNew ? 1 : 0;
  };
  for (const std::int32_t& corner : corners) {
    askFor(index((&corner)[kCornersAhead] / 3), triangles, elements);
    const std::size_t t = index(corner / 3);
    const std::size_t own = index(corner) - 3 * t;
    const std::size_t next = own == 2 ? 0 : own + 1;
    const std::size_t previous = own == 0 ? 2 : own - 1;
    diagonal += elements[t].corner[own];
    add(triangles[3 * t + next], elements[t].edge[own]);
    add(triangles[3 * t + previous], elements[t].edge[previous]);
  }
  rows[0] = vertex;
  sums[0] = diagonal;
  count_ = index(count);
}

void StiffnessColumn::sort() {
  static_assert(kMostSortedByCounting == 16);
  if (count_ <= 8) {
    sortFew<8>();
  } else if (count_ <= 16) {
    sortFew<16>();
  } else {
    sortMany();
  }
}

/// The place of an entry is the number of lower rows: no branch either.
template <std::size_t kMost>
void StiffnessColumn::sortFew() {
  std::array<std::int32_t, kMost> rows;
  std::array<double, kMost> sums;
  std::array<std::int32_t, kMost> places{};
  for (std::size_t k = 0; k < kMost; ++k) {
    rows[k] = k < count_ ? rows_[k] : std::numeric_limits<std::int32_t>::max();
    sums[k] = sums_[k];
  }
  for (const std::int32_t other : rows) {
    for (std::size_t k = 0; k < kMost; ++k) {
      places[k] += other < rows[k] ? 1 : 0;
    }
  }
  for (std::size_t k = 0; k < count_; ++k) {
    rows_[index(places[k])] = rows[k];
    sums_[index(places[k])] = sums[k];
  }
}

void StiffnessColumn::sortMany() {
  sorting_.clear();
  for (std::size_t k = 0; k < count_; ++k) {
    sorting_.emplace_back(rows_[k], sums_[k]);
  }
  std::sort(sorting_.begin(), sorting_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t k = 0; k < count_; ++k) {
    std::tie(rows_[k], sums_[k]) = sorting_[k];
  }
}

}  // namespace quor
