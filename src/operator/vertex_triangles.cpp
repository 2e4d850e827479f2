#include "operator/vertex_triangles.h"

#include <cassert>

namespace quor {

VertexTriangles::VertexTriangles(std::int32_t n, const std::vector<std::int32_t>& triangles)
    : starts_(static_cast<std::size_t>(n) + 1), corners_(triangles.size() + kCornersAhead) {
  for (const std::int32_t vertex : triangles) {
    ++starts_[static_cast<std::size_t>(vertex)];
  }
  std::int32_t end = 0;
  for (std::int32_t& start : starts_) {
    end += start;
    start = end;
  }
  assert(static_cast<std::size_t>(end) == triangles.size());
  // From the last corner to the first, so that every start ends up where it belongs.
  for (std::size_t corner = triangles.size(); corner-- > 0;) {
    const auto vertex = static_cast<std::size_t>(triangles[corner]);
    corners_[static_cast<std::size_t>(--starts_[vertex])] = static_cast<std::int32_t>(corner);
  }
}

}  // namespace quor
