#include "weld/weld.h"

#include "util/disjoint_sets.h"
#include "util/machine.h"
#include "weld/distinct_triangles.h"
#include "weld/equal_points.h"
#include "weld/near_points.h"
#include "weld/point.h"
#include "weld/sparse_cells.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace quor {

WeldedCounts weldMesh(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
                      const std::int32_t* triangles, double tolerance, double* outVertices,
                      std::int32_t* outTriangles, std::int32_t* outPointMap) {
  if (pointCount == 0) {
    return {0, 0};
  }
  std::uint64_t steps = 0;
  weldPoints(pointCount, points, tolerance, outPointMap, steps);
  const std::int32_t vertices = numberVertices(pointCount, points, outPointMap, outVertices);
  return {vertices, keepDistinctTriangles(triangleCount, triangles, outPointMap, vertices,
                                          outTriangles, steps)};
}

void weldPoints(std::int32_t count, const double* points, double tolerance, std::int32_t* forest,
                std::uint64_t& steps) {
  const double squaredTolerance = tolerance * tolerance;
  if (!(squaredTolerance >
        0.0)) {  // no squared distance is below 0, not even that of identical points
    std::iota(forest, forest + count, 0);
    return;
  }
  const PointArray array(points);
  const DisjointSets trees(forest);
  // Cells do for soups with tolerances well below the spacing of their vertices; larger tolerances,
  // and points without repeats, are for the tree.
  if (!linkInSparseCells(count, array, trees, tolerance, steps)) {
    linkNearPoints(linkEqualPoints(count, array, trees, steps), array, trees, squaredTolerance,
                   steps);
  }
}

std::int32_t numberVertices(std::int32_t count, const double* points, std::int32_t* forest,
                            double* vertices) {
  constexpr std::int32_t kAhead = 512;
  constexpr std::int32_t kOften = 16;
  std::int32_t vertexCount = 0;
  std::int32_t lastRoot = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const auto point = static_cast<std::size_t>(i);
    const std::int32_t parent = forest[point];
    if (i - lastRoot < kOften) {  // most of the points ahead are needed, or memory lines with them
      prefetch(points + 3 * static_cast<std::size_t>(i + std::min(kAhead, count - 1 - i)));
    }
    if (parent != i) {
      forest[point] = forest[static_cast<std::size_t>(parent)];  // numbered already: parent < i
      continue;
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
      vertices[3 * static_cast<std::size_t>(vertexCount) + axis] = points[3 * point + axis];
    }
    forest[point] = vertexCount++;
    lastRoot = i;
  }
  return vertexCount;
}

}  // namespace quor
