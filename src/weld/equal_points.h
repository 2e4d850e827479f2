// Collapses points with equal coordinates: a triangle soup shrinks to about a sixth.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Makes a tree of one point of every point, then links points of equal coordinates to the first
/// of them. Equal points have distance 0, so this is right for every tolerance above 0. It is work
/// saved for the search that follows, not a service of its own: where equal points turn out to be
/// rare, or to take more than some eight steps a point, it stops looking for them and leaves them
/// apart.
/// @param count   number of points
/// @param forest  over `count` points, any content
/// @param steps   slots of the table that were looked at are added to it
/// @return in ascending order the points that remain to be searched: all finite ones but those
///         linked. A point with a NaN or infinite coordinate is near nothing.
std::vector<std::int32_t> linkEqualPoints(std::int32_t count, PointArray points,
                                          DisjointSets forest, std::uint64_t& steps);

}  // namespace quor
