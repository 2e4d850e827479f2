#include "kit/triangle_origins.h"

#include "util/index.h"

#include <cstddef>

namespace quorkit {

// Kept triangles have the order of the input. So the next one stems from the first triangle, after
// the last one's origin, that has its corners: an earlier one with them would have been kept in its
// place.
void triangleOrigins(const std::int32_t* triangles, const std::int32_t* vertexOfPoint,
                     std::int32_t keptCount, const std::int32_t* kept, std::int32_t* originsOut) {
  std::int32_t t = 0;
  for (std::int32_t k = 0; k < keptCount; ++k, ++t) {
    const std::int32_t* const wanted = kept + 3 * quor::toSize(k);
    const auto isOrigin = [&] {
      const std::int32_t* const points = triangles + 3 * quor::toSize(t);
      return vertexOfPoint[points[0]] == wanted[0] && vertexOfPoint[points[1]] == wanted[1] &&
             vertexOfPoint[points[2]] == wanted[2];
    };
    while (!isOrigin()) {
      ++t;
    }
    originsOut[k] = t;
  }
}

}  // namespace quorkit
