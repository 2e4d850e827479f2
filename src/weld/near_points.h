// Links points that are nearer to each other than the tolerance.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Links every two of the given points that are near: afterwards the trees of the forest are the
/// clusters. Takes about the time of a sort, whatever the tolerance, unless many points of separate
/// clusters are almost near: of N points of surfaces just out of reach about N^(4/3), and N^2 where
/// they are within a rounding error of it; see "Made to be slow" in docs/reliability.md.
/// @param selected          indices of finite points, each a tree of its own or the root of one
///                          whose other points are not among those given
/// @param squaredTolerance  above 0, +infinity included
/// @param steps             pairs of boxes, and passes over up to 32 points, are added to it
void linkNearPoints(const std::vector<std::int32_t>& selected, PointArray points,
                    DisjointSets forest, double squaredTolerance, std::uint64_t& steps);

}  // namespace quor
