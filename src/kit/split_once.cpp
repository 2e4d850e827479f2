#include "kit/split_once.h"

#include "kit/division.h"
#include "kit/edge_midpoints.h"
#include "kit/measure.h"

#include <array>
#include <cassert>
#include <cstddef>

namespace quorkit {

MeshData splitOnce(const MeshView& mesh) {
  constexpr SplitPattern kInFour = splitPattern(7, false);
  const std::size_t likely = 3 * mesh.triangleCount() / 2 + 1;
  MeshData split;
  split.vertices.reserve(3 * (mesh.vertexCount() + likely));
  split.vertices.assign(mesh.vertices, mesh.vertices + 3 * mesh.vertexCount());
  split.triangles.reserve(12 * mesh.triangleCount());
  split.triangleOrigins.reserve(4 * mesh.triangleCount());
  EdgeMidpoints midpoints(mesh.n, likely);
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    std::array<std::int32_t, 6> corners{};
    for (std::size_t k = 0; k < 3; ++k) {
      corners[k] = mesh.triangles[3 * t + k];
      const std::int32_t next = mesh.triangles[3 * t + (k + 1) % 3];
      const EdgeMidpoints::Found found = midpoints.find(corners[k], next);
      if (found.isNew) {
        const Vec3 p = midpoint(pointAt(mesh.vertices, corners[k]), pointAt(mesh.vertices, next));
        split.vertices.insert(split.vertices.end(), {p.x, p.y, p.z});
      }
      corners[3 + k] = found.vertex;
    }
    for (const auto& part : kInFour.parts) {
      for (const std::uint8_t corner : part) {
        split.triangles.push_back(corners[corner]);
      }
      split.triangleOrigins.push_back(toIndex(t));
    }
  }
  split.vertexOrigins = midpoints.release();
  assert(split.triangles.size() == 12 * mesh.triangleCount());
  assert(3 * split.vertexOrigins.size() == 2 * split.vertices.size());
  return split;
}

}  // namespace quorkit
