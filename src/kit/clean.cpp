#include "kit/clean.h"

#include "kit/split_pattern.h"
#include "kit/triangle_shape.h"
#include "util/disjoint_sets.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

namespace quorkit {
namespace {

using Triangle = std::array<std::int32_t, 3>;

bool hasRepeatedCorner(const Triangle& t) {
  return t[0] == t[1] || t[1] == t[2] || t[2] == t[0];
}

/// An edge that is the long side of a flat triangle, and the middle corner that lies on it.
struct SplitEdge {
  std::int32_t u, v;  ///< u < v
  std::size_t triangle;
  std::int32_t middle;
};

bool isBefore(const SplitEdge& a, const SplitEdge& b) {
  return std::tie(a.u, a.v, a.triangle) < std::tie(b.u, b.v, b.triangle);
}

/// The edges to be split in one round, each at one vertex.
class SplitEdges {
 public:
  SplitEdges(std::vector<SplitEdge> edges, std::size_t vertexCount)
      : edges_(std::move(edges)), isEnd_(vertexCount) {
    std::sort(edges_.begin(), edges_.end(), isBefore);
    for (const SplitEdge& edge : edges_) {
      isEnd_[toSize(edge.u)] = isEnd_[toSize(edge.v)] = true;
    }
  }

  bool isEmpty() const { return edges_.empty(); }

  /// The vertex at which the edge is split, that of the first triangle; kNone if it is not.
  std::int32_t middle(std::int32_t a, std::int32_t b) const {
    if (!isEnd_[toSize(a)] || !isEnd_[toSize(b)]) {
      return kNone;
    }
    const SplitEdge wanted = {std::min(a, b), std::max(a, b), 0, kNone};
    const auto found = std::lower_bound(edges_.begin(), edges_.end(), wanted, isBefore);
    const bool isThere = found != edges_.end() && found->u == wanted.u && found->v == wanted.v;
    return isThere ? found->middle : kNone;
  }

  static constexpr std::int32_t kNone = -1;

 private:
  std::vector<SplitEdge> edges_;
  std::vector<bool> isEnd_;
};

class Cleaning {
 public:
  explicit Cleaning(const MeshView& mesh)
      : mesh_(mesh),
        parents_(quor::DisjointSets::singletons(mesh.n)),
        sets_(parents_.data()),
        triangles_(mesh.triangleCount()),
        origins_(mesh.triangleCount()) {
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      std::copy_n(mesh.triangles + 3 * t, 3, triangles_[t].begin());
    }
    std::iota(origins_.begin(), origins_.end(), 0);
  }

  MeshData run() {
    for (int left = rounds(); left > 0 && (mergeCorners() || splitLongSides()); --left) {
    }
    dropFlat();
    return result();
  }

 private:
  /// Each looks at all triangles. Parts need a few; what was made to need many must not take hours.
  int rounds() const {
    constexpr std::size_t kMost = 256;
    constexpr std::size_t kFewest = 16;
    constexpr std::size_t kTriangles = 4000000;  // in all rounds
    return static_cast<int>(std::clamp(kTriangles / (triangles_.size() + 1), kFewest, kMost));
  }

  TriangleShape shape(const Triangle& t) const {
    return shapeOf({pointAt(mesh_.vertices, t[0]), pointAt(mesh_.vertices, t[1]),
                    pointAt(mesh_.vertices, t[2])});
  }

  /// Makes one vertex of the ends of sides that have no length beside the others.
  /// @return whether there were any
  bool mergeCorners() {
    bool hasMerged = false;
    for (const Triangle& t : triangles_) {
      if (hasRepeatedCorner(t)) {
        continue;
      }
      const TriangleShape s = shape(t);
      if (s.isFlat() && s.isShortestNothing()) {
        hasMerged |= sets_.link(t[s.shortest], t[(s.shortest + 1) % 3]);
      }
    }
    if (hasMerged) {
      for (Triangle& t : triangles_) {
        for (std::int32_t& corner : t) {
          corner = sets_.root(corner);
        }
      }
    }
    return hasMerged;
  }

  /// Takes flat triangles away and splits what meets them at their long sides.
  /// @return whether there were any, and room for what came out
  bool splitLongSides() {
    const SplitEdges edges(longSides(), mesh_.vertexCount());
    if (edges.isEmpty()) {
      return false;
    }
    const std::size_t most = 2 * mesh_.triangleCount() + 1000;
    newTriangles_.clear();
    newOrigins_.clear();
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      divide(triangles_[t], origins_[t], edges);
      if (newTriangles_.size() > most) {
        return false;
      }
    }
    triangles_.swap(newTriangles_);
    origins_.swap(newOrigins_);
    return true;
  }

  std::vector<SplitEdge> longSides() const {
    std::vector<SplitEdge> edges;
    for (std::size_t k = 0; k < triangles_.size(); ++k) {
      const Triangle& t = triangles_[k];
      if (hasRepeatedCorner(t)) {
        continue;
      }
      const TriangleShape s = shape(t);
      if (s.isFlat()) {
        const std::int32_t a = t[s.longest];
        const std::int32_t b = t[(s.longest + 1) % 3];
        edges.push_back({std::min(a, b), std::max(a, b), k, t[(s.longest + 2) % 3]});
      }
    }
    return edges;
  }

  void divide(const Triangle& t, std::int32_t origin, const SplitEdges& edges) {
    std::array<std::int32_t, 6> corners{t[0], t[1], t[2], -1, -1, -1};
    unsigned sides = 0;
    bool isGone = false;
    for (std::size_t e = 0; e < 3; ++e) {
      const std::int32_t middle = edges.middle(t[e], t[(e + 1) % 3]);
      corners[3 + e] = middle;
      sides |= middle != SplitEdges::kNone ? 1U << e : 0U;
      isGone |= middle == t[(e + 2) % 3];
    }
    if (isGone) {
      // Of a flat triangle whose long side leads through its middle corner now nothing is left but
      // what lies between a short side and a corner on that.
      for (std::size_t e = 0; e < 3; ++e) {
        if (corners[3 + e] != SplitEdges::kNone && corners[3 + e] != t[(e + 2) % 3]) {
          add({t[e], corners[3 + e], t[(e + 1) % 3]}, origin);
        }
      }
      return;
    }
    const SplitPattern pattern = splitPattern(sides, isOtherShorter(sides, corners));
    for (std::size_t part = 0; part < pattern.count; ++part) {
      const auto& c = pattern.parts[part];
      add({corners[c[0]], corners[c[1]], corners[c[2]]}, origin);
    }
  }

  void add(const Triangle& t, std::int32_t origin) {
    if (!hasRepeatedCorner(t)) {
      newTriangles_.push_back(t);
      newOrigins_.push_back(origin);
    }
  }

  bool isOtherShorter(unsigned sides, const std::array<std::int32_t, 6>& corners) const {
    if (sides != 3 && sides != 5 && sides != 6) {
      return false;
    }
    const Quadrilateral quad = quadrilateralOf(sides);
    const auto distance = [&](std::size_t p, std::size_t q) {
      return squaredDistance(pointAt(mesh_.vertices, corners[p]),
                             pointAt(mesh_.vertices, corners[q]));
    };
    return distance(quad.j, quad.q) < distance(quad.i, quad.p);
  }

  void dropFlat() {
    std::size_t kept = 0;
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      if (!hasRepeatedCorner(triangles_[t]) && !shape(triangles_[t]).isFlat()) {
        triangles_[kept] = triangles_[t];
        origins_[kept++] = origins_[t];
      }
    }
    triangles_.resize(kept);
    origins_.resize(kept);
  }

  MeshData result() {
    MeshData cleaned;
    cleaned.vertexMap.assign(mesh_.vertexCount(), -1);
    for (const Triangle& t : triangles_) {
      for (const std::int32_t corner : t) {
        cleaned.vertexMap[toSize(corner)] = 0;
      }
    }
    std::int32_t count = 0;
    for (std::int32_t v = 0; v < mesh_.n; ++v) {
      std::int32_t& place = cleaned.vertexMap[toSize(v)];
      if (place == 0) {
        const Vec3 p = pointAt(mesh_.vertices, v);
        cleaned.vertices.insert(cleaned.vertices.end(), {p.x, p.y, p.z});
        cleaned.vertexOrigins.insert(cleaned.vertexOrigins.end(), {v, v});
        place = count++;
      } else {  // dropped, or part of a lower one
        place = cleaned.vertexMap[toSize(sets_.root(v))];
      }
    }
    cleaned.triangles.reserve(3 * triangles_.size());
    for (const Triangle& t : triangles_) {
      for (const std::int32_t corner : t) {
        cleaned.triangles.push_back(cleaned.vertexMap[toSize(corner)]);
      }
    }
    cleaned.triangleOrigins = std::move(origins_);
    return cleaned;
  }

  const MeshView& mesh_;
  std::vector<std::int32_t> parents_;
  quor::DisjointSets sets_;
  std::vector<Triangle> triangles_;
  std::vector<std::int32_t> origins_;
  std::vector<Triangle> newTriangles_;
  std::vector<std::int32_t> newOrigins_;
};

}  // namespace

MeshData clean(const MeshView& mesh) {
  return Cleaning(mesh).run();
}

}  // namespace quorkit
