#include "part/change.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace heatmap {

Change noChange(const Surface& surface) {
  Change change;
  change.triangleOrigins.resize(toSize(surface.triangleCount()));
  std::iota(change.triangleOrigins.begin(), change.triangleOrigins.end(), 0);
  for (std::int32_t v = 0; v < surface.vertexCount(); ++v) {
    change.vertexOrigins.push_back({v, v});
  }
  return change;
}

void append(const Change& next, Change& change) {
  std::vector<std::int32_t> origins;
  origins.reserve(next.triangleOrigins.size());
  for (const std::int32_t middle : next.triangleOrigins) {
    origins.push_back(change.triangleOrigins[toSize(middle)]);
  }
  change.triangleOrigins = std::move(origins);
  for (std::size_t v = change.vertexOrigins.size(); v < next.vertexOrigins.size(); ++v) {
    change.vertexOrigins.push_back(next.vertexOrigins[v]);
  }
}

std::vector<std::int32_t> verticesOf(const Surface& surface, const Selection& selection) {
  std::vector<std::int32_t> vertices;
  for (const std::int32_t t : selection.triangles) {
    vertices.insert(vertices.end(), surface.triangle(t), surface.triangle(t) + 3);
  }
  for (const Edge& edge : selection.edges) {
    vertices.insert(vertices.end(), edge.begin(), edge.end());
  }
  std::sort(vertices.begin(), vertices.end());
  vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
  return vertices;
}

void follow(const Change& change, Selection& selection) {
  std::vector<std::int32_t> triangles;
  for (std::size_t t = 0; t < change.triangleOrigins.size() && !selection.triangles.empty(); ++t) {
    if (std::binary_search(selection.triangles.begin(), selection.triangles.end(),
                           change.triangleOrigins[t])) {
      triangles.push_back(toIndex(t));
    }
  }
  selection.triangles = std::move(triangles);

  // An edge is divided before its halves are: vertices come in that order.
  std::set<Edge> edges(selection.edges.begin(), selection.edges.end());
  for (std::size_t v = 0; v < change.vertexOrigins.size() && !edges.empty(); ++v) {
    const auto divided = edges.find(change.vertexOrigins[v]);
    if (divided != edges.end()) {
      const auto [a, b] = *divided;
      const std::int32_t middle = toIndex(v);
      edges.erase(divided);
      edges.insert({a, middle});
      edges.insert({b, middle});
    }
  }
  selection.edges.assign(edges.begin(), edges.end());
}

}  // namespace heatmap
