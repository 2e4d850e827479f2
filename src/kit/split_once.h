// Every triangle in four.
#pragma once

#include "kit/mesh.h"

namespace quorkit {

/// Splits every edge at its midpoint. Vertices keep their numbers, new ones follow; the parts of a
/// triangle stand together. The result has triangleOrigins and vertexOrigins as from refine.
/// Throws std::bad_alloc.
/// @param mesh  corners different and in range; 4m and n + 3m below 2^31
MeshData splitOnce(const MeshView& mesh);

}  // namespace quorkit
