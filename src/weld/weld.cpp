#include "weld/weld.h"

#include "util/disjoint_sets.h"
#include "util/index.h"
#include "weld/distinct_triangles.h"
#include "weld/equal_points.h"
#include "weld/near_points.h"
#include "weld/point.h"
#include "weld/sparse_cells.h"

#include <cassert>
#include <cstddef>
#include <numeric>
#include <vector>

namespace quor {
namespace {

/// Links near points, so that the trees of the forest are the vertices.
void linkPoints(std::int32_t count, PointArray points, double tolerance, DisjointSets forest) {
  // Cells do for soups with tolerances well below the spacing of their vertices; larger tolerances,
  // and points without repeats, are for the tree.
  if (CellNumbers(tolerance).isUsable() && SparseCells(count, points, forest, tolerance).link()) {
    return;
  }
  const std::vector<std::int32_t> distinct = EqualPoints(count, points, forest).link();
  NearPoints(distinct, points, forest, tolerance * tolerance).link();
}

/// Numbers the trees of a forest in the order of their roots.
/// @param forest    a parent per point, itself or an earlier point of its tree; receives the vertex
///                  of each point
/// @param vertices  receives the coordinates of the roots; may be `points`
/// @return number of vertices
std::int32_t numberVertices(std::int32_t count, const double* points, std::int32_t* forest,
                            double* vertices) {
  std::int32_t vertexCount = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    std::int32_t& parent = forest[toSize(i)];
    if (parent != i) {
      assert(parent < i);
      parent = forest[toSize(parent)];  // numbered already
      continue;
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
      vertices[3 * toSize(vertexCount) + axis] = points[3 * toSize(i) + axis];
    }
    parent = vertexCount++;
  }
  return vertexCount;
}

}  // namespace

WeldedCounts weldMesh(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
                      const std::int32_t* triangles, double tolerance, double* outVertices,
                      std::int32_t* outTriangles, std::int32_t* outPointMap) {
  assert(pointCount >= 0 && triangleCount >= 0 && tolerance >= 0.0);
  if (pointCount == 0) {
    return {0, 0};
  }
  if (tolerance * tolerance > 0.0) {
    linkPoints(pointCount, PointArray(points), tolerance, DisjointSets(outPointMap));
  } else {  // no squared distance is below 0, not even that of identical points
    std::iota(outPointMap, outPointMap + pointCount, 0);
  }
  const std::int32_t vertexCount = numberVertices(pointCount, points, outPointMap, outVertices);
  DistinctTriangles distinct(triangleCount, triangles, outPointMap, vertexCount, outTriangles);
  return {vertexCount, distinct.keep()};
}

}  // namespace quor
