// What a mesh must fulfil to be assembled.
#pragma once

#include <cstdint>
#include <vector>

namespace quor {

/// Why a mesh is rejected. The numbers are the statuses that the public header gives them.
enum class MeshFault : std::uint32_t {
  none = 0,
  repeatedCorner = 23,  ///< some triangle has two equal corners
  unusedVertex = 24,    ///< some vertex is a corner of no triangle
};

/// Checks all triangles first, then all vertices: a mesh with both faults has a repeated corner.
/// @param n          number of vertices
/// @param triangles  3m corners in 0 .. n-1
MeshFault checkMesh(std::int32_t n, const std::vector<std::int32_t>& triangles);

}  // namespace quor
