// Cuts polygons of mesh files into triangles.
#pragma once

#include "part/surface.h"

#include <vector>

namespace heatmap {

// Appends the triangles of a polygon, convex or not, to the surface, by clipping ears (Meisters,
// 1975): in the polygon's orientation, n - 2 of them, with its corners only. A polygon that crosses
// itself, or is not flat, is cut as its projection along its mean normal allows.
// Fewer than three corners make no triangle.
//
//   corners  vertex indices of the surface, in range, in order around the polygon
void appendPolygon(const std::vector<std::int32_t>& corners, Surface& surface);

}  // namespace heatmap
