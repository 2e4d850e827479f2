// Which input triangles a weld kept.
#pragma once

#include <cstdint>

namespace quorkit {

/// Finds the input triangle that each kept triangle of a weld was: the first one with its vertices.
/// @param triangles      point indices of the input triangles; not those that were kept
/// @param vertexOfPoint  the vertex of each point
/// @param keptCount      number of kept triangles
/// @param kept           their vertices, as the weld leaves them
/// @param originsOut     receives keptCount indices, ascending
void triangleOrigins(const std::int32_t* triangles, const std::int32_t* vertexOfPoint,
                     std::int32_t keptCount, const std::int32_t* kept, std::int32_t* originsOut);

}  // namespace quorkit
