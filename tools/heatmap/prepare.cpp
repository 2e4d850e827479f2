#include "prepare.h"

#include "end_selection.h"
#include "number.h"
#include "singular_points.h"
#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

constexpr int kEdgesPerDiagonal = 32;

Surface copyOf(const quor::kit::Mesh& mesh) {
  const auto vertices = mesh.vertices();
  const auto triangles = mesh.triangles();
  return {{vertices.begin(), vertices.end()}, {triangles.begin(), triangles.end()}};
}

std::string counts(const Surface& mesh) {
  return std::to_string(mesh.vertexCount()) + " vertices, " + std::to_string(mesh.triangleCount()) +
         " triangles";
}

// Of the vertices from `first` on, which edges of the input they lie on: on that of both vertices
// whose midpoint they are, if it is one.
void findEdges(std::size_t first, const quor::kit::Mesh& mesh,
               std::vector<std::array<std::int32_t, 2>>& edges) {
  const auto origins = mesh.vertexOrigins();
  for (std::size_t v = first; 2 * v < origins.size(); ++v) {
    std::array<std::int32_t, 4> ends{};
    const auto& a = edges[static_cast<std::size_t>(origins[2 * v])];
    const auto& b = edges[static_cast<std::size_t>(origins[2 * v + 1])];
    std::copy(a.begin(), a.end(), ends.begin());
    std::copy(b.begin(), b.end(), ends.begin() + 2);
    std::sort(ends.begin(), ends.end());
    const bool isOnOne =
        ends[0] != Refined::kInside && std::unique(ends.begin(), ends.end()) == ends.begin() + 2;
    edges.push_back(isOnOne ? std::array{ends[0], ends[1]}
                            : std::array{Refined::kInside, Refined::kInside});
  }
}

// Calls what refines a mesh. Throws std::runtime_error if there would be too many triangles.
template <typename Refining>
quor::kit::Mesh madeOrRefused(double length, const Refining& refining) {
  try {
    return refining();
  } catch (const std::length_error&) {
    throw std::runtime_error("edges of at most " + text(length) +
                             " would make more triangles than fit: choose a larger --edge");
  }
}

}  // namespace

std::string clean(Surface& mesh) {
  const QuorkitReport report = quor::kit::check(mesh.vertices, mesh.triangles);
  mesh = copyOf(quor::kit::clean(mesh.vertices, mesh.triangles));
  return "dropped " + std::to_string(report.unusedVertices.count) + " unused vertices, " +
         std::to_string(report.flatTriangles.count) + " flat triangles";
}

Edge parseEdge(const std::string& text) {
  if (text == "none") {
    return {Edge::kNone, 0.0};
  }
  const std::optional<double> length = parseFinite(text);
  if (!length || !(*length > 0.0)) {
    throw std::runtime_error("--edge " + text + " is neither a length above 0 nor none");
  }
  return {Edge::kLength, *length};
}

Refined refine(const Surface& mesh, const Edge& edge) {
  std::vector<std::array<std::int32_t, 2>> edges;
  edges.reserve(mesh.vertices.size() / 3);
  for (std::int32_t v = 0; v < mesh.vertexCount(); ++v) {
    edges.push_back({v, v});
  }
  if (edge.kind == Edge::kNone) {
    std::vector<std::int32_t> origins(mesh.triangles.size() / 3);
    std::iota(origins.begin(), origins.end(), 0);
    return {mesh, mesh, std::move(origins), std::move(edges), 0.0};
  }
  const double length =
      edge.kind == Edge::kDefault ? boundsOf(mesh).diagonal() / kEdgesPerDiagonal : edge.length;
  const auto even = madeOrRefused(
      length, [&] { return quor::kit::refine(mesh.vertices, mesh.triangles, length); });
  findEdges(edges.size(), even, edges);
  const auto origins = even.triangleOrigins();
  return {copyOf(even), mesh, {origins.begin(), origins.end()}, std::move(edges), length};
}

void refineNearSingularPoints(Refined& refined, const std::vector<Rule>& rules) {
  if (refined.length == 0.0) {
    return;
  }
  std::vector<bool> isFace(refined.input.triangles.size() / 3);
  std::vector<bool> isVertex(refined.input.vertices.size() / 3);
  const auto include = [](const std::vector<bool>& more, std::vector<bool>& all) {
    std::transform(more.begin(), more.end(), all.begin(), all.begin(), std::logical_or<>());
  };
  for (const Rule& rule : rules) {
    if (isEndOfAxis(rule)) {
      const EndSelection selection = endSelection(refined.input, rule);
      include(selection.isFace, isFace);
      include(selection.isVertex, isVertex);
    }
  }
  std::vector<Position> points = cornersOfSurface(refined.input);
  const std::vector<Position> others = cornersOfPrescribed(refined.input, isFace, isVertex);
  points.insert(points.end(), others.begin(), others.end());
  const std::vector<double> sizes = sizesNear(points, refined.mesh, refined.length);
  if (sizes.empty()) {
    return;
  }
  const Surface& even = refined.mesh;
  const auto graded = madeOrRefused(refined.length, [&] {
    return quor::kit::refine(even.vertices, even.triangles, refined.length, sizes);
  });
  findEdges(refined.edges.size(), graded, refined.edges);
  refined.mesh = copyOf(graded);
  std::vector<std::int32_t> origins;
  for (const std::int32_t origin : graded.triangleOrigins()) {
    origins.push_back(refined.origins[static_cast<std::size_t>(origin)]);
  }
  refined.origins = std::move(origins);
}

std::vector<std::int32_t> select(const Refined& refined, const Rule& rule) {
  if (!isEndOfAxis(rule)) {
    return select(refined.mesh, rule);
  }
  const EndSelection selection = endSelection(refined.input, rule);
  std::vector<bool> isSelected(refined.edges.size());
  for (std::size_t v = 0; v < isSelected.size() && !selection.hasFaces; ++v) {
    isSelected[v] =
        std::all_of(refined.edges[v].begin(), refined.edges[v].end(), [&](std::int32_t end) {
          return end != Refined::kInside && selection.isVertex[static_cast<std::size_t>(end)];
        });
  }
  for (std::size_t k = 0; k < refined.mesh.triangles.size(); ++k) {
    if (selection.isFace[static_cast<std::size_t>(refined.origins[k / 3])]) {
      isSelected[static_cast<std::size_t>(refined.mesh.triangles[k])] = true;
    }
  }
  std::vector<std::int32_t> selected;
  for (std::int32_t vertex = 0; vertex < refined.mesh.vertexCount(); ++vertex) {
    if (isSelected[static_cast<std::size_t>(vertex)]) {
      selected.push_back(vertex);
    }
  }
  return selected;
}

std::string describe(const Refined& refined, const Edge& edge) {
  if (refined.length == 0.0) {
    return counts(refined.mesh) + ", as they are";
  }
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%.4g", refined.length);
  return counts(refined.mesh) + ", edges up to " + digits.data() +
         (edge.kind == Edge::kDefault ? " (1/32 of the diagonal)" : "");
}

}  // namespace heatmap
