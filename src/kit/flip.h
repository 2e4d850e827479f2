// Delaunay flips inside flat faces.
//
// Source: C. L. Lawson, Software for C1 surface interpolation (1977): flipping ends at a Delaunay
// triangulation.
#pragma once

#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Flips the common edge of two triangles where that makes the smallest angle larger and leaves the
/// surface what it is. An edge is flipped if
///   - it is not fixed, has two triangles of one label, oriented alike, and the other diagonal is
///   no
///     edge of either yet;
///   - each of the four corners is within kFlat of the longest side from the plane of the other
///     three, and the two triangles lie in one plane without folding over each other;
///   - the angles opposite to it add up to more than pi.
/// Every flip replaces the edge by one that is Delaunay in its quadrilateral. In a plane that
/// lowers the Dirichlet energy of every function, so no triangulation comes twice. A bound on the
/// number of flips ends the rest: faces that are only flat within kFlat. Vertices stay. A flipped
/// triangle keeps its place in the array: what is known of the place, such as its origin, is known
/// of a triangle of the same label. Throws std::bad_alloc.
/// @param mesh       finite, corners in range; its triangles are changed in place
/// @param triangles  3m, those of the mesh
/// @param labels     m, or empty: all the same
/// @param isFixed    3m sides that stay, see edge_pairs.h; follows the flips
void flipFlatEdges(const double* vertices, std::int32_t n, std::vector<std::int32_t>& triangles,
                   const std::vector<std::int32_t>& labels, std::vector<bool>& isFixed);

/// A copy of a mesh with its flat edges flipped. Throws std::bad_alloc.
/// @param faces  m numbers, or null: all the same
MeshData flip(const MeshView& mesh, const std::int32_t* faces);

}  // namespace quorkit
