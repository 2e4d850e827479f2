// Links near points in one pass, for tolerances that are small beside the spacing of the points.
#pragma once

#include "weld/point.h"
#include "weld/point_forest.h"

#include <cstdint>

namespace quor {

/// Makes a tree of one point of every point, then links every two whose squared distance is below
/// the reach, with a hash table of cells 64 tolerances wide. That is the way of most welds, and the
/// fastest, as long as a cell holds few different points. Where cells turn out to be crowded, or
/// too many to number, it gives up; the forest is then of no use.
/// @param count      number of points
/// @param tolerance  above 0
/// @param forest     over `count` points, any content
/// @return whether all points have been linked
bool linkInSparseCells(std::int32_t count, PointArray points, PointForest forest, double tolerance);

}  // namespace quor
