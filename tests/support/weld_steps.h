// How much work a weld is, counted instead of timed.
#pragma once

#include "mesh.h"
#include "weld/distinct_triangles.h"
#include "weld/equal_points.h"
#include "weld/near_points.h"
#include "weld/sparse_cells.h"
#include "weld/weld.h"

#include <cstdint>
#include <vector>

namespace test {

/// The steps of the searches for near points, each where weldMesh would take it.
inline std::uint64_t searchSteps(const Mesh& soup, double tolerance) {
  const quor::PointArray points(soup.vertices.data());
  std::vector<std::int32_t> parents(std::size_t(soup.n()));
  const quor::DisjointSets forest(parents.data());
  std::uint64_t steps = 0;
  if (!(tolerance * tolerance > 0)) {
    return steps;
  }
  if (quor::CellNumbers(tolerance).isUsable()) {
    quor::SparseCells cells(soup.n(), points, forest, tolerance);
    const bool isDone = cells.link();
    steps = cells.steps();
    if (isDone) {
      return steps;
    }
  }
  quor::EqualPoints equals(soup.n(), points, forest);
  quor::NearPoints near(equals.link(), points, forest, tolerance * tolerance);
  near.link();
  return steps + equals.steps() + near.steps();
}

/// The steps of the search for repeated triangles.
/// @param map  the vertex of each point
inline std::uint64_t triangleSteps(const Mesh& soup, const std::vector<std::int32_t>& map,
                                   std::int32_t vertexCount) {
  std::vector<std::int32_t> kept(soup.triangles.size());
  quor::DistinctTriangles distinct(soup.m(), soup.triangles.data(), map.data(), vertexCount,
                                   kept.data());
  distinct.keep();
  return distinct.steps();
}

/// Of all searches together.
inline std::uint64_t weldSteps(const Mesh& soup, double tolerance) {
  std::vector<double> vertices(soup.vertices.size());
  std::vector<std::int32_t> triangles(soup.triangles.size());
  std::vector<std::int32_t> map(std::size_t(soup.n()));
  const quor::WeldedCounts counts =
      quor::weldMesh(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(), tolerance,
                     vertices.data(), triangles.data(), map.data());
  return searchSteps(soup, tolerance) + triangleSteps(soup, map, counts.vertices);
}

}  // namespace test
