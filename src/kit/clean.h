// Makes a mesh fit to be solved on.
#pragma once

#include "kit/mesh.h"

namespace quorkit {

/// Drops flat triangles so that their neighbours meet without them, and vertices that no triangle
/// uses. See quorkitClean for what becomes of whom.
/// Throws std::bad_alloc.
/// @param mesh  corners in range, equal ones allowed; finite where used
MeshData clean(const MeshView& mesh);

}  // namespace quorkit
