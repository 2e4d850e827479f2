// Fields of quorkitSolveWithin, owned and taken apart.
#pragma once

#include "kit_mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <vector>

namespace test {

struct FreeSolution {
  void operator()(const QuorkitSolution* solution) const { quorkitFreeSolution(solution); }
};
using Solution = std::unique_ptr<const QuorkitSolution, FreeSolution>;

/// A problem that owns its arrays.
struct Prescribed {
  Mesh mesh;
  std::vector<double> triangleValues;
  std::vector<std::int32_t> edges;
  std::vector<double> edgeValues;
  std::vector<double> vertexValues;
  std::vector<double> sources;
  std::vector<std::int32_t> faces;
  double tolerance = 0.005;
  bool isShareOfSpan = true;
  std::int32_t triangleLimit = 0;

  void prescribeEdge(std::int32_t u, std::int32_t v, double value) {
    edges.insert(edges.end(), {u, v});
    edgeValues.push_back(value);
  }

  QuorkitProblem problem() const {
    QuorkitProblem problem{};
    problem.n = mesh.n();
    problem.vertices = mesh.vertices.data();
    problem.m = mesh.m();
    problem.triangles = mesh.triangles.data();
    problem.triangleValues = triangleValues.empty() ? nullptr : triangleValues.data();
    problem.edgeCount = std::int32_t(edgeValues.size());
    problem.edges = edges.data();
    problem.edgeValues = edgeValues.data();
    problem.vertexValues = vertexValues.empty() ? nullptr : vertexValues.data();
    problem.sources = sources.empty() ? nullptr : sources.data();
    problem.faces = faces.empty() ? nullptr : faces.data();
    problem.tolerance = tolerance;
    problem.isShareOfSpan = isShareOfSpan ? 1 : 0;
    problem.triangleLimit = triangleLimit;
    return problem;
  }
};

inline Solution solveWithin(const Prescribed& prescribed, QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitProblem problem = prescribed.problem();
  const QuorkitSolution* made = nullptr;
  EXPECT_EQ(quorkitSolveWithin(&problem, nullptr, nullptr, &made), expected);
  EXPECT_EQ(made != nullptr, expected == QUORKIT_DONE);
  return Solution(made);
}

/// A ring between two regular polygons, in long thin triangles.
inline Mesh ring(int corners, double inner, double outer) {
  Mesh mesh;
  for (const double radius : {inner, outer}) {
    for (int i = 0; i < corners; ++i) {
      const double angle = 2 * 3.14159265358979 * i / corners;
      mesh.vertices.insert(mesh.vertices.end(),
                           {radius * std::cos(angle), radius * std::sin(angle), 0});
    }
  }
  for (int i = 0; i < corners; ++i) {
    const int j = (i + 1) % corners;
    mesh.triangles.insert(mesh.triangles.end(), {i, corners + i, corners + j, i, corners + j, j});
  }
  return mesh;
}

using Point = std::array<double, 3>;

/// The largest difference from an exact field, at the vertices of a solution, at the midpoints of
/// its edges and in the middle of its triangles, where it is linear between the vertices.
/// @param exact  called with a position
template <typename Exact>
double trueError(const QuorkitSolution& solution, const Exact& exact) {
  double largest = 0;
  const auto compare = [&](std::initializer_list<std::int32_t> corners) {
    Point p{};
    double value = 0;
    for (const std::int32_t v : corners) {
      for (std::size_t k = 0; k < 3; ++k) {
        p[k] += solution.vertices[3 * std::size_t(v) + k] / double(corners.size());
      }
      value += solution.field[v] / double(corners.size());
    }
    largest = std::max(largest, std::abs(value - exact(p)));
  };
  for (std::int32_t v = 0; v < solution.vertexCount; ++v) {
    compare({v});
  }
  for (std::int32_t t = 0; t < solution.triangleCount; ++t) {
    const std::int32_t* const c = solution.triangles + 3 * std::size_t(t);
    compare({c[0], c[1], c[2]});
    compare({c[0], c[1]});
    compare({c[1], c[2]});
    compare({c[2], c[0]});
  }
  return largest;
}

}  // namespace test
