// Welds points that are nearer than a tolerance, in three steps over one forest.
#pragma once

#include <cstdint>

namespace quor {

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
