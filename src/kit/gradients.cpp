#include "kit/gradients.h"

#include "kit/measure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorkit {
namespace {

/// The exponent of a triangle's size, by which it is brought to a size near 1: fourth powers of
/// lengths occur on the way.
int exponentOf(Vec3 u, Vec3 v) {
  const double size = std::max(largestComponent(u), largestComponent(v));
  int exponent = 0;
  if (std::isfinite(size)) {
    std::frexp(size, &exponent);
  }
  return exponent;
}

/// The tangent vector whose products with the sides u and v are the rises along them.
Vec3 gradient(Vec3 u, Vec3 v, double riseU, double riseV) {
  const int exponent = exponentOf(u, v);
  u = scaled(u, -exponent);
  v = scaled(v, -exponent);
  const Vec3 normal = cross(u, v);
  const double square = dot(normal, normal);
  const Vec3 sum = riseU * cross(v, normal) + riseV * cross(normal, u);
  return scaled({sum.x / square, sum.y / square, sum.z / square}, -exponent);
}

}  // namespace

void gradients(const MeshView& mesh, const double* field, double* gradientsOut) {
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const corner = mesh.triangles + 3 * t;
    const Vec3 origin = pointAt(mesh.vertices, corner[0]);
    const Vec3 g = gradient(
        pointAt(mesh.vertices, corner[1]) - origin, pointAt(mesh.vertices, corner[2]) - origin,
        field[corner[1]] - field[corner[0]], field[corner[2]] - field[corner[0]]);
    gradientsOut[3 * t] = g.x;
    gradientsOut[3 * t + 1] = g.y;
    gradientsOut[3 * t + 2] = g.z;
  }
}

}  // namespace quorkit
