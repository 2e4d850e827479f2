// A part of the benchmark, and what is prescribed on it.
#pragma once

#include <quorkit.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace within {

using Point = std::array<double, 3>;
using Where = std::function<bool(const Point&)>;

struct Part {
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;

  std::int32_t n() const { return static_cast<std::int32_t>(vertices.size() / 3); }
  std::int32_t m() const { return static_cast<std::int32_t>(triangles.size() / 3); }
  Point point(std::size_t v) const {
    return {vertices[3 * v], vertices[3 * v + 1], vertices[3 * v + 2]};
  }
  Point corner(std::size_t k) const { return point(static_cast<std::size_t>(triangles[k])); }
};

/// A binary STL file, welded and cleaned.
Part readPart(const std::string& path);

/// Length of the diagonal of the box around the vertices.
double diagonalOf(const Part& part);

/// Gives a value to the triangles, or to the edges, all of whose corners are at a place.
struct Region {
  enum class Kind { kTriangles, kEdges };
  Kind kind;
  Where where;
  double value;
};

/// What is asked for on a part. The arrays are those of QuorkitProblem.
struct Prescription {
  std::vector<double> triangleValues;
  std::vector<std::int32_t> edges;
  std::vector<double> edgeValues;
  std::vector<double> sources;  ///< empty for none

  QuorkitProblem problem(const Part& part) const;
};

/// @param source  where a density of -1 raises the field; null for no source
/// Throws std::runtime_error if a region selects nothing.
Prescription prescribe(const Part& part, const std::vector<Region>& regions, const Where& source);

}  // namespace within
