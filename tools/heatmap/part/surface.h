// A triangle mesh in the arrays that quor.h speaks.
#pragma once

#include "util/index.h"
#include "util/vec3.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace heatmap {

using quor::toIndex;
using quor::toSize;

using Position = std::array<double, 3>;

struct Surface {
  std::vector<double> vertices;         // x, y, z per vertex, relative to the origin
  std::vector<std::int32_t> triangles;  // three 0-based vertex indices per triangle

  quor::Vec3 origin{0.0, 0.0, 0.0};  // in the coordinates of the file

  std::int32_t vertexCount() const { return toIndex(vertices.size() / 3); }
  std::int32_t triangleCount() const { return toIndex(triangles.size() / 3); }
  const double* vertex(std::int32_t v) const { return vertices.data() + 3 * toSize(v); }
  quor::Vec3 point(std::int32_t v) const { return quor::pointAt(vertices.data(), v); }
  const std::int32_t* triangle(std::int32_t t) const { return triangles.data() + 3 * toSize(t); }
};

// The corners of a triangle, its area, and their mean.
std::array<quor::Vec3, 3> cornersOf(const Surface& surface, std::int32_t t);
double areaOf(const Surface& surface, std::int32_t t);
quor::Vec3 centerOf(const Surface& surface, std::int32_t t);

using Edge = std::array<std::int32_t, 2>;  // two vertices, the lower one first

// The edges of a triangle, from its first corner on.
std::array<Edge, 3> edgesOf(const Surface& surface, std::int32_t t);

// Corners of the axis-aligned bounding box, relative to the origin.
struct Bounds {
  Position low;
  Position high;
  double diagonal() const;
};
Bounds boundsOf(const Surface& surface);

}  // namespace heatmap
