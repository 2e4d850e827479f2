// The size and the shape of one triangle.
#pragma once

#include "util/vec3.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace quorkit {

using quor::isFinite;
using quor::pointAt;
using quor::squaredDistance;
using quor::Vec3;

/// Where a triangle is flat, and how.
struct TriangleShape {
  // As parts of the longest side. From about a millionth of it on the rounding errors of a
  // triangle's stiffness, which grow with the square of side over height, are seen in the field.
  static constexpr double kFlat = 1e-6;
  static constexpr double kNeedle = 1e-3;

  std::array<double, 3> squaredSides{};  ///< side e is from corner e to corner e + 1 modulo 3
  std::size_t longest = 0;               ///< the longest side, the first of equal ones
  std::size_t shortest = 0;              ///< the shortest side, the first of equal ones
  double squaredLongest = 0.0;
  double twiceArea = 0.0;

  bool isFlat() const { return !(twiceArea > kFlat * squaredLongest); }
  bool isNeedle() const { return twiceArea < kNeedle * squaredLongest; }
  /// Whether the ends of the shortest side are at one place.
  bool isShortestNothing() const {
    return squaredSides[shortest] <= kFlat * kFlat * squaredLongest;
  }
};

/// The shape of a triangle of finite corners. Where squares would leave the range of double, it is
/// that of the triangle brought to size 1.
inline TriangleShape shapeOf(std::array<Vec3, 3> p) {
  TriangleShape shape;
  const auto measure = [&] {
    for (std::size_t e = 0; e < 3; ++e) {
      shape.squaredSides[e] = squaredDistance(p[e], p[(e + 1) % 3]);
    }
    const auto& sides = shape.squaredSides;
    shape.longest = toSize(std::max_element(sides.begin(), sides.end()) - sides.begin());
    shape.shortest = toSize(std::min_element(sides.begin(), sides.end()) - sides.begin());
    shape.squaredLongest = sides[shape.longest];
  };
  measure();
  constexpr double kLargest = 1e100;
  if (!(shape.squaredLongest < kLargest && shape.squaredLongest > 1.0 / kLargest)) {
    double size = 0.0;
    for (Vec3& q : p) {  // differences of quarters do not overflow
      q = {0.25 * q.x, 0.25 * q.y, 0.25 * q.z};
    }
    for (const Vec3& q : p) {
      size =
          std::max({size, std::abs(q.x - p[0].x), std::abs(q.y - p[0].y), std::abs(q.z - p[0].z)});
    }
    int exponent = 0;
    std::frexp(size, &exponent);
    const Vec3 origin = p[0];
    for (Vec3& q : p) {
      q = {std::ldexp(q.x - origin.x, -exponent), std::ldexp(q.y - origin.y, -exponent),
           std::ldexp(q.z - origin.z, -exponent)};
    }
    measure();
  }
  const Vec3 normal = cross(p[1] - p[0], p[2] - p[0]);
  shape.twiceArea = std::sqrt(dot(normal, normal));
  return shape;
}

}  // namespace quorkit
