// The faces and edges of a part, found again in its triangles.
#pragma once

#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Faces, and the chains of edges between them; the members are those of QuorkitFaces.
struct Faces {
  std::vector<std::int32_t> faceOf;  ///< per triangle
  std::int32_t faceCount = 0;
  std::vector<std::int32_t> edges;    ///< two vertices each, the lower one first
  std::vector<std::int32_t> chainOf;  ///< per edge
  std::int32_t chainCount = 0;
};

/// Groups triangles into faces. Planes come first: a plane whose border turns gently into a fillet
/// would otherwise take the fillet, and through it the whole part, for one face. See quorkitFaces.
/// Throws std::bad_alloc.
/// @param mesh         finite, corners different and in range
/// @param leastCosine  of the angle between the normals of two triangles of one curved face
Faces findFaces(const MeshView& mesh, double leastCosine);

}  // namespace quorkit
