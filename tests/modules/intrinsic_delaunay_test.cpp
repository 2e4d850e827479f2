// The intrinsic Delaunay triangulation, where what it must be is known.

#include "kit/intrinsic_delaunay.h"
#include "support/mesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace test;

namespace {

/// A jittered grid, stretched and sheared, so that many of its edges are flipped.
Mesh shearedGrid(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> jitter(-0.3, 0.3);
  return gridMesh(9, 7, [&](double u, double v) {
    const double x = 8 * u + jitter(random);
    const double y = 6 * v + jitter(random);
    return std::array<double, 3>{x + 1.7 * y, 0.4 * y, 0.0};
  });
}

TEST(IntrinsicDelaunay, KeepsTheEnergyOfLinearFunctionsAndHasNoNegativeWeight) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    const Mesh mesh = shearedGrid(seed);
    const quorkit::MeshView view{mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data()};
    const std::vector<bool> isFixed(mesh.triangles.size());
    const auto edges = quorkit::intrinsicDelaunayEdges(view, isFixed);
    const auto at = [&](std::int32_t v, std::size_t axis) {
      return mesh.vertices[3 * std::size_t(v) + axis];
    };
    double area = 0;
    for (std::size_t k = 0; k < mesh.triangles.size(); k += 3) {
      const std::int32_t* const c = &mesh.triangles[k];
      area += 0.5 * ((at(c[1], 0) - at(c[0], 0)) * (at(c[2], 1) - at(c[0], 1)) -
                     (at(c[1], 1) - at(c[0], 1)) * (at(c[2], 0) - at(c[0], 0)));
    }
    // Whatever the triangles are, those of a function that is linear in the plane have its
    // gradient.
    for (const auto& [a, b] : {std::pair{1.0, 0.0}, {0.0, 1.0}, {1.0, -2.0}}) {
      double energy = 0;
      for (const quorkit::WeightedEdge& edge : edges) {
        const double step =
            a * (at(edge.u, 0) - at(edge.v, 0)) + b * (at(edge.u, 1) - at(edge.v, 1));
        energy += edge.weight * step * step;
      }
      EXPECT_NEAR(energy, (a * a + b * b) * area, 1e-9 * area) << a << ' ' << b;
    }
    // Each edge of the border has one triangle, whose angle there may be obtuse.
    int negative = 0;
    for (const quorkit::WeightedEdge& edge : edges) {
      negative += edge.weight < -1e-9 ? 1 : 0;
    }
    EXPECT_LE(negative, 2 * (8 + 6)) << "more than the border has edges";
    std::vector<bool> all(mesh.triangles.size(), true);
    int before = 0;
    for (const quorkit::WeightedEdge& edge : quorkit::intrinsicDelaunayEdges(view, all)) {
      before += edge.weight < -1e-9 ? 1 : 0;
    }
    EXPECT_GT(before, negative) << "nothing was flipped";
  }
}

}  // namespace
