// From a soup to a mesh, and its pieces.
#pragma once

#include "mesh.h"

#include <vector>

namespace heatmap {

// Makes one vertex of points that are nearer than the tolerance, drops triangles that collapse or
// repeat. Throws std::runtime_error if nothing is left.
Mesh weld(const Mesh& soup, double tolerance);

// Numbers the pieces of the mesh that no edge connects: the piece of every vertex, in the order of
// their first vertices.
std::vector<std::int32_t> componentsOf(const Mesh& mesh);

// Keeps the triangles of the component with most vertices. Returns how many went.
std::int32_t keepLargestComponent(Mesh& mesh);

}  // namespace heatmap
