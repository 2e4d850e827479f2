// Edges whose weight in the stiffness matrix is negative.
#pragma once

#include "kit/mesh.h"
#include "quorkit.h"

#include <vector>

namespace quorkit {

/// The edges of negative weight, each reported by its triangle of lowest index.
struct NegativeWeights {
  QuorkitFinding inside = {0, -1};    ///< of two or more triangles
  QuorkitFinding atBorder = {0, -1};  ///< of one triangle
};

/// Sums half the cotangents opposite to each edge. A sum above -1e-9 counts as rounding.
/// Throws std::bad_alloc.
/// @param isSound  for each triangle whether it takes part: it is not degenerate, its corners are
///                 in range, different and finite
NegativeWeights negativeWeights(const MeshView& mesh, const std::vector<bool>& isSound);

}  // namespace quorkit
