// Welds a mesh: near points become one vertex, and triangles that collapse or repeat are dropped.
#pragma once

#include <cstdint>

namespace quor {

struct WeldedCounts {
  std::int32_t vertices;
  std::int32_t triangles;
};

/// Welds a mesh as quor.h defines it. Throws std::bad_alloc, and then the outputs are of no use.
/// @param pointCount     at least 0; without points there is no triangle either
/// @param points         3*pointCount coordinates
/// @param triangles      3*triangleCount indices of points
/// @param tolerance      at least 0, infinity included
/// @param outVertices    room for 3*pointCount; may be `points`. Only what is counted is written
/// @param outTriangles   room for 3*triangleCount; may be `triangles`. Only what is counted is
///                       written
/// @param outPointMap    receives the vertex of each point
WeldedCounts weldMesh(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
                      const std::int32_t* triangles, double tolerance, double* outVertices,
                      std::int32_t* outTriangles, std::int32_t* outPointMap);

}  // namespace quor
