// Splits triangles until about so many are there.
#pragma once

#include "kit/mesh.h"

#include <cstdint>

namespace quorkit {

/// Refines to at most so many triangles, and as many as it finds a length for; the mesh as it is if
/// it has as many already. Throws std::bad_alloc.
/// @param mesh    finite coordinates, different corners in range
/// @param wanted  1 .. kMostTriangles
MeshData refineTo(const MeshView& mesh, std::int32_t wanted);

}  // namespace quorkit
