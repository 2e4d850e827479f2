// Which two sides of triangles lie on each other.
#pragma once

#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Side 3t + e of a mesh leads from corner e of triangle t to corner e + 1 modulo 3.
constexpr std::int32_t nextSide(std::int32_t side) {
  return side % 3 == 2 ? side - 2 : side + 1;
}
constexpr std::int32_t previousSide(std::int32_t side) {
  return side % 3 == 0 ? side + 2 : side - 1;
}

constexpr std::int32_t kNoSide = -1;

/// For each of the 3m sides the one that lies on it in the other direction. kNoSide where an edge
/// has one triangle, three or more, or two that lead along it in the same direction.
/// Throws std::bad_alloc.
/// @param mesh  corners in range
std::vector<std::int32_t> pairSides(const MeshView& mesh);

}  // namespace quorkit
