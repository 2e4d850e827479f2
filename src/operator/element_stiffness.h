// Stiffness of linear triangle elements.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quor {

/// The six different entries of the symmetric 3 x 3 element matrix.
struct ElementStiffness {
  std::array<double, 3> corner;  ///< the diagonal, positive
  std::array<double, 3> edge;  ///< from each corner to the next: minus half the cotangent opposite
};

/// Computes the elements of m triangles: area times the dot products of the hat functions'
/// gradients, each gradient formed from the foot of its altitude (Botsch et al., Polygon Mesh
/// Processing, section 3.3.4; the entries equal the cotangent weights). All arithmetic is in the
/// order written, so that the result has the same bits everywhere. A triangle of no area gives
/// infinities and NaNs.
/// @param vertices   x, y, z of each
/// @param triangles  3m corners
/// @param elements   receives m
void elementStiffnesses(const double* vertices, const std::int32_t* triangles, std::size_t m,
                        ElementStiffness* elements);

}  // namespace quor
