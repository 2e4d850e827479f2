#include "regions/region_cleaning.h"

#include "part/geometry.h"
#include "part/kit_mesh.h"
#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cstddef>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

// Of the squared longest side, twice the area: a hair more than what the kit calls degenerate.
constexpr double kDegenerate = 1.1e-6;

// The longest side of each degenerate triangle, and the corner that lies on it: there the kit
// splits the neighbours.
std::map<Edge, std::int32_t> splitSides(const Surface& surface) {
  std::map<Edge, std::int32_t> splits;
  for (std::int32_t t = 0; t < surface.triangleCount(); ++t) {
    const auto corners = cornersOf(surface, t);
    std::size_t longest = 0;
    const auto side = [&](std::size_t k) { return norm(corners[(k + 1) % 3] - corners[k]); };
    for (const std::size_t k : {1U, 2U}) {
      longest = side(k) > side(longest) ? k : longest;
    }
    if (2.0 * areaOf(surface, t) <= kDegenerate * side(longest) * side(longest)) {
      splits.emplace(edgesOf(surface, t)[longest], surface.triangle(t)[(longest + 2) % 3]);
    }
  }
  return splits;
}

// Follows edges from the surface before to the one after.
class EdgePaths {
 public:
  EdgePaths(const Surface& before, const quor::kit::Mesh& cleaned, const Surface& after)
      : before_(before), cleaned_(cleaned), splits_(splitSides(before)) {
    for (std::int32_t t = 0; t < after.triangleCount(); ++t) {
      for (const Edge& edge : edgesOf(after, t)) {
        edges_.insert(edge);
      }
    }
  }

  // The edges that an edge has become.
  std::vector<Edge> follow(const Edge& edge) const {
    std::vector<Edge> path;
    follow(edge, kMostSplits, path);
    return path;
  }

 private:
  static constexpr int kMostSplits = 64;  // on top of each other

  void follow(const Edge& edge, int splitsLeft, std::vector<Edge>& path) const {
    const auto map = cleaned_.vertexMap();
    const auto [a, b] = std::minmax(map[toSize(edge[0])], map[toSize(edge[1])]);
    if (a == b && a >= 0) {
      return;  // its ends have become one
    }
    if (edges_.count({a, b}) > 0) {
      path.push_back({a, b});
      return;
    }
    const auto split = splits_.find(edge);
    if (split == splits_.end() || splitsLeft == 0) {
      throw std::runtime_error("the border of a rule cuts a triangle of almost no area off at " +
                               placeText(before_, before_.point(edge[0])) +
                               ": move the body of the rule a little, or change its size");
    }
    for (const std::int32_t end : edge) {
      const auto [low, high] = std::minmax(end, split->second);
      follow({low, high}, splitsLeft - 1, path);
    }
  }

  const Surface& before_;
  const quor::kit::Mesh& cleaned_;
  std::map<Edge, std::int32_t> splits_;
  std::set<Edge> edges_;
};

}  // namespace

void cleanRegions(Surface& surface, std::vector<Region>& regions) {
  if (quor::kit::check(surface.vertices, surface.triangles).flatTriangles.count == 0) {
    return;
  }
  const quor::kit::Mesh cleaned = quor::kit::clean(surface.vertices, surface.triangles);
  const auto origins = cleaned.triangleOrigins();
  Surface after = copyOf(cleaned, surface.origin);
  const EdgePaths paths(surface, cleaned, after);
  for (Region& region : regions) {
    Selection kept;
    for (std::size_t t = 0; t < origins.size(); ++t) {
      const std::vector<std::int32_t>& selected = region.selection.triangles;
      if (std::binary_search(selected.begin(), selected.end(), origins[t])) {
        kept.triangles.push_back(toIndex(t));
      }
    }
    std::set<Edge> edges;
    for (const Edge& edge : region.selection.edges) {
      for (const Edge& part : paths.follow(edge)) {
        edges.insert(part);
      }
    }
    kept.edges.assign(edges.begin(), edges.end());
    region.selection = std::move(kept);
  }
  surface = std::move(after);
}

}  // namespace heatmap
