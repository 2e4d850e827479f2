#include "part/surface.h"

#include "part/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace heatmap {

std::array<Vec3, 3> cornersOf(const Surface& surface, std::int32_t t) {
  const std::int32_t* const corner = surface.triangle(t);
  return {surface.point(corner[0]), surface.point(corner[1]), surface.point(corner[2])};
}

double areaOf(const Surface& surface, std::int32_t t) {
  const auto [a, b, c] = cornersOf(surface, t);
  return 0.5 * norm(cross(b - a, c - a));
}

Vec3 centerOf(const Surface& surface, std::int32_t t) {
  const auto [a, b, c] = cornersOf(surface, t);
  return 1.0 / 3.0 * (a + b + c);
}

std::array<Edge, 3> edgesOf(const Surface& surface, std::int32_t t) {
  const std::int32_t* const corner = surface.triangle(t);
  std::array<Edge, 3> edges{};
  for (std::size_t k = 0; k < 3; ++k) {
    const auto [low, high] = std::minmax(corner[k], corner[(k + 1) % 3]);
    edges[k] = {low, high};
  }
  return edges;
}

double Bounds::diagonal() const {
  return std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
}

Bounds boundsOf(const Surface& surface) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  Bounds bounds{{infinity, infinity, infinity}, {-infinity, -infinity, -infinity}};
  for (std::int32_t i = 0; i < surface.vertexCount(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      bounds.low[axis] = std::min(bounds.low[axis], surface.vertex(i)[axis]);
      bounds.high[axis] = std::max(bounds.high[axis], surface.vertex(i)[axis]);
    }
  }
  return bounds;
}

}  // namespace heatmap
