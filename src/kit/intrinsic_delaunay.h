// The intrinsic Delaunay triangulation of a mesh, and the weights of its edges.
//
// Sources: A. I. Bobenko, B. A. Springborn, A discrete Laplace-Beltrami operator for simplicial
// surfaces, Discrete & Computational Geometry 38 (2007). M. Fisher, B. Springborn, A. I. Bobenko,
// P. Schroeder, An algorithm for the construction of intrinsic Delaunay triangulations, SIGGRAPH
// course notes (2006). The area from lengths: W. Kahan, Miscalculating area and angles of a
// needle-like triangle (2000).
#pragma once

#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// An edge and half the sum of the cotangents of the angles opposite to it.
struct WeightedEdge {
  std::int32_t u, v;  ///< different vertices
  double weight;
};

/// A surface that is bent along an edge is flat across it for everything that lives in the surface.
/// So edges are flipped in the unfolded pair of their triangles, which moves no vertex and changes
/// no distance: the vertices stay, and elements on their intrinsic Delaunay triangulation are as
/// well shaped as elements on these vertices can be, whatever the shape of the mesh's triangles.
/// Edges between two vertices may occur twice. Each adds its weight.
///
/// Every flip lowers the Dirichlet energy of every function on the vertices (Rippa 1990; Bobenko
/// and Springborn), so none comes twice and flipping ends. Rounding could break that for angles
/// that add up to nearly pi; these are left, and a count of flips ends whatever rounding may do:
/// what is left then is a triangulation all the same, with some negative weights. Throws
/// std::bad_alloc.
/// @param mesh   finite, corners different and in range, no triangle degenerate
/// @param fixed  3m: which sides are not to be flipped; see edge_pairs.h
std::vector<WeightedEdge> intrinsicDelaunayEdges(const MeshView& mesh,
                                                 const std::vector<bool>& fixed);

}  // namespace quorkit
