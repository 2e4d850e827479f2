#include "regions/cut.h"

#include "part/geometry.h"
#include "part/kit_mesh.h"

#include <quorkit.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <unordered_map>

namespace heatmap {
namespace {

// Each halves the edges: enough for any part and radius.
constexpr int kMostRounds = 64;
constexpr double kRoundTolerance = 1.0 / 2000.0;  // of the radius

double longestSide(const Surface& surface, std::int32_t t) {
  const auto [a, b, c] = cornersOf(surface, t);
  return std::max({norm(b - a), norm(c - b), norm(a - c)});
}

bool reaches(const Bounds& bounds, double margin, const Surface& surface,
             const std::int32_t* corner) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const auto [low, high] =
        std::minmax({surface.vertex(corner[0])[axis], surface.vertex(corner[1])[axis],
                     surface.vertex(corner[2])[axis]});
    if (high < bounds.low[axis] - margin || low > bounds.high[axis] + margin) {
      return false;
    }
  }
  return true;
}

// The vertices on the edges that a border crosses.
class Crossings {
 public:
  // The vertex on an edge, or -1.
  std::int32_t on(std::int32_t a, std::int32_t b) const {
    const auto found = vertexOf_.find(key(a, b));
    return found == vertexOf_.end() ? -1 : found->second;
  }
  void add(std::int32_t a, std::int32_t b, std::int32_t vertex) {
    vertexOf_.emplace(key(a, b), vertex);
  }
  bool areNone() const { return vertexOf_.empty(); }

 private:
  static std::uint64_t key(std::int32_t a, std::int32_t b) {
    const auto [low, high] = std::minmax(a, b);
    return std::uint64_t{static_cast<std::uint32_t>(low)} << 32U | static_cast<std::uint32_t>(high);
  }

  std::unordered_map<std::uint64_t, std::int32_t> vertexOf_;
};

// Divides the triangles of a surface at the vertices on their edges, of which a triangle has at
// most two. Returns what each triangle is a part of.
std::vector<std::int32_t> divide(const Crossings& crossings, Surface& surface) {
  std::vector<std::int32_t> triangles;
  std::vector<std::int32_t> origins;
  const auto add = [&](std::int32_t t, std::initializer_list<std::int32_t> corners) {
    triangles.insert(triangles.end(), corners);
    origins.push_back(t);
  };
  const auto length = [&](std::int32_t a, std::int32_t b) {
    return norm(surface.point(a) - surface.point(b));
  };
  for (std::int32_t t = 0; t < surface.triangleCount(); ++t) {
    const std::int32_t* const corner = surface.triangle(t);
    const auto on = [&](std::size_t k) { return crossings.on(corner[k % 3], corner[(k + 1) % 3]); };
    std::size_t first = 0;  // so turned that the first side is crossed and the last is not
    while (first < 3 && !(on(first) >= 0 && on(first + 2) < 0)) {
      ++first;
    }
    if (first == 3) {
      add(t, {corner[0], corner[1], corner[2]});
      continue;
    }
    const std::int32_t a = corner[first];
    const std::int32_t b = corner[(first + 1) % 3];
    const std::int32_t c = corner[(first + 2) % 3];
    const std::int32_t p = on(first);
    const std::int32_t q = on(first + 1);
    if (q < 0) {
      add(t, {a, p, c});
      add(t, {p, b, c});
      continue;
    }
    add(t, {p, b, q});
    if (length(a, q) <= length(p, c)) {
      add(t, {a, p, q});
      add(t, {a, q, c});
    } else {
      add(t, {a, p, c});
      add(t, {p, q, c});
    }
  }
  surface.triangles = std::move(triangles);
  return origins;
}

// A surface on its way to one with the border in it, and which of its vertices are outside.
class Cutter {
 public:
  Cutter(const Bounds& reach, double tolerance, Surface& surface)
      : reach_(reach),
        tolerance_(tolerance),
        surface_(surface),
        change_(noChange(surface)),
        isOutside_(toSize(surface.vertexCount())) {}

  void cutAlong(const HalfSpace& flat) {
    cut([&](Vec3 p) { return flat.excess(p); }, tolerance_,
        [&](Vec3 a, Vec3 b) {
          const double inside = -flat.excess(a);
          return inside / (inside + flat.excess(b));
        });
  }

  void cutAlong(const Round& round) {
    const double tolerance = kRoundTolerance * round.radius;
    for (int rounds = 0; rounds < kMostRounds && refineAlong(round, tolerance); ++rounds) {
    }
    cut([&](Vec3 p) { return round.excess(p); }, tolerance,
        [&](Vec3 a, Vec3 b) { return round.leaves(a, b); });
  }

  Cut result() {
    Cut cut{std::move(change_), {}, -1};
    const auto inside = std::find(isOutside_.begin(), isOutside_.end(), false);
    if (inside != isOutside_.end()) {
      cut.touches = toIndex(static_cast<std::size_t>(inside - isOutside_.begin()));
    }
    const auto isInside = [&](std::int32_t v) { return !isOutside_[toSize(v)]; };
    for (std::int32_t t = 0; t < surface_.triangleCount(); ++t) {
      const std::int32_t* const corner = surface_.triangle(t);
      if (std::all_of(corner, corner + 3, isInside)) {
        cut.inside.triangles.push_back(t);
      }
      for (const Edge& edge : edgesOf(surface_, t)) {
        if (isInside(edge[0]) && isInside(edge[1])) {
          cut.inside.edges.push_back(edge);
        }
      }
    }
    std::vector<Edge>& edges = cut.inside.edges;
    if (!cut.inside.triangles.empty()) {
      edges.clear();
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return cut;
  }

 private:
  // excess(p): positive outside the border. leaves(a, b): the share of the segment, from a inside
  // to b outside, at which it leaves.
  template <typename Excess, typename Leaves>
  void cut(const Excess& excess, double tolerance, const Leaves& leaves) {
    std::vector<signed char> side;  // of each vertex: -1 inside, 0 on the border, 1 outside
    for (std::int32_t v = 0; v < surface_.vertexCount(); ++v) {
      const double e = excess(surface_.point(v));
      side.push_back(static_cast<signed char>((e > tolerance) - (e < -tolerance)));
    }
    Crossings crossings;
    for (std::int32_t t = 0; t < surface_.triangleCount(); ++t) {
      if (!reaches(reach_, tolerance, surface_, surface_.triangle(t))) {
        continue;
      }
      for (const auto& [a, b] : edgesOf(surface_, t)) {
        if (side[toSize(a)] * side[toSize(b)] < 0 && crossings.on(a, b) < 0) {
          const bool isFirstInside = side[toSize(a)] < 0;
          const Vec3 in = surface_.point(isFirstInside ? a : b);
          const Vec3 out = surface_.point(isFirstInside ? b : a);
          const Position p = coordinates(in + leaves(in, out) * (out - in));
          crossings.add(a, b, surface_.vertexCount());
          addVertex({a, b});
          surface_.vertices.insert(surface_.vertices.end(), p.begin(), p.end());
        }
      }
    }
    for (std::size_t v = 0; v < side.size(); ++v) {
      isOutside_[v] = isOutside_[v] || side[v] > 0;
    }
    if (!crossings.areNone()) {
      const Change step{divide(crossings, surface_), {}};
      append(step, change_);
    }
  }

  // A vertex on an edge is inside the borders that both ends are inside of.
  void addVertex(const Edge& edge) {
    change_.vertexOrigins.push_back(edge);
    isOutside_.push_back(isOutside_[toSize(edge[0])] || isOutside_[toSize(edge[1])]);
  }

  // Halves the edges of triangles in which the border bends. Returns whether there were any.
  bool refineAlong(const Round& round, double tolerance) {
    std::vector<double> sizes(isOutside_.size(), std::numeric_limits<double>::infinity());
    bool isAny = false;
    double longest = 0.0;
    for (std::int32_t t = 0; t < surface_.triangleCount(); ++t) {
      const std::int32_t* const corner = surface_.triangle(t);
      const double side = longestSide(surface_, t);
      longest = std::max(longest, side);
      if (reaches(reach_, tolerance, surface_, corner) &&
          round.bendsIn(cornersOf(surface_, t), tolerance)) {
        isAny = true;
        for (std::size_t k = 0; k < 3; ++k) {
          double& size = sizes[toSize(corner[k])];
          size = std::min(size, side / 2.0);
        }
      }
    }
    if (isAny) {
      const quor::kit::Mesh refined =
          quor::kit::refine(surface_.vertices, surface_.triangles, 2.0 * longest, sizes);
      const Change step = changeOf(refined);
      for (std::size_t v = isOutside_.size(); v < step.vertexOrigins.size(); ++v) {
        isOutside_.push_back(isOutside_[toSize(step.vertexOrigins[v][0])] ||
                             isOutside_[toSize(step.vertexOrigins[v][1])]);
      }
      append(step, change_);
      surface_ = copyOf(refined, surface_.origin);
    }
    return isAny;
  }

  const Bounds& reach_;
  double tolerance_;
  Surface& surface_;
  Change change_;
  std::vector<bool> isOutside_;
};

}  // namespace

Cut cutOut(const Body& body, double tolerance, Surface& surface) {
  Cutter cutter(body.bounds, tolerance, surface);
  for (const HalfSpace& flat : body.flats) {
    cutter.cutAlong(flat);
  }
  if (body.round) {
    cutter.cutAlong(*body.round);
  }
  return cutter.result();
}

}  // namespace heatmap
