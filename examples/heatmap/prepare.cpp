#include "prepare.h"

#include "singular_points.h"
#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace heatmap {
namespace {

constexpr int kEdgesPerDiagonal = 32;

Mesh copyOf(const quor::kit::Mesh& mesh) {
  const auto vertices = mesh.vertices();
  const auto triangles = mesh.triangles();
  return {{vertices.begin(), vertices.end()}, {triangles.begin(), triangles.end()}};
}

std::string counts(const Mesh& mesh) {
  return std::to_string(mesh.vertexCount()) + " vertices, " + std::to_string(mesh.triangleCount()) +
         " triangles";
}

}  // namespace

std::string clean(Mesh& mesh) {
  const QuorkitReport report = quor::kit::check(mesh.vertices, mesh.triangles);
  mesh = copyOf(quor::kit::clean(mesh.vertices, mesh.triangles));
  return "dropped " + std::to_string(report.unusedVertices.count) + " unused vertices, " +
         std::to_string(report.flatTriangles.count) + " flat triangles";
}

Edge parseEdge(const std::string& text) {
  if (text == "none") {
    return {Edge::kNone, 0.0};
  }
  char* end = nullptr;
  const double length = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(length) || !(length > 0.0)) {
    throw std::runtime_error("--edge " + text + " is neither a length above 0 nor none");
  }
  return {Edge::kLength, length};
}

Refined refine(const Mesh& mesh, const Edge& edge) {
  if (edge.kind == Edge::kNone) {
    std::vector<std::int32_t> origins(mesh.triangles.size() / 3);
    for (std::size_t t = 0; t < origins.size(); ++t) {
      origins[t] = static_cast<std::int32_t>(t);
    }
    return {mesh, mesh, std::move(origins), counts(mesh) + ", as they are"};
  }
  const bool isDefault = edge.kind == Edge::kDefault;
  const double length = isDefault ? boundsOf(mesh).diagonal() / kEdgesPerDiagonal : edge.length;
  try {
    const quor::kit::Mesh even = quor::kit::refine(mesh.vertices, mesh.triangles, length);
    const auto evenOrigins = even.triangleOrigins();
    Refined result{copyOf(even), mesh, {evenOrigins.begin(), evenOrigins.end()}, {}};
    const std::vector<double> sizes = sizesNearSingularPoints(mesh, result.mesh, length);
    if (!sizes.empty()) {
      const quor::kit::Mesh graded =
          quor::kit::refine(even.vertices(), even.triangles(), length, sizes);
      result.mesh = copyOf(graded);
      result.origins.clear();
      for (const std::int32_t origin : graded.triangleOrigins()) {
        result.origins.push_back(evenOrigins[static_cast<std::size_t>(origin)]);
      }
    }
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%.4g", length);
    result.description = counts(result.mesh) + ", edges up to " + digits.data() +
                         (isDefault ? " (1/32 of the diagonal)" : "");
    return result;
  } catch (const std::length_error&) {
    throw std::runtime_error("edges of at most " + text(length) +
                             " would make more triangles than fit: choose a larger --edge");
  }
}

std::vector<std::int32_t> select(const Refined& refined, const Rule& rule) {
  if (rule.kind != Rule::kLowEnd && rule.kind != Rule::kHighEnd) {
    return select(refined.mesh, rule);
  }
  std::vector<bool> isSelected(static_cast<std::size_t>(refined.mesh.vertexCount()));
  for (const std::int32_t vertex : select(refined.input, rule)) {
    isSelected[static_cast<std::size_t>(vertex)] = true;
  }
  const std::vector<bool> isInputSelected = isSelected;
  for (std::size_t t = 0; t < refined.origins.size(); ++t) {
    const std::int32_t* const origin = refined.input.triangle(refined.origins[t]);
    if (std::all_of(origin, origin + 3, [&](std::int32_t corner) {
          return isInputSelected[static_cast<std::size_t>(corner)];
        })) {
      const std::int32_t* const part = refined.mesh.triangle(static_cast<std::int32_t>(t));
      std::for_each(part, part + 3, [&](std::int32_t corner) {
        isSelected[static_cast<std::size_t>(corner)] = true;
      });
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

}  // namespace heatmap
