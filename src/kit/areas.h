// The area around each vertex.
#pragma once

#include "kit/mesh.h"

namespace quorkit {

/// A third of the areas of a vertex' triangles, added up in their order.
/// @param mesh      corners in range
/// @param areasOut  receives n areas
void areas(const MeshView& mesh, double* areasOut);

}  // namespace quorkit
