#include "operator/stiffness_column.h"

#include "util/index.h"
#include "util/machine.h"

#include <algorithm>
#include <cassert>

namespace quor {
namespace {

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
  const std::size_t most = 2 * corners.size() + 1;
  if (entries_.size() < most) {
    entries_.resize(most);
  }
  sum(vertex, corners, triangles, elements);
  std::sort(entries_.begin(), entries_.begin() + toIndex(count_),
            [](const Entry& a, const Entry& b) { return a.row < b.row; });
}

void StiffnessColumn::sum(std::int32_t vertex, const VertexCorners& corners,
                          const std::int32_t* triangles, const ElementStiffness* elements) {
  std::int32_t* const places = places_.data();
  Entry* const entries = entries_.data();
  base_ += toIndex(count_);
  const std::int32_t base = base_;
  std::int32_t count = 1;  // the vertex itself
  double diagonal = -0.0;  // to which a sum adds its first term as it is, even another -0
  // Without a branch, which half of the time would be predicted wrong.
  const auto add = [&](std::int32_t row, double value) {
    const std::int32_t place = places[row] - base;
    const bool isNew = place < 0;
    const std::int32_t k = isNew ? count : place;
    places[row] = base + k;
    entries[k] = {row, (isNew ? -0.0 : entries[k].sum) + value};
    count += isNew ? 1 : 0;
  };
  for (const std::int32_t& corner : corners) {
    askFor(toSize((&corner)[kCornersAhead] / 3), triangles, elements);
    const std::size_t t = toSize(corner / 3);
    const std::size_t own = toSize(corner) - 3 * t;
    const std::size_t next = own == 2 ? 0 : own + 1;
    const std::size_t previous = own == 0 ? 2 : own - 1;
    diagonal += elements[t].corner[own];
    add(triangles[3 * t + next], elements[t].edge[own]);
    add(triangles[3 * t + previous], elements[t].edge[previous]);
  }
  entries[0] = {vertex, diagonal};
  count_ = toSize(count);
}

}  // namespace quor
