#include "regions/faces.h"

#include "part/geometry.h"

#include <quorkit.h>

#include <limits>
#include <memory>
#include <new>
#include <stdexcept>

namespace heatmap {
namespace {

constexpr double kSharp = 30.0;  // degrees between two faces

struct Free {
  void operator()(const QuorkitFaces* faces) const { quorkitFreeFaces(faces); }
};
using KitFaces = std::unique_ptr<const QuorkitFaces, Free>;

KitFaces find(const Surface& part) {
  const QuorkitFaces* faces = nullptr;
  const QuorkitStatus status =
      quorkitFaces(part.vertexCount(), part.vertices.data(), part.triangleCount(),
                   part.triangles.data(), kSharp, &faces);
  if (status == QUORKIT_OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  if (status != QUORKIT_DONE) {
    throw std::runtime_error(quorkitStatusText(status));
  }
  return KitFaces(faces);
}

}  // namespace

Faces::Faces(const Surface& part) : part_(part) {
  const KitFaces found = find(part);
  faces_.resize(toSize(found->faceCount));
  for (std::int32_t t = 0; t < part.triangleCount(); ++t) {
    faces_[toSize(found->faces[t])].push_back(t);
  }
  chains_.resize(toSize(found->chainCount));
  for (std::int32_t e = 0; e < found->edgeCount; ++e) {
    const std::int32_t* const ends = found->edges + 2 * toSize(e);
    chains_[toSize(found->chains[e])].push_back({ends[0], ends[1]});
  }
}

std::int32_t Faces::nearestFace(Vec3 point) const {
  double nearest = std::numeric_limits<double>::infinity();
  std::int32_t face = 1;
  for (std::size_t f = 0; f < faces_.size(); ++f) {
    for (const std::int32_t t : faces_[f]) {
      const auto [a, b, c] = cornersOf(part_, t);
      const double distance = norm(nearestOfTriangle(point, a, b, c) - point);
      if (distance < nearest) {
        nearest = distance;
        face = toIndex(f + 1);
      }
    }
  }
  return face;
}

std::vector<Edge> Faces::nearestChain(Vec3 point) const {
  double nearest = std::numeric_limits<double>::infinity();
  std::vector<Edge> found;
  for (const std::vector<Edge>& chain : chains_) {
    for (const auto& [a, b] : chain) {
      const double distance = norm(nearestOfSegment(point, part_.point(a), part_.point(b)) - point);
      if (distance < nearest) {
        nearest = distance;
        found = chain;
      }
    }
  }
  return found;
}

}  // namespace heatmap
