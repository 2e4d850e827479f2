// From a soup to a mesh, and its pieces.
#pragma once

#include "surface.h"

#include <vector>

namespace heatmap {

// Makes one vertex of points that are nearer than the tolerance, drops triangles that collapse or
// repeat. Throws std::runtime_error if nothing is left.
Surface weld(const Surface& soup, double tolerance);

// Keeps the triangles of the component with most vertices. Returns how many went.
std::int32_t keepLargestComponent(Surface& mesh);

}  // namespace heatmap
