#include "kit/faces.h"

#include "kit/edge_pairs.h"
#include "kit/measure.h"

#include "util/disjoint_sets.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quorkit {
namespace {

constexpr std::int32_t kNone = -1;

/// A flat region of more triangles is no facet, however far it reaches.
constexpr std::size_t kMostOfFacet = 512;

/// The cosine of 0.1 degrees: triangles of one plane, with corners in single precision.
constexpr double kOnePlane = 0.9999985;

Vec3 unitNormal(const MeshView& mesh, std::size_t t) {
  const std::int32_t* const c = mesh.triangles + 3 * t;
  const Vec3 a = pointAt(mesh.vertices, c[0]);
  const Vec3 normal = cross(pointAt(mesh.vertices, c[1]) - a, pointAt(mesh.vertices, c[2]) - a);
  const double length = std::sqrt(dot(normal, normal));
  return length > 0.0 ? (1.0 / length) * normal : Vec3{0.0, 0.0, 0.0};
}

/// A connected set of triangles in one plane.
struct FlatRegion {
  std::vector<std::int32_t> triangles;
  double depth = 0.0;  ///< how far it reaches from where something goes on smoothly, at least
  double area = 0.0;
  bool isPlane = false;
};

class FaceFinder {
 public:
  FaceFinder(const MeshView& mesh, double leastCosine)
      : mesh_(mesh), leastCosine_(leastCosine), pairs_(pairSides(mesh)) {
    for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
      normals_.push_back(unitNormal(mesh, t));
    }
  }

  Faces run() {
    growFlatRegions();
    measureRegions();
    markPlanes();
    uniteFaces();
    findEdges();
    chainEdges();
    return std::move(faces_);
  }

 private:
  std::int32_t sideCount() const { return 3 * mesh_.m; }
  std::int32_t across(std::int32_t side) const { return pairs_[toSize(side)]; }
  std::size_t regionAt(std::int32_t side) const { return toSize(regionOf_[toSize(side / 3)]); }
  double cosineAt(std::int32_t side) const {
    return dot(normals_[toSize(side / 3)], normals_[toSize(across(side) / 3)]);
  }

  /// From every triangle that is in no region yet, all that are connected to it in its plane.
  void growFlatRegions() {
    regionOf_.assign(mesh_.triangleCount(), kNone);
    std::vector<std::int32_t> waiting;
    for (std::int32_t seed = 0; seed < mesh_.m; ++seed) {
      if (regionOf_[toSize(seed)] != kNone) {
        continue;
      }
      const std::int32_t region = toIndex(regions_.size());
      regions_.emplace_back();
      regionOf_[toSize(seed)] = region;
      waiting.assign(1, seed);
      while (!waiting.empty()) {
        const std::int32_t t = waiting.back();
        waiting.pop_back();
        regions_.back().triangles.push_back(t);
        for (std::int32_t side = 3 * t; side < 3 * t + 3; ++side) {
          const std::int32_t next = across(side) == kNoSide ? kNone : across(side) / 3;
          if (next != kNone && regionOf_[toSize(next)] == kNone &&
              dot(normals_[toSize(next)], normals_[toSize(seed)]) >= kOnePlane) {
            regionOf_[toSize(next)] = region;
            waiting.push_back(next);
          }
        }
      }
    }
  }

  /// Whether a side is between two flat regions and the surface goes on smoothly there.
  bool isSmoothBorder(std::int32_t side) const {
    return across(side) != kNoSide && regionAt(across(side)) != regionAt(side) &&
           cosineAt(side) > leastCosine_;
  }

  /// How far a region reaches from a side of it.
  double depthFrom(const FlatRegion& region, std::int32_t side) const {
    const Vec3 origin = pointAt(mesh_.vertices, mesh_.triangles[side]);
    const Vec3 along = pointAt(mesh_.vertices, mesh_.triangles[nextSide(side)]) - origin;
    const Vec3 inward = cross(normals_[toSize(side / 3)], along);
    double depth = 0.0;
    for (const std::int32_t t : region.triangles) {
      for (std::int32_t k = 3 * t; k < 3 * t + 3; ++k) {
        depth = std::max(depth, dot(pointAt(mesh_.vertices, mesh_.triangles[k]) - origin, inward));
      }
    }
    return depth / std::sqrt(dot(along, along));
  }

  void measureRegions() {
    for (FlatRegion& region : regions_) {
      region.depth = kInfinity;
      for (const std::int32_t t : region.triangles) {
        const std::int32_t* const c = mesh_.triangles + 3 * toSize(t);
        region.area += doubledArea(pointAt(mesh_.vertices, c[0]), pointAt(mesh_.vertices, c[1]),
                                   pointAt(mesh_.vertices, c[2]));
        for (std::int32_t side = 3 * t; side < 3 * t + 3; ++side) {
          if (isSmoothBorder(side) && region.triangles.size() <= kMostOfFacet) {
            region.depth = std::min(region.depth, depthFrom(region, side));
          }
        }
      }
    }
  }

  /// A flat region is a plane of the part, and no facet of a curved face, if nothing goes on
  /// smoothly at its border, or if it is much larger and reaches much further than whatever does:
  /// the facets of one face are alike. Where a curved face is cut, needles lie between two facets,
  /// so what goes on is looked at as far as the normal stays near.
  void markPlanes() {
    std::vector<std::size_t> seenFrom(regions_.size(), regions_.size());
    for (std::size_t r = 0; r < regions_.size(); ++r) {
      regions_[r].isPlane = isLargest(r, seenFrom);
    }
  }

  bool isLargest(std::size_t region, std::vector<std::size_t>& seenFrom) const {
    constexpr double kMuchMore = 2.5;
    constexpr double kNear = 0.9848;      // the cosine of 10 degrees
    constexpr std::size_t kEnough = 256;  // regions to look at
    const FlatRegion& own = regions_[region];
    const Vec3 normal = normals_[toSize(own.triangles.front())];
    std::vector<std::size_t> waiting = {region};
    seenFrom[region] = region;
    for (std::size_t k = 0; k < waiting.size() && k < kEnough; ++k) {
      for (const std::int32_t t : regions_[waiting[k]].triangles) {
        for (std::int32_t side = 3 * t; side < 3 * t + 3; ++side) {
          if (!isSmoothBorder(side) || seenFrom[regionAt(across(side))] == region) {
            continue;
          }
          const std::size_t next = regionAt(across(side));
          const FlatRegion& other = regions_[next];
          if (other.depth * kMuchMore > own.depth && other.area * kMuchMore > own.area) {
            return false;
          }
          if (dot(normals_[toSize(other.triangles.front())], normal) > kNear) {
            seenFrom[next] = region;
            waiting.push_back(next);
          }
        }
      }
    }
    return true;
  }

  void uniteFaces() {
    std::vector<std::int32_t> parents = quor::DisjointSets::singletons(mesh_.m);
    quor::DisjointSets sets(parents.data());
    for (std::int32_t side = 0; side < sideCount(); ++side) {
      if (across(side) == kNoSide) {
        continue;
      }
      const bool isOneRegion = regionAt(side) == regionAt(across(side));
      const bool isCurved =
          !regions_[regionAt(side)].isPlane && !regions_[regionAt(across(side))].isPlane;
      if (isOneRegion || (isCurved && cosineAt(side) > leastCosine_)) {
        sets.link(side / 3, across(side) / 3);
      }
    }
    faces_.faceOf.resize(mesh_.triangleCount());
    for (std::int32_t t = 0; t < mesh_.m; ++t) {  // a root is the lowest triangle of its face
      const std::int32_t root = sets.root(t);
      assert(root <= t);
      faces_.faceOf[toSize(t)] = root == t ? faces_.faceCount++ : faces_.faceOf[toSize(root)];
    }
  }

  /// The edges between two faces, and those of one triangle or of more than two.
  void findEdges() {
    std::vector<std::pair<std::int32_t, std::int32_t>> found;
    for (std::int32_t side = 0; side < sideCount(); ++side) {
      const bool isInside = across(side) != kNoSide && faces_.faceOf[toSize(side / 3)] ==
                                                           faces_.faceOf[toSize(across(side) / 3)];
      if (!isInside) {
        found.emplace_back(std::minmax(mesh_.triangles[side], mesh_.triangles[nextSide(side)]));
      }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    for (const auto& [u, v] : found) {
      faces_.edges.insert(faces_.edges.end(), {u, v});
    }
  }

  /// Two edges are of one chain if they alone meet at a vertex, and go on without a corner.
  void chainEdges() {
    const std::size_t count = faces_.edges.size() / 2;
    std::vector<std::int32_t> parents = quor::DisjointSets::singletons(toIndex(count));
    quor::DisjointSets chains(parents.data());
    std::vector<std::array<std::int32_t, 2>> edgesAt(mesh_.vertexCount(), {kNone, kNone});
    std::vector<std::int32_t> degree(mesh_.vertexCount());
    for (std::size_t k = 0; k < faces_.edges.size(); ++k) {
      const std::size_t v = toSize(faces_.edges[k]);
      if (degree[v] < 2) {
        edgesAt[v][toSize(degree[v])] = toIndex(k);
      }
      ++degree[v];
    }
    for (std::size_t v = 0; v < degree.size(); ++v) {
      if (degree[v] == 2 && isStraight(toIndex(v), edgesAt[v])) {
        chains.link(edgesAt[v][0] / 2, edgesAt[v][1] / 2);
      }
    }
    faces_.chainOf.resize(count);
    for (std::int32_t e = 0; e < toIndex(count); ++e) {
      const std::int32_t root = chains.root(e);
      assert(root <= e);
      faces_.chainOf[toSize(e)] = root == e ? faces_.chainCount++ : faces_.chainOf[toSize(root)];
    }
  }

  /// @param ends  places of the vertex in the list of edges
  bool isStraight(std::int32_t vertex, const std::array<std::int32_t, 2>& ends) const {
    const Vec3 at = pointAt(mesh_.vertices, vertex);
    const auto away = [&](std::int32_t end) {
      const std::int32_t other = faces_.edges[toSize(end % 2 == 0 ? end + 1 : end - 1)];
      return pointAt(mesh_.vertices, other) - at;
    };
    const Vec3 u = away(ends[0]);
    const Vec3 v = away(ends[1]);
    return dot(u, v) < -leastCosine_ * std::sqrt(dot(u, u)) * std::sqrt(dot(v, v));
  }

  const MeshView& mesh_;
  double leastCosine_;
  std::vector<std::int32_t> pairs_;
  std::vector<Vec3> normals_;
  std::vector<std::int32_t> regionOf_;
  std::vector<FlatRegion> regions_;
  Faces faces_;
};

}  // namespace

Faces findFaces(const MeshView& mesh, double leastCosine) {
  return FaceFinder(mesh, leastCosine).run();
}

}  // namespace quorkit
