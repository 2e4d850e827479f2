// Links points that are nearer to each other than the tolerance.
#pragma once

#include "weld/point.h"
#include "weld/point_forest.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Links every two of the given points whose squared distance is below the reach: afterwards the
/// trees of the forest are the clusters. Any reach and any arrangement of points take about the
/// time of a sort.
/// @param selected  indices of finite points, each a tree of its own or the root of one whose other
///                  points are not among those given
/// @param reach     square of the tolerance, above 0, +infinity included
void linkNearPoints(const std::vector<std::int32_t>& selected, PointArray points,
                    PointForest forest, double reach);

}  // namespace quor
