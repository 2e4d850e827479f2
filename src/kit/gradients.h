// The gradient of a field in each triangle.
#pragma once

#include "kit/mesh.h"

namespace quorkit {

/// The gradients of the linear functions that take the field's values at the corners.
/// @param mesh          corners in range
/// @param field         n values
/// @param gradientsOut  receives 3m components; NaN for a triangle without area
void gradients(const MeshView& mesh, const double* field, double* gradientsOut);

}  // namespace quorkit
