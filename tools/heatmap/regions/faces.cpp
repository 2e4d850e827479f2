#include "regions/faces.h"

#include "part/geometry.h"
#include "util/disjoint_sets.h"

#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace heatmap {
namespace {

constexpr double kSharp = 0.8660254037844386;  // the cosine of 30 degrees

Vec3 unit(Vec3 u) {
  return 1.0 / norm(u) * u;
}

// Groups elements by the roots of their sets, in the order of first elements.
template <typename Element>
std::vector<std::vector<Element>> grouped(const std::vector<Element>& elements,
                                          quor::DisjointSets& sets) {
  std::map<std::int32_t, std::size_t> groupOf;
  std::vector<std::vector<Element>> groups;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const auto [group, isNew] = groupOf.emplace(sets.root(toIndex(i)), groups.size());
    if (isNew) {
      groups.emplace_back();
    }
    groups[group->second].push_back(elements[i]);
  }
  return groups;
}

}  // namespace

Faces::Faces(const Surface& part) : part_(part) {
  std::map<Edge, std::vector<std::int32_t>> trianglesAt;
  std::vector<std::int32_t> triangles;
  for (std::int32_t t = 0; t < part.triangleCount(); ++t) {
    triangles.push_back(t);
    for (const Edge& edge : edgesOf(part, t)) {
      trianglesAt[edge].push_back(t);
    }
  }
  const auto normal = [&](std::int32_t t) {
    const auto [a, b, c] = cornersOf(part, t);
    return unit(cross(b - a, c - a));
  };
  std::vector<std::int32_t> faceParents = quor::DisjointSets::singletons(part.triangleCount());
  quor::DisjointSets faces(faceParents.data());
  std::vector<Edge> sharp;
  std::map<std::int32_t, std::vector<std::int32_t>> sharpAt;  // of each vertex, by their places
  for (const auto& [edge, sides] : trianglesAt) {
    if (sides.size() == 2 && dot(normal(sides[0]), normal(sides[1])) > kSharp) {
      faces.link(sides[0], sides[1]);
    } else {
      sharpAt[edge[0]].push_back(toIndex(sharp.size()));
      sharpAt[edge[1]].push_back(toIndex(sharp.size()));
      sharp.push_back(edge);
    }
  }
  std::vector<std::int32_t> chainParents = quor::DisjointSets::singletons(toIndex(sharp.size()));
  quor::DisjointSets chains(chainParents.data());
  for (const auto& [vertex, edges] : sharpAt) {
    const auto away = [&, at = vertex](std::int32_t i) {
      const auto [a, b] = sharp[toSize(i)];
      return unit(part.point(a == at ? b : a) - part.point(at));
    };
    if (edges.size() == 2 && dot(away(edges[0]), away(edges[1])) < -kSharp) {
      chains.link(edges[0], edges[1]);
    }
  }
  faces_ = grouped(triangles, faces);
  chains_ = grouped(sharp, chains);
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
