#include "soups/slow_soups.h"
#include "soups/soup_points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace bench {
namespace {

/// Half of the points in a ball, half on a sphere around it.
template <int kThousandths>
Soup ballInSphere(std::int32_t count, double& tolerance) {
  tolerance = 1;
  const double radius = kThousandths / 1000.0;
  Random random(4);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    Vector p = onUnitSphere(random);
    const double r = i % 2 == 0 ? radius * std::cbrt(uniform(random, 0, 1)) : radius + kBeyond;
    append(points, {r * p[0], r * p[1], r * p[2]});
  }
  return soupOfPoints(std::move(points));
}

/// The points from which the grid of the tree is made are far apart, all others in one voxel.
Soup oneVoxel(std::int32_t count, double& tolerance) {
  tolerance = 1e-12;
  Random random(5);
  std::vector<double> points;
  for (std::int32_t i = 0; i < 3 * count; ++i) {
    points.push_back(uniform(random, 0, 1e-6));
  }
  const std::size_t share = std::max<std::size_t>(1, static_cast<std::size_t>(count) / 1024);
  std::uint32_t noise = 1;
  for (std::size_t first = 0; first + share <= static_cast<std::size_t>(count); first += share) {
    noise = noise * 1664525U + 1013904223U;
    const std::size_t i = first + (std::uint64_t{noise} * share >> 32U);
    for (std::size_t k = 0; k < 3; ++k) {
      points[3 * i + k] = uniform(random, -1, 1);
    }
  }
  return soupOfPoints(std::move(points));
}

/// Ever finer towards one point, by a factor that leaves a third of the points on one side of each
/// half.
Soup everFiner(std::int32_t count, double& tolerance) {
  tolerance = 1e-150;
  Random random(6);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const double r = std::exp(uniform(random, -300, 0));
    append(points,
           {r * uniform(random, 0, 1), r * uniform(random, 0, 1), r * uniform(random, 0, 1)});
  }
  return soupOfPoints(std::move(points));
}

/// Dense balls, each with twelve points that are near to all of it and to nothing else.
Soup ballsWithSatellites(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(7);
  std::vector<double> points;
  const double golden = (1 + std::sqrt(5)) / 2;
  const double size = 0.999 / std::sqrt(1 + golden * golden);
  const std::int32_t perBall = std::max(64, count / 16);
  for (std::int32_t i = 0; i < count; ++i) {
    const double x = 8.0 * (i / perBall);
    const std::int32_t k = i % perBall;
    const double s = k % 2 == 0 ? size : -size;
    const double t = golden * (k / 2 % 2 == 0 ? size : -size);
    const Vector corner{s, t, 0};
    const auto shift = static_cast<std::size_t>(k / 4);
    append(points, k < 12
                       ? Vector{x + corner[shift], corner[(shift + 1) % 3], corner[(shift + 2) % 3]}
                       : Vector{x + uniform(random, 0, 1e-4), uniform(random, 0, 1e-4),
                                uniform(random, 0, 1e-4)});
  }
  return soupOfPoints(std::move(points));
}

/// @param surface  takes two numbers from 0 to 1, and which of two surfaces
template <typename Surface>
Soup twoSurfaces(std::int32_t count, double& tolerance, const Surface& surface) {
  tolerance = 1;
  Random random(8);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const double u = uniform(random, 0, 1);
    append(points, turned(surface(u, uniform(random, 0, 1), i % 2 == 0)));
  }
  return soupOfPoints(std::move(points));
}

template <int kThousandths>
Soup sheets(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double size = kThousandths / 1000.0;
    return Vector{size * u, size * v, isFirst ? 0 : kBeyond};
  });
}

template <int kThousandths>
Soup spheres(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double z = 2 * u - 1;
    const double inner = kThousandths / 1000.0;
    const double radius = isFirst ? inner : inner + kBeyond;
    const double r = radius * std::sqrt(1 - z * z);
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), radius * z};
  });
}

template <int kThousandths>
Soup ringAndDisc(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double disc = kThousandths / 1000.0;
    const double r = isFirst ? disc * std::sqrt(u) : disc + kBeyond;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), 0};
  });
}

template <int kThousandths>
Soup axisAndCylinder(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double r = isFirst ? 0 : kBeyond;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), kThousandths / 1000.0 * u};
  });
}

Soup sixSpheres(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(10);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const Vector p = onUnitSphere(random);
    const double r = 0.1 + i % 6 * kBeyond;
    append(points, {r * p[0], r * p[1], r * p[2]});
  }
  return soupOfPoints(std::move(points));
}

/// Where coordinates are so large that a millionth of the tolerance is as near as points come.
Soup spheresFarAway(std::int32_t count, double& tolerance) {
  Soup soup = spheres<10>(count, tolerance);
  for (double& coordinate : soup.points) {
    coordinate = coordinate * (1 + 1e-6) + 1e8;
  }
  return soup;
}

Soup circleInTorus(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double tube = isFirst ? 0 : kBeyond;
    const double r = 1.5 + tube * std::cos(2 * kPi * v);
    return Vector{r * std::cos(2 * kPi * u), r * std::sin(2 * kPi * u),
                  tube * std::sin(2 * kPi * v)};
  });
}

/// All pairs of a point on the circle and one on the axis are out of reach by 1e-13.
Soup shortAxisAndCircle(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double r = isFirst ? 0 : 1 + 1e-13;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v),
                  isFirst ? 1e-7 * (u - 0.5) : 0};
  });
}

}  // namespace

const std::vector<SlowSoup>& soupsSlowInTree() {
  static const std::vector<SlowSoup> soups = {
      {"all points in one voxel of the tree's order", Harmless::kDistinct, oneVoxel},
      {"ever finer towards a point, over 130 decades", Harmless::kDistinct, everFiner},
      {"dense balls, points on their own around them", Harmless::kDistinct, ballsWithSatellites},
      {"a ball of 0.001 tolerances in a sphere", Harmless::kDistinct, ballInSphere<1>},
      {"a ball of 0.01 tolerances in a sphere", Harmless::kDistinct, ballInSphere<10>},
      {"tilted sheets of 0.001 tolerances", Harmless::kDistinct, sheets<1>},
      {"tilted sheets of 1 tolerance", Harmless::kDistinct, sheets<1000>},
      {"tilted sheets of 100 tolerances", Harmless::kDistinct, sheets<100000>},
      {"spheres, the inner one of 0.01 tolerances", Harmless::kDistinct, spheres<10>},
      {"spheres, the inner one of 1 tolerance", Harmless::kDistinct, spheres<1000>},
      {"spheres, the inner one of 30 tolerances", Harmless::kDistinct, spheres<30000>},
      {"a ring and a disc of 0.01 tolerances", Harmless::kDistinct, ringAndDisc<10>},
      {"a ring and a disc of 1 tolerance", Harmless::kDistinct, ringAndDisc<1000>},
      {"an axis of 0.01 tolerances and a cylinder", Harmless::kDistinct, axisAndCylinder<10>},
      {"an axis of 1 tolerance and a cylinder", Harmless::kDistinct, axisAndCylinder<1000>},
      {"an axis of 30 tolerances and a cylinder", Harmless::kDistinct, axisAndCylinder<30000>},
      {"six spheres", Harmless::kDistinct, sixSpheres},
      {"spheres 1e8 tolerances from the origin", Harmless::kDistinct, spheresFarAway},
      {"a circle in a torus", Harmless::kDistinct, circleInTorus},
  };
  return soups;
}

const std::vector<SlowSoup>& soupsSlowForever() {
  static const std::vector<SlowSoup> soups = {
      {"an axis and a circle, out of reach by 1e-13", Harmless::kDistinct, shortAxisAndCircle},
  };
  return soups;
}

}  // namespace bench
