// Points, segments and triangles in space.
#pragma once

#include "util/vec3.h"

#include <array>
#include <cmath>

namespace heatmap {

using quor::Vec3;

inline double norm(Vec3 u) {
  return std::hypot(u.x, u.y, u.z);
}

inline std::array<double, 3> coordinates(Vec3 p) {
  return {p.x, p.y, p.z};
}

// The point of a segment, or of a triangle, that is nearest to p. Both may be degenerate.
Vec3 nearestOfSegment(Vec3 p, Vec3 a, Vec3 b);
Vec3 nearestOfTriangle(Vec3 p, Vec3 a, Vec3 b, Vec3 c);

}  // namespace heatmap
