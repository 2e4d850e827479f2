// The connected components of a surface.
#pragma once

#include "part/surface.h"

#include <vector>

namespace heatmap {

// Of each vertex the lowest vertex of its component: those that edges connect.
std::vector<std::int32_t> componentsOf(const Surface& surface);

// Keeps the triangles of the component with most vertices. Returns how many went.
std::int32_t keepLargestComponent(Surface& surface);

}  // namespace heatmap
