#include "kit/measure.h"

#include <algorithm>
#include <cmath>

namespace quorkit {
namespace {

/// Squares between these are neither rounded as denormal numbers nor infinite.
constexpr double kSmallestSquare = 1e-200;
constexpr double kLargestSquare = 1e300;

bool isUsual(double square) {
  return square > kSmallestSquare && square < kLargestSquare;
}

/// Replaces u and v by halves of their differences from a, brought to a size near 1 by one power of
/// two. Halves do not overflow; numbers below 1 are enlarged first, so that halves lose no bit.
/// @return the exponent of the power of two that leads back to the differences
int bringToSizeOne(Vec3 a, Vec3& u, Vec3& v) {
  const auto halfDifference = [](Vec3 p, Vec3 q) { return 0.5 * p - 0.5 * q; };
  const double size = std::max({largestComponent(a), largestComponent(u), largestComponent(v)});
  const int enlarged = size < 1.0 ? 512 : 0;
  a = scaled(a, enlarged);
  u = halfDifference(scaled(u, enlarged), a);
  v = halfDifference(scaled(v, enlarged), a);
  int exponent = 0;
  std::frexp(std::max(largestComponent(u), largestComponent(v)), &exponent);
  u = scaled(u, -exponent);
  v = scaled(v, -exponent);
  return exponent - enlarged + 1;
}

}  // namespace

double largestComponent(Vec3 v) {
  return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

Vec3 scaled(Vec3 v, int exponent) {
  return {std::ldexp(v.x, exponent), std::ldexp(v.y, exponent), std::ldexp(v.z, exponent)};
}

double distance(Vec3 p, Vec3 q) {
  const double square = squaredDistance(p, q);
  if (isUsual(square)) {
    return std::sqrt(square);
  }
  Vec3 unused = p;
  const int exponent = bringToSizeOne(p, q, unused);
  return std::ldexp(std::sqrt(dot(q, q)), exponent);
}

double doubledArea(Vec3 a, Vec3 b, Vec3 c) {
  const Vec3 normal = cross(b - a, c - a);
  const double square = dot(normal, normal);
  if (isUsual(square)) {
    return std::sqrt(square);
  }
  const int exponent = bringToSizeOne(a, b, c);
  const Vec3 scaledNormal = cross(b, c);
  return std::ldexp(std::sqrt(dot(scaledNormal, scaledNormal)), 2 * exponent);
}

}  // namespace quorkit
