// Meshes as the kit's operations take and make them.
#pragma once

#include "util/index.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorkit {

using quor::toIndex;
using quor::toSize;

/// A mesh that belongs to the caller.
struct MeshView {
  std::int32_t n = 0;                       ///< number of vertices
  const double* vertices = nullptr;         ///< 3n coordinates
  std::int32_t m = 0;                       ///< number of triangles
  const std::int32_t* triangles = nullptr;  ///< 3m corners, 0-based

  std::size_t vertexCount() const { return toSize(n); }
  std::size_t triangleCount() const { return toSize(m); }
};

/// A mesh that an operation made; the members are those of QuorkitMesh.
struct MeshData {
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  std::vector<std::int32_t> triangleOrigins;
  std::vector<std::int32_t> vertexOrigins;
  std::vector<std::int32_t> vertexMap;
  double longestEdge = 0.0;
};

}  // namespace quorkit
