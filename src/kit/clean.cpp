#include "kit/clean.h"

#include "kit/clean_steps.h"
#include "kit/triangle_shape.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace quorkit {
namespace {

bool isDegenerate(const MeshView& mesh, std::size_t t) {
  const std::int32_t* const c = mesh.triangles + 3 * t;
  return c[0] == c[1] || c[1] == c[2] || c[2] == c[0] ||
         shapeOf({pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                  pointAt(mesh.vertices, c[2])})
             .isFlat();
}

/// Numbers the vertices that triangles use, and leads the triangles to them.
/// @param becameOf  per input vertex the one that it became
MeshData numbered(const MeshView& mesh, const std::vector<std::int32_t>& triangles,
                  const std::vector<std::int32_t>& becameOf) {
  MeshData cleaned;
  cleaned.vertexMap.assign(mesh.vertexCount(), -1);
  for (const std::int32_t corner : triangles) {
    cleaned.vertexMap[toSize(corner)] = 0;
  }
  std::int32_t count = 0;
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    std::int32_t& place = cleaned.vertexMap[toSize(v)];
    if (place == 0) {
      const Vec3 p = pointAt(mesh.vertices, v);
      cleaned.vertices.insert(cleaned.vertices.end(), {p.x, p.y, p.z});
      cleaned.vertexOrigins.insert(cleaned.vertexOrigins.end(), {v, v});
      place = count++;
    } else {  // dropped, or part of a lower one
      place = cleaned.vertexMap[toSize(becameOf[toSize(v)])];
    }
  }
  cleaned.triangles.reserve(triangles.size());
  for (const std::int32_t corner : triangles) {
    cleaned.triangles.push_back(cleaned.vertexMap[toSize(corner)]);
  }
  return cleaned;
}

}  // namespace

MeshData clean(const MeshView& mesh) {
  std::vector<std::int32_t> degenerate;
  for (std::int32_t t = 0; t < mesh.m; ++t) {
    if (isDegenerate(mesh, toSize(t))) {
      degenerate.push_back(t);
    }
  }
  CleanedTriangles steps = removeDegenerate(mesh, degenerate);
  assert(steps.triangles.size() == 3 * steps.origins.size());
  MeshData cleaned = numbered(mesh, steps.triangles, steps.becameOf);
  cleaned.triangleOrigins = std::move(steps.origins);
  cleaned.degenerateCount = steps.degenerateCount;
  return cleaned;
}

}  // namespace quorkit
