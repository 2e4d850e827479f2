#include "surface.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace heatmap {

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
