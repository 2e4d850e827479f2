#include "kit/refine.h"

#include "kit/division.h"
#include "kit/edge_midpoints.h"
#include "kit/refined_count.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <utility>

namespace quorkit {
namespace {

[[noreturn]] void refuse() {
  throw std::length_error("too many triangles");
}

/// Whether there would not be too many triangles if all edges of a part were of the smallest size
/// at its corners, which is the smallest anywhere in it: a level of division makes four triangles
/// of one, and halves its edges, or nearly so.
bool isClear(const MeshView& mesh, const EdgeLengths& lengths, double most) {
  double count = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount() && count <= most; ++t) {
    const SizedTriangle c = cornersOf(mesh, t, lengths);
    const double size = std::min({c[0].size, c[1].size, c[2].size});
    double squaredEdge = 0.0;
    for (std::size_t e = 0; e < 3; ++e) {
      squaredEdge = std::max(squaredEdge, squaredDistance(c[e].point, c[(e + 1) % 3].point));
    }
    const double squaredRatio = squaredEdge / (size * size);  // NaN where both are too small
    count += squaredRatio <= 1.0 ? 1.0 : 16.0 * squaredRatio;
  }
  return count <= most;
}

/// Leaves nothing to be found out while triangles are made, when memory has gone into them.
/// @param most  triangles that fit
void requireFits(const MeshView& mesh, const EdgeLengths& lengths, std::int64_t most) {
  const auto mostCount = static_cast<double>(most);
  if (!isClear(mesh, lengths, mostCount) && (leastRefined(mesh, lengths.longest) > mostCount ||
                                             countRefined(mesh, lengths, most) > most)) {
    refuse();
  }
}

/// New triangles that leave every vertex a place in 32 bits.
std::int64_t mostTriangles(const MeshView& mesh) {
  const std::int64_t newOnes = std::int64_t{std::numeric_limits<std::int32_t>::max()} - mesh.n;
  return std::min<std::int64_t>(kMostTriangles, mesh.m + newOnes);
}

}  // namespace

std::optional<MeshData> refineUnlessMore(const MeshView& mesh, const EdgeLengths& lengths,
                                         std::int64_t most) {
  const double longest = lengths.longest;
  const double least = std::min(leastRefined(mesh, longest), static_cast<double>(most));
  const std::size_t count = std::max(static_cast<std::size_t>(least), mesh.triangleCount());
  // A new vertex lies on two triangles most often, each of which it divides once more.
  const std::size_t likely = (count - mesh.triangleCount()) / 2;
  MeshData refined;
  refined.vertices.reserve(3 * (mesh.vertexCount() + likely));
  refined.vertices.assign(mesh.vertices, mesh.vertices + 3 * mesh.vertexCount());
  refined.triangles.reserve(3 * count);
  refined.triangleOrigins.reserve(count);
  EdgeMidpoints midpoints(mesh.n, likely);

  Division division(longest);
  const auto number = [&](const SizedCorner& p, const SizedCorner& q, Vec3 middle) {
    const EdgeMidpoints::Found found = midpoints.find(p.index, q.index);
    if (found.isNew) {
      refined.vertices.insert(refined.vertices.end(), {middle.x, middle.y, middle.z});
    }
    return found.vertex;
  };
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const bool isWhole =
        division.divide(cornersOf(mesh, t, lengths), number, [&](const SizedTriangle& c) {
          refined.triangles.insert(refined.triangles.end(), {c[0].index, c[1].index, c[2].index});
          refined.triangleOrigins.push_back(toIndex(t));
          return refined.triangleOrigins.size() <= toSize(most);
        });
    if (!isWhole) {
      return std::nullopt;
    }
  }
  refined.vertexOrigins = midpoints.release();
  assert(refined.triangles.size() == 3 * refined.triangleOrigins.size());
  assert(3 * refined.vertexOrigins.size() == 2 * refined.vertices.size());
  refined.longestEdge = longest;
  return refined;
}

MeshData refine(const MeshView& mesh, const EdgeLengths& lengths) {
  const std::int64_t most = mostTriangles(mesh);
  requireFits(mesh, lengths, most);
  std::optional<MeshData> refined = refineUnlessMore(mesh, lengths, most);
  if (!refined) {
    refuse();
  }
  return std::move(*refined);
}

}  // namespace quorkit
