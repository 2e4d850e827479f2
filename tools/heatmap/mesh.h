// A triangle mesh in the arrays that quor.h speaks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace heatmap {

struct Mesh {
  std::vector<double> vertices;         // x, y, z per vertex
  std::vector<std::int32_t> triangles;  // three 0-based vertex indices per triangle

  std::int32_t vertexCount() const { return static_cast<std::int32_t>(vertices.size() / 3); }
  std::int32_t triangleCount() const { return static_cast<std::int32_t>(triangles.size() / 3); }
  const double* vertex(std::int32_t i) const {
    return vertices.data() + 3 * static_cast<std::size_t>(i);
  }
  const std::int32_t* triangle(std::int32_t t) const {
    return triangles.data() + 3 * static_cast<std::size_t>(t);
  }
};

// Corners of the axis-aligned bounding box.
struct Bounds {
  std::array<double, 3> low;
  std::array<double, 3> high;
  double diagonal() const;
};
Bounds boundsOf(const Mesh& mesh);

}  // namespace heatmap
