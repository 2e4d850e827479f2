#include "kit/refined_count.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>

namespace quorkit {
namespace {

std::int32_t noNumber(const SizedCorner& /*p*/, const SizedCorner& /*q*/, Vec3 /*middle*/) {
  return 0;
}

/// A length that no edge of a part of the triangle exceeds: the one asked for, or what rounding and
/// the smallest squares leave.
double longestLeft(const SizedTriangle& c, double longest) {
  constexpr double kHasSquare = 1e-150;
  double left = std::max(longest, kHasSquare);
  for (const SizedCorner& corner : c) {
    const Vec3 p = corner.point;
    left = std::max(
        {left, kFewSteps * std::abs(p.x), kFewSteps * std::abs(p.y), kFewSteps * std::abs(p.z)});
  }
  return left;
}

/// The parts cover the triangle and its longest side.
double leastParts(const SizedTriangle& c, double longest) {
  constexpr double kTwiceLargest = 0.8660254037844387;  // twice the area of sides of length 1
  const double unit = longestLeft(c, longest);
  if (!std::isfinite(longest * longest)) {  // no square is larger: nothing is split
    return 1.0;
  }
  const auto side = [unit](Vec3 p, Vec3 q) {  // quarters do not overflow
    return (4.0 / unit) * (0.25 * q - 0.25 * p);
  };
  const Vec3 u = side(c[0].point, c[1].point);
  const Vec3 v = side(c[0].point, c[2].point);
  const Vec3 w = v - u;
  const Vec3 normal = cross(u, v);
  const double squaredSide = std::max({dot(u, u), dot(v, v), dot(w, w)});
  return std::max({1.0, std::sqrt(squaredSide), std::sqrt(dot(normal, normal)) / kTwiceLargest});
}

/// One of the similar triangles that are left when all sides have been halved until one of them is
/// not longer than `longest`, with a corner at the origin.
/// @param copies  receives how many there are
SizedTriangle smallestSimilar(const SizedTriangle& c, double longest, double& copies) {
  constexpr int kMostHalvings = 64;  // rounding leaves no side for more
  const double shortest = std::sqrt(
      std::min({squaredDistance(c[0].point, c[1].point), squaredDistance(c[1].point, c[2].point),
                squaredDistance(c[2].point, c[0].point)}));
  int halvings = 0;
  while (halvings < kMostHalvings && std::ldexp(shortest, -halvings) > longest) {
    ++halvings;
  }
  copies = std::ldexp(1.0, 2 * halvings);
  SizedTriangle similar = c;
  for (SizedCorner& corner : similar) {
    corner.point = std::ldexp(1.0, -halvings) * (corner.point - c[0].point);
  }
  return similar;
}

}  // namespace

std::int64_t countRefined(const MeshView& mesh, const EdgeLengths& lengths, std::int64_t most) {
  Division division(lengths.longest);
  std::int64_t count = 0;
  for (std::size_t t = 0; t < mesh.triangleCount() && count <= most; ++t) {
    division.divide(cornersOf(mesh, t, lengths), noNumber,
                    [&](const SizedTriangle&) { return ++count <= most; });
  }
  return count;
}

double estimateRefined(const MeshView& mesh, double longest, double most) {
  assert(longest > 0.0);
  Division division(longest);
  double sum = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount() && sum <= most; ++t) {
    double copies = 1.0;
    const SizedTriangle similar = smallestSimilar(cornersOf(mesh, t, {longest}), longest, copies);
    division.divide(similar, noNumber, [&](const SizedTriangle&) {
      sum += copies;
      return sum <= most;
    });
  }
  return sum;
}

double leastRefined(const MeshView& mesh, double longest) {
  assert(longest > 0.0);
  double sum = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    sum += leastParts(cornersOf(mesh, t, {longest}), longest);
  }
  return sum;
}

}  // namespace quorkit
