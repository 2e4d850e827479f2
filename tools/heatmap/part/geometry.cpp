#include "part/geometry.h"

#include <algorithm>

namespace heatmap {

Vec3 nearestOfSegment(Vec3 p, Vec3 a, Vec3 b) {
  const Vec3 along = b - a;
  const double squared = dot(along, along);
  const double share = squared > 0.0 ? dot(p - a, along) / squared : 0.0;
  return a + std::clamp(share, 0.0, 1.0) * along;
}

Vec3 nearestOfTriangle(Vec3 p, Vec3 a, Vec3 b, Vec3 c) {
  const Vec3 normal = cross(b - a, c - a);
  const double squared = dot(normal, normal);
  const auto isLeftOf = [&](Vec3 from, Vec3 to) {
    return dot(cross(to - from, p - from), normal) >= 0.0;
  };
  if (squared > 0.0 && isLeftOf(a, b) && isLeftOf(b, c) && isLeftOf(c, a)) {
    return p - (dot(p - a, normal) / squared) * normal;
  }
  Vec3 nearest = nearestOfSegment(p, a, b);
  for (const Vec3 other : {nearestOfSegment(p, b, c), nearestOfSegment(p, c, a)}) {
    nearest = norm(p - other) < norm(p - nearest) ? other : nearest;
  }
  return nearest;
}

}  // namespace heatmap
