// Stiffness of one linear triangle element.
#pragma once

#include <array>

namespace quor {

/// The six different entries of the symmetric 3 x 3 element matrix.
struct ElementStiffness {
  std::array<double, 3> corner;  ///< the diagonal, positive
  std::array<double, 3> edge;  ///< from each corner to the next: minus half the cotangent opposite
};

/// Area times the dot products of the hat functions' gradients, each gradient formed from the foot
/// of its altitude (Botsch et al., Polygon Mesh Processing, section 3.3.4; the entries equal the
/// cotangent weights). All arithmetic is in the order written, so that the result has the same
/// bits everywhere. A triangle of no area gives infinities and NaNs.
/// @param A,B,C  the corners' x, y, z
ElementStiffness elementStiffness(const double* A, const double* B, const double* C);

}  // namespace quor
