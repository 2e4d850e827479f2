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

/// Finds which points become one.
/// @param count      number of points, at least 1
/// @param points     3*count coordinates
/// @param tolerance  at least 0, infinity included
/// @param forest     receives per point a parent, itself or an earlier point of its cluster; the
///                   smallest point of a cluster is its root
/// @param steps      of all searches are added to it, which is how tests know that none is slow
void weldPoints(std::int32_t count, const double* points, double tolerance, std::int32_t* forest,
                std::uint64_t& steps);

/// Numbers the clusters in the order of their roots.
/// @param forest    a parent per point as weldPoints leaves it; receives the vertex of each point
/// @param vertices  receives the coordinates of the roots; may be `points`
/// @return number of vertices
std::int32_t numberVertices(std::int32_t count, const double* points, std::int32_t* forest,
                            double* vertices);

}  // namespace quor
