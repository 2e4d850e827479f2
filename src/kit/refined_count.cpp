#include "kit/refined_count.h"

#include "kit/division.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace quorkit {
namespace {

std::int32_t noNumber(const SizedCorner& /*p*/, const SizedCorner& /*q*/, Vec3 /*middle*/) {
  return 0;
}

/// The parts of a triangle; any number above `most` if they are more.
double countParts(SizedTriangle triangle, double longest, double most) {
  for (SizedCorner& corner : triangle) {
    corner.size = longest;
  }
  double count = 0.0;
  Division(longest).divide(triangle, noNumber,
                           [&](const SizedTriangle&) { return ++count <= most; });
  return count;
}

/// The largest coordinate, by its size.
double sizeOf(const SizedTriangle& c) {
  double size = 0.0;
  for (const SizedCorner& corner : c) {
    const Vec3 p = corner.point;
    size = std::max({size, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
  }
  return size;
}

/// Whether there are more parts than `most` along one side alone, rounded or not: a long needle
/// needs no counting. Computed with the triangle's size as the unit, in which squares are safe;
/// where the lengths' own squares are not, sides are not split as their lengths say.
/// @param size  of the triangle: edges of its steps of rounding have no midpoint
bool hasMoreAlongSide(const SizedTriangle& c, double size, double longest, double most) {
  const double step = kStepsOfRounding * std::numeric_limits<double>::epsilon();
  const double shortest = std::max(longest, step * size);
  if (size == 0.0 || !std::isfinite(longest * longest) ||
      shortest * shortest < std::numeric_limits<double>::min()) {
    return false;
  }
  const auto inSizes = [size](Vec3 p) { return Vec3{p.x / size, p.y / size, p.z / size}; };
  const double length = 2.0 * most * std::max(longest / size, step);
  double squaredSide = 0.0;
  for (std::size_t e = 0; e < 3; ++e) {
    squaredSide =
        std::max(squaredSide, squaredDistance(inSizes(c[e].point), inSizes(c[(e + 1) % 3].point)));
  }
  return squaredSide > length * length;
}

/// One of the similar triangles that are left when all sides have been halved until one of them is
/// not longer than `longest`, with a corner at the origin.
/// @param copies  receives how many there are
SizedTriangle smallestSimilar(const SizedTriangle& c, double longest, double& copies) {
  double shortest = std::numeric_limits<double>::infinity();
  for (std::size_t e = 0; e < 3; ++e) {
    shortest = std::min(shortest, squaredDistance(c[e].point, c[(e + 1) % 3].point));
  }
  double scale = 1.0;
  copies = 1.0;
  while (shortest * scale * scale > longest * longest) {
    scale *= 0.5;
    copies *= 4.0;
  }
  const Vec3 origin = c[0].point;
  SizedTriangle similar{};
  for (std::size_t k = 1; k < 3; ++k) {
    const Vec3 p = c[k].point;
    similar[k].point = {(p.x - origin.x) * scale, (p.y - origin.y) * scale,
                        (p.z - origin.z) * scale};
  }
  return similar;
}

/// @param size  of the triangle, not 0
double estimateParts(SizedTriangle triangle, double size, double longest, double most) {
  if (size < 0.1 * longest) {
    return 1.0;
  }
  int exponent = 0;  // numbers of size 1 have squares, whatever the unit
  std::frexp(size, &exponent);
  for (SizedCorner& corner : triangle) {
    corner.point = {std::ldexp(corner.point.x, -exponent), std::ldexp(corner.point.y, -exponent),
                    std::ldexp(corner.point.z, -exponent)};
  }
  longest = std::ldexp(longest, -exponent);
  double copies = 1.0;
  const SizedTriangle similar = smallestSimilar(triangle, longest, copies);
  return copies * countParts(similar, longest, most / copies);
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

double estimateRefined(const MeshView& mesh, double longest, Estimate kind, double most) {
  // Every level of halving adds a rounding error of the size of the coordinates to the sides. Where
  // that is no longer small beside the length the triangle is divided itself; but to be low, a
  // length will do that is longer by enough. Where the square of the length leaves the range of
  // double nothing is as usual.
  constexpr double kErrors = 64 * std::numeric_limits<double>::epsilon();
  constexpr double kLargestError = 1e-6;
  constexpr double kSmallest = 1e-150;
  const double direction = kind == Estimate::low ? 1.0 : kind == Estimate::high ? -1.0 : 0.0;
  double sum = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount() && sum <= most; ++t) {
    const SizedTriangle triangle = cornersOf(mesh, t, {longest});
    const double size = sizeOf(triangle);
    if (hasMoreAlongSide(triangle, size, longest, most)) {
      return 2.0 * most + 1.0;
    }
    const double safe = std::max(kErrors / kLargestError * size, kSmallest);
    const double length = kind == Estimate::low ? std::max(longest, safe) : longest;
    const double changed = length * (1.0 + direction * kErrors * size / length);
    const bool isUsual = length >= safe && std::isfinite(longest * longest);
    if (!isUsual && kind == Estimate::high) {
      return 2.0 * most + 1.0;
    }
    sum +=
        isUsual ? estimateParts(triangle, size, changed, most) : countParts(triangle, length, most);
  }
  return sum;
}

}  // namespace quorkit
