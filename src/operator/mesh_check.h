// What a mesh must fulfil to be assembled.
#pragma once

#include "quor.h"

#include <cstdint>
#include <vector>

namespace quor {

/// Looks at the triangles in order and stops at the first fault, then at the vertices.
/// @param n          number of vertices
/// @param triangles  3m corners in 0 .. n-1
/// @return QUOR_SUCCESS; QUOR_REPEATED_CORNER if some triangle has two equal corners;
///         QUOR_UNUSED_VERTEX if some vertex is a corner of no triangle
StatusCode checkMesh(std::int32_t n, const std::vector<std::int32_t>& triangles);

}  // namespace quor
