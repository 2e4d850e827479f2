// Rewrites triangles onto welded vertices and drops those that collapsed or repeat.
#pragma once

#include <cstdint>

namespace quor {

/// A triangle is dropped if two of its corners are the same vertex, or if an earlier kept one has
/// the same three vertices in any order. The others keep their order and their corner order.
/// @param count          number of triangles
/// @param triangles      3*count point indices
/// @param vertexOfPoint  the vertex of each point
/// @param vertexCount    number of vertices, at least 1
/// @param kept           receives three vertices per kept triangle; may be `triangles`
/// @param steps          slots of the hash table that were looked at are added to it
/// @return number of kept triangles
std::int32_t keepDistinctTriangles(std::int32_t count, const std::int32_t* triangles,
                                   const std::int32_t* vertexOfPoint, std::int32_t vertexCount,
                                   std::int32_t* kept, std::uint64_t& steps);

}  // namespace quor
