#include "regions/faces.h"

#include "part/geometry.h"

#include <quorkit.h>

#include <algorithm>
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
  QuorkitError error{};
  const QuorkitStatus status =
      quorkitFaces(part.vertexCount(), part.vertices.data(), part.triangleCount(),
                   part.triangles.data(), kSharp, &faces, &error);
  if (status == QUORKIT_OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  if (status != QUORKIT_DONE) {
    throw std::runtime_error(error.text);
  }
  return KitFaces(faces);
}

// The two nearest of things numbered from 1, by their distances.
template <typename Distance>
Faces::Nearest nearestOf(std::int32_t count, const Distance& distance) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Faces::Nearest nearest{0, kInfinity, 0, kInfinity};
  for (std::int32_t number = 1; number <= count; ++number) {
    const double own = distance(number);
    if (own < nearest.distance) {
      nearest = {number, own, nearest.number, nearest.distance};
    } else if (own < nearest.otherDistance) {
      nearest.other = number;
      nearest.otherDistance = own;
    }
  }
  return nearest;
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

Faces::Nearest Faces::nearestFace(Vec3 point) const {
  return nearestOf(count(), [&](std::int32_t face) {
    double least = std::numeric_limits<double>::infinity();
    for (const std::int32_t t : triangles(face)) {
      const auto [a, b, c] = cornersOf(part_, t);
      least = std::min(least, norm(nearestOfTriangle(point, a, b, c) - point));
    }
    return least;
  });
}

Faces::Nearest Faces::nearestChain(Vec3 point) const {
  return nearestOf(chainCount(), [&](std::int32_t chain) {
    double least = std::numeric_limits<double>::infinity();
    for (const auto& [a, b] : edges(chain)) {
      least =
          std::min(least, norm(nearestOfSegment(point, part_.point(a), part_.point(b)) - point));
    }
    return least;
  });
}

}  // namespace heatmap
