#include "kit/boundary_values.h"

#include "kit/measure.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace quorkit {
namespace {

constexpr double kFree = std::numeric_limits<double>::quiet_NaN();

}  // namespace

std::uint64_t BoundaryValues::keyOf(std::int32_t u, std::int32_t v) {
  const auto [low, high] = std::minmax(u, v);
  return static_cast<std::uint64_t>(low) << 32U | static_cast<std::uint64_t>(high);
}

BoundaryValues::BoundaryValues(const Problem& problem)
    : triangleValues_(problem.triangleValues), values_(problem.mesh.vertexCount(), kFree) {
  const MeshView& mesh = problem.mesh;
  if (problem.vertexValues != nullptr) {
    addVertexValues(problem);
  }
  for (std::int32_t e = 0; e < problem.edgeCount; ++e) {
    const double value = problem.edgeValues[e];
    addEdge(problem.edges[2 * toSize(e)], problem.edges[2 * toSize(e) + 1], value, value);
  }
  for (std::size_t t = 0; problem.triangleValues != nullptr && t < mesh.triangleCount(); ++t) {
    const double value = problem.triangleValues[t];
    for (std::size_t e = 0; e < 3 && !std::isnan(value); ++e) {
      addEdge(mesh.triangles[3 * t + e], mesh.triangles[3 * t + (e + 1) % 3], value, value);
    }
  }
  setVertexValues(problem);
}

void BoundaryValues::addEdge(std::int32_t u, std::int32_t v, double atU, double atV) {
  const EdgeValues values = u < v ? EdgeValues{atU, atV} : EdgeValues{atV, atU};
  // Between two regions the first one's values stay.
  const auto [edge, isNew] = edges_.insert({keyOf(u, v), values});
  if (!isNew && (edge->second.low != values.low || edge->second.high != values.high)) {
    jumpEdges_.emplace_back(u, v);
  }
}

void BoundaryValues::addVertexValues(const Problem& problem) {
  const MeshView& mesh = problem.mesh;
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    for (std::size_t e = 0; e < 3; ++e) {
      const std::int32_t u = mesh.triangles[3 * t + e];
      const std::int32_t v = mesh.triangles[3 * t + (e + 1) % 3];
      const double atU = problem.vertexValues[u];
      const double atV = problem.vertexValues[v];
      if (!std::isnan(atU) && !std::isnan(atV)) {
        addEdge(u, v, atU, atV);
      }
    }
  }
}

void BoundaryValues::setVertexValues(const Problem& problem) {
  std::vector<double> lowest(values_.size(), kInfinity);
  std::vector<double> highest(values_.size(), -kInfinity);
  const auto take = [&](std::size_t vertex, double value) {
    lowest[vertex] = std::min(lowest[vertex], value);
    highest[vertex] = std::max(highest[vertex], value);
  };
  for (const auto& [key, values] : edges_) {
    take(toSize(key >> 32U), values.low);
    take(toSize(key & 0xFFFFFFFFU), values.high);
  }
  const MeshView& mesh = problem.mesh;  // of an edge between two regions one alone has a say above
  for (std::size_t k = 0; problem.triangleValues != nullptr && k < 3 * mesh.triangleCount(); ++k) {
    if (!std::isnan(problem.triangleValues[k / 3])) {
      take(toSize(mesh.triangles[k]), problem.triangleValues[k / 3]);
    }
  }
  for (std::size_t v = 0; v < values_.size(); ++v) {
    const bool hasValue = problem.vertexValues != nullptr && !std::isnan(problem.vertexValues[v]);
    if (lowest[v] <= highest[v]) {
      values_[v] = lowest[v] == highest[v] ? lowest[v] : 0.5 * lowest[v] + 0.5 * highest[v];
    } else if (hasValue && isolatedVertex_ < 0) {
      isolatedVertex_ = toIndex(v);
    }
    if (lowest[v] < highest[v]) {
      jumps_.push_back(toIndex(v));
    }
  }
}

void BoundaryValues::follow(const MeshData& refined, const std::vector<std::int32_t>& origins) {
  const std::size_t before = values_.size();
  const std::size_t n = refined.vertexOrigins.size() / 2;
  values_.resize(n, kFree);
  for (std::size_t v = before; v < n; ++v) {
    const std::int32_t p = refined.vertexOrigins[2 * v];
    const std::int32_t q = refined.vertexOrigins[2 * v + 1];
    assert(p < q && toSize(q) < v);
    const auto edge = edges_.find(keyOf(p, q));
    if (edge != edges_.end()) {
      const EdgeValues values = edge->second;
      const double middle = 0.5 * values.low + 0.5 * values.high;
      values_[v] = middle;
      edges_.erase(edge);
      addEdge(p, toIndex(v), values.low, middle);
      addEdge(q, toIndex(v), values.high, middle);
    }
  }
  for (std::size_t t = 0; triangleValues_ != nullptr && t < origins.size(); ++t) {
    const double value = triangleValues_[origins[t]];
    for (std::size_t k = 0; k < 3 && !std::isnan(value); ++k) {
      double& atCorner = values_[toSize(refined.triangles[3 * t + k])];
      atCorner = std::isnan(atCorner) ? value : atCorner;
    }
  }
}

std::int32_t firstNoEdge(const MeshView& mesh, std::int32_t count, const std::int32_t* pairs) {
  if (count == 0) {
    return -1;
  }
  using Edge = std::pair<std::int32_t, std::int32_t>;
  std::vector<Edge> edges;
  edges.reserve(3 * mesh.triangleCount());
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const std::int32_t next = mesh.triangles[k / 3 * 3 + (k + 1) % 3];
    edges.emplace_back(std::minmax(mesh.triangles[k], next));
  }
  std::sort(edges.begin(), edges.end());
  for (std::size_t e = 0; e < toSize(count); ++e) {
    const Edge edge = std::minmax(pairs[2 * e], pairs[2 * e + 1]);
    if (!std::binary_search(edges.begin(), edges.end(), edge)) {
      return toIndex(e);
    }
  }
  return -1;
}

}  // namespace quorkit
