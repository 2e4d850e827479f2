#include "soups/soups.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace bench {
namespace {

using Random = std::mt19937_64;
using Vector = std::array<double, 3>;

double uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

Vector pointAt(const Soup& soup, std::int32_t i) {
  const double* p = soup.points.data() + 3 * static_cast<std::size_t>(i);
  return {p[0], p[1], p[2]};
}

double distance(const Vector& p, const Vector& q) {
  return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

template <typename PointOf>
std::vector<double> points(std::int32_t count, const PointOf& pointOf) {
  std::vector<double> result;
  result.reserve(3 * static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    const Vector p = pointOf(i);
    result.insert(result.end(), p.begin(), p.end());
  }
  return result;
}

/// An even spiral over the unit sphere (Swinbank and Purser, 2006).
Vector onSphere(std::int32_t i, std::int32_t count) {
  const double z = 1.0 - (2.0 * i + 1.0) / count;
  const double angle = i * 2.399963229728653;
  const double r = std::sqrt(1.0 - z * z);
  return {r * std::cos(angle), r * std::sin(angle), z};
}

}  // namespace

Soup planarGrid(int side) {
  const std::array<int, 6> dx{0, 1, 1, 0, 1, 0};
  const std::array<int, 6> dy{0, 0, 1, 0, 1, 1};
  return soupOfPoints(points(6 * side * side, [&](std::int32_t i) {
    const auto corner = static_cast<std::size_t>(i % 6);
    const int x = i / 6 % side + dx[corner];
    const int y = i / 6 / side + dy[corner];
    return Vector{static_cast<double>(x) / side, static_cast<double>(y) / side, 0.0};
  }));
}

Soup subdivided(const Soup& soup) {
  std::vector<double> all;
  all.reserve(4 * soup.points.size());
  for (std::int32_t t = 0; t < soup.triangleCount(); ++t) {
    std::array<Vector, 6> p;  // corners, then the middles of the edges that follow them
    for (std::size_t k = 0; k < 3; ++k) {
      p[k] = pointAt(soup, soup.triangles[3 * static_cast<std::size_t>(t) + k]);
    }
    for (std::size_t k = 0; k < 3; ++k) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        p[3 + k][axis] = 0.5 * (p[k][axis] + p[(k + 1) % 3][axis]);
      }
    }
    for (const std::size_t k : {0U, 3U, 5U, 3U, 1U, 4U, 5U, 4U, 2U, 3U, 4U, 5U}) {
      all.insert(all.end(), p[k].begin(), p[k].end());
    }
  }
  return soupOfPoints(std::move(all));
}

Soup shaken(const Soup& soup, double distance) {
  Random random(1);
  Soup result = soup;
  const double perAxis = distance / std::sqrt(3.0);
  for (double& coordinate : result.points) {
    coordinate += uniform(random, -perAxis, perAxis);
  }
  return result;
}

Soup shuffled(const Soup& soup) {
  std::vector<std::int32_t> order(soup.triangles.size() / 3);
  std::iota(order.begin(), order.end(), 0);
  Random random(3);
  std::shuffle(order.begin(), order.end(), random);
  std::vector<double> points;
  for (const std::int32_t t : order) {
    points.insert(points.end(), soup.points.begin() + 9 * std::ptrdiff_t{t},
                  soup.points.begin() + 9 * (std::ptrdiff_t{t} + 1));
  }
  return soupOfPoints(std::move(points));
}

double diagonalOf(const Soup& soup) {
  Vector low = pointAt(soup, 0);
  Vector high = low;
  for (std::int32_t i = 1; i < soup.pointCount(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], pointAt(soup, i)[axis]);
      high[axis] = std::max(high[axis], pointAt(soup, i)[axis]);
    }
  }
  return distance(low, high);
}

double meanEdgeOf(const Soup& soup) {
  double sum = 0.0;
  for (std::size_t t = 0; t < soup.triangles.size(); t += 3) {
    for (std::size_t k = 0; k < 3; ++k) {
      sum += distance(pointAt(soup, soup.triangles[t + k]),
                      pointAt(soup, soup.triangles[t + (k + 1) % 3]));
    }
  }
  return sum / static_cast<double>(soup.triangles.size());
}

std::vector<Shape> awkwardShapes(std::int32_t count) {
  Random random(2);
  const auto side = static_cast<std::int32_t>(std::cbrt(count));
  const auto edge = static_cast<std::int32_t>(std::sqrt(count));
  const double sphereSpacing = std::sqrt(4.0 * 3.141592653589793 / count);
  const auto shape = [](const char* name, double tolerance, std::vector<double> all) {
    return Shape{name, soupOfPoints(std::move(all)), tolerance};
  };
  const auto uniformCube = [&random](double size) {
    return Vector{uniform(random, 0, size), uniform(random, 0, size), uniform(random, 0, size)};
  };

  std::vector<Shape> shapes;
  shapes.push_back(shape("all coincident", 1e-9, points(count, [](std::int32_t) {
                           return Vector{1, 2, 3};
                         })));
  shapes.push_back(
      shape("a line, tolerance just below its spacing", 0.999, points(count, [](std::int32_t i) {
              return Vector{1.0 * i, 0, 0};
            })));
  shapes.push_back(shape("a diagonal line", 1e-3, points(count, [](std::int32_t i) {
                           return Vector{1. * i, 2. * i, 3. * i};
                         })));
  shapes.push_back(shape("a plane", 1e-9, points(count, [&](std::int32_t) {
                           return Vector{uniform(random, 0, 1), uniform(random, 0, 1), 0};
                         })));
  shapes.push_back(shape("a tilted plane", 1e-9, points(count, [&](std::int32_t) {
                           const double u = uniform(random, 0, 1);
                           const double v = uniform(random, 0, 1);
                           return Vector{u, v, 0.3 * u + 0.7 * v};
                         })));
  shapes.push_back(shape("a sphere, tolerance just below its spacing", 0.95 * sphereSpacing,
                         points(count, [&](std::int32_t i) { return onSphere(i, count); })));
  shapes.push_back(shape(
      "a lattice at exactly the tolerance", 1.0, points(side * side * side, [&](std::int32_t i) {
        return Vector{1. * (i % side), 1. * (i / side % side), 1. * (i / side / side)};
      })));
  shapes.push_back(shape("two clusters just out of reach", 1.0, points(count, [&](std::int32_t i) {
                           Vector p = uniformCube(0.1);
                           p[0] += i % 2 == 0 ? 0.0 : 1.1 + 1e-9;
                           return p;
                         })));
  shapes.push_back(shape("two tilted sheets just out of reach", 0.01,
                         points(2 * edge * edge, [&](std::int32_t i) {
                           const double u = 1.0 * (i / 2 % edge) / edge;
                           const double v = 1.0 * (i / 2 / edge) / edge;
                           const double h = i % 2 == 0 ? 0.0 : 0.010001 / std::sqrt(1.5904);
                           return Vector{u - 0.48 * h, v - 0.6 * h, 0.48 * u + 0.6 * v + h};
                         })));
  shapes.push_back(shape("a volume, tolerance about its spacing", 1.0 / side,
                         points(count, [&](std::int32_t) { return uniformCube(1.0); })));
  shapes.push_back(shape("an outlier 1e12 away", 1e-9, points(count, [&](std::int32_t i) {
                           return i == count / 2 ? Vector{1e12, 1e12, 1e12} : uniformCube(1.0);
                         })));
  shapes.push_back(shape("ever finer towards a point", 1e-9, points(count, [&](std::int32_t) {
                           const double r = std::exp(uniform(random, -40, 0));
                           const Vector p = uniformCube(1.0);
                           return Vector{r * p[0], r * p[1], r * p[2]};
                         })));
  shapes.push_back(shape("every tenth point NaN", 1e-9, points(count, [&](std::int32_t i) {
                           Vector p = uniformCube(1.0);
                           p[0] = i % 10 == 0 ? std::numeric_limits<double>::quiet_NaN() : p[0];
                           return p;
                         })));

  const std::int32_t rim = count / 2 - 1;
  for (const bool hubIsLast : {false, true}) {
    Shape fan{
        hubIsLast ? "a fan around its last vertex" : "a fan around its first vertex", {}, 1e-9};
    const std::int32_t hub = hubIsLast ? rim : 0;
    const std::int32_t first = hubIsLast ? 0 : 1;
    fan.soup.points = points(rim + 1, [&](std::int32_t i) {
      const double angle = 6.28 * i / rim;
      return i == hub ? Vector{0, 0, 0} : Vector{std::cos(angle), std::sin(angle), 0};
    });
    for (std::int32_t i = first; i + 1 < first + rim; ++i) {
      fan.soup.triangles.insert(fan.soup.triangles.end(), {hub, i, i + 1});
    }
    shapes.push_back(std::move(fan));
  }
  return shapes;
}

}  // namespace bench
