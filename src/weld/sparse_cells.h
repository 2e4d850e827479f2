// Links near points in one pass, for tolerances that are small beside the spacing of the points.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/point.h"

#include <cstdint>

namespace quor {

/// Makes a tree of one point of every point, then links every two that are near, with a hash table
/// of cells 64 tolerances wide. It is tried for every tolerance, and it is the fastest search as
/// long as most points repeat earlier ones and a cell holds few different ones. Where cells turn
/// out to be crowded or too many to number, or repeats to be rare, it gives up; the forest is then
/// of no use. So it takes no more than some eight steps a point.
/// @param count      number of points
/// @param tolerance  above 0
/// @param forest     over `count` points, any content
/// @param steps      slots of the table that were looked at are added to it
/// @return whether all points have been linked
bool linkInSparseCells(std::int32_t count, PointArray points, DisjointSets forest, double tolerance,
                       std::uint64_t& steps);

}  // namespace quor
