// Inputs of the weld benchmarks: triangle soups, in which every triangle owns its points.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace bench {

struct Soup {
  std::vector<double> points;
  std::vector<std::int32_t> triangles;

  std::int32_t pointCount() const { return static_cast<std::int32_t>(points.size() / 3); }
  std::int32_t triangleCount() const { return static_cast<std::int32_t>(triangles.size() / 3); }
};

/// Points in the order given, three to a triangle.
inline Soup soupOfPoints(std::vector<double> points) {
  Soup soup{std::move(points), {}};
  soup.triangles.resize(static_cast<std::size_t>(soup.pointCount() / 3) * 3);
  std::iota(soup.triangles.begin(), soup.triangles.end(), 0);
  return soup;
}

/// Reads a mesh file. Throws std::runtime_error.
Soup readSoup(const std::string& file);

/// A square of side x side squares, two triangles each.
Soup planarGrid(int side);

/// Every triangle cut into four.
Soup subdivided(const Soup& soup);

/// Every point moved at random by less than `distance`, so that no two are equal.
Soup shaken(const Soup& soup, double distance);

/// The triangles in random order.
Soup shuffled(const Soup& soup);

double diagonalOf(const Soup& soup);
double meanEdgeOf(const Soup& soup);

struct Shape {
  std::string name;
  Soup soup;
  double tolerance;
};

/// Arrangements of `count` points that a search might fall for.
std::vector<Shape> awkwardShapes(std::int32_t count);

}  // namespace bench
