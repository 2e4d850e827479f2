// Meshes as the kit's operations take and make them.
#pragma once

#include "util/index.h"

#include <cstddef>
#include <cstdint>
#include <numeric>
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
  std::int32_t degenerateCount = 0;
};

/// A mesh whose triangles and vertices are their own origins. Throws std::bad_alloc.
inline MeshData copyOf(const MeshView& mesh) {
  MeshData copy;
  copy.vertices.assign(mesh.vertices, mesh.vertices + 3 * mesh.vertexCount());
  copy.triangles.assign(mesh.triangles, mesh.triangles + 3 * mesh.triangleCount());
  copy.triangleOrigins.resize(mesh.triangleCount());
  std::iota(copy.triangleOrigins.begin(), copy.triangleOrigins.end(), 0);
  copy.vertexOrigins.resize(2 * mesh.vertexCount());
  for (std::size_t k = 0; k < copy.vertexOrigins.size(); ++k) {
    copy.vertexOrigins[k] = toIndex(k / 2);
  }
  return copy;
}

}  // namespace quorkit
