// A triangle mesh in the arrays that quor.h speaks.
#pragma once

#include "util/index.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace heatmap {

using quor::toIndex;
using quor::toSize;

using Position = std::array<double, 3>;

struct Surface {
  std::vector<double> vertices;         // x, y, z per vertex
  std::vector<std::int32_t> triangles;  // three 0-based vertex indices per triangle

  std::int32_t vertexCount() const { return toIndex(vertices.size() / 3); }
  std::int32_t triangleCount() const { return toIndex(triangles.size() / 3); }
  const double* vertex(std::int32_t v) const { return vertices.data() + 3 * toSize(v); }
  const std::int32_t* triangle(std::int32_t t) const { return triangles.data() + 3 * toSize(t); }
};

// Corners of the axis-aligned bounding box.
struct Bounds {
  Position low;
  Position high;
  double diagonal() const;
};
Bounds boundsOf(const Surface& surface);

}  // namespace heatmap
