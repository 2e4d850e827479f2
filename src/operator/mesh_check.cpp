#include "operator/mesh_check.h"

#include <algorithm>
#include <cstddef>

namespace quor {

MeshFault checkMesh(std::int32_t n, const std::vector<std::int32_t>& triangles) {
  std::vector<bool> used(static_cast<std::size_t>(n));
  for (std::size_t t = 0; t < triangles.size(); t += 3) {
    const std::int32_t a = triangles[t];
    const std::int32_t b = triangles[t + 1];
    const std::int32_t c = triangles[t + 2];
    if (a == b || b == c || a == c) {
      return MeshFault::repeatedCorner;
    }
    for (const std::int32_t corner : {a, b, c}) {
      used[static_cast<std::size_t>(corner)] = true;
    }
  }
  const bool isAllUsed = std::find(used.begin(), used.end(), false) == used.end();
  return isAllUsed ? MeshFault::none : MeshFault::unusedVertex;
}

}  // namespace quor
