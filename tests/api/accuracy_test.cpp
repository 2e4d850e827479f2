// Fields against exact solutions: how near they come, and how far from ordinary shapes that holds.

#include "support/handle.h"
#include "support/weld_oracle.h"

#include <algorithm>
#include <cmath>

using namespace test;

namespace {

using Function = std::function<double(const double*)>;

/// Solves with the exact values prescribed where `isPrescribed`.
/// @return the largest error, as a share of the largest value
double errorOf(const Mesh& mesh, const Function& exact,
               const std::function<bool(std::size_t)>& isPrescribed) {
  std::vector<std::int32_t> tags(std::size_t(mesh.n()));
  std::vector<double> values(tags.size());
  double size = 0;
  for (std::size_t i = 0; i < tags.size(); ++i) {
    tags[i] = isPrescribed(i) ? 1 : 0;
    values[i] = exact(mesh.vertices.data() + 3 * i);
    size = std::max(size, std::abs(values[i]));
  }
  const std::vector<double> field = solve(build(mesh, tags), values);
  double error = 0;
  for (std::size_t i = 0; i < field.size(); ++i) {
    error = std::max(error, std::abs(field[i] - values[i]));
  }
  return error / size;
}

bool isOnBorder(std::size_t vertex, int nx, int ny) {
  const int i = int(vertex) % nx;
  const int j = int(vertex) / nx;
  return i == 0 || i == nx - 1 || j == 0 || j == ny - 1;
}

constexpr int kSide = 40;
constexpr double kFullAngle = 6.283185307179586;

using Shape = std::function<std::array<double, 3>(double, double)>;

/// Error of a linear function on a plane grid of irregular triangles, cells of size 1, that is then
/// put into shape. A linear function is harmonic, and linear elements hold it exactly: round-off is
/// all there is.
double linearError(const Shape& shape) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> jitter(-0.25, 0.25);
  std::size_t vertex = 0;
  const Mesh mesh = gridMesh(kSide, kSide, [&](double u, double v) {
    const double scale = isOnBorder(vertex++, kSide, kSide) ? 0 : 1;
    const double x = u * (kSide - 1) + scale * jitter(random);
    return shape(x, v * (kSide - 1) + scale * jitter(random));
  });
  const double* first = mesh.vertices.data();
  const double* last = first + mesh.vertices.size() - 3;
  const auto linear = [&](const double* p) {
    return 3 * (p[0] - first[0]) / (last[0] - first[0]) -
           2 * (p[1] - first[1]) / (last[1] - first[1]);
  };
  return errorOf(mesh, linear, [](std::size_t i) { return isOnBorder(i, kSide, kSide); });
}

TEST(Accuracy, LinearFunctionsAreExactToRoundOff) {
  EXPECT_LT(linearError([](double x, double y) {
              return std::array<double, 3>{x, y, 2 * x - 3 * y};
            }),
            1e-13);
  for (const double scale : {1e-60, 1e-9, 1e-6, 1e-3, 1e3, 1e6, 1e9, 1e60}) {
    const auto scaled = [=](double x, double y) {
      return std::array<double, 3>{scale * x, scale * y, scale};
    };
    EXPECT_LT(linearError(scaled), 1e-13) << scale;
  }
  for (const double scale : {1e-9, 1e-6, 1e-3, 1e3, 1e6, 1e9}) {
    const auto stretched = [=](double x, double y) {
      return std::array<double, 3>{scale * x, y, 0};
    };
    EXPECT_LT(linearError(stretched), 1e-11) << scale;
  }
}

TEST(Accuracy, DegradesGentlyOffTheOrdinary) {
  for (const double shift : {1e3, 1e6, 1e9}) {  // in cells: so many digits of the cells are lost
    const auto shifted = [=](double x, double y) {
      return std::array<double, 3>{shift + x, shift + y, shift};
    };
    EXPECT_LT(linearError(shifted), 1e-15 * shift) << shift;
  }
  for (const double width : {1e-3, 1e-6, 1e-9}) {  // all cells squeezed across the axes
    const auto oblique = [=](double x, double y) {
      return std::array<double, 3>{width * x + y, y, 0};
    };
    EXPECT_LT(linearError(oblique), 1e-13 / width) << width;
  }
  for (const double distance : {1e-2, 1e-4, 1e-6, 1e-8}) {
    // Every other column of vertices so near, in cells, to the next one.
    const auto needles = [=](double x, double y) {
      const bool isMoved = std::lround(x) % 2 == 1 && std::lround(x) < kSide - 1;
      return std::array<double, 3>{std::round(x) + (isMoved ? 1 - distance : 0), std::round(y), 0};
    };
    EXPECT_LT(linearError(needles), 1e-13 * std::pow(distance, -1.25)) << distance;
    // One vertex in four so near to the middle of the edge opposite.
    const auto caps = [=](double x, double y) {
      const bool isMoved = std::lround(x) % 2 == 1 && std::lround(y) % 2 == 1 &&
                           std::lround(x) < kSide - 1 && std::lround(y) < kSide - 1;
      const double move = isMoved ? 0.5 - distance : 0;
      return std::array<double, 3>{std::round(x) - move, std::round(y) + move, 0};
    };
    EXPECT_LT(linearError(caps), 1e-13 / distance) << distance;
  }
}

/// Error of a function that is constant on the two ends of a ring, and prescribed there.
/// @param shape  a point of the ring at u between the ends, at an angle
double ringError(int refinement, const Shape& shape, const Function& exact) {
  const int rows = 6 * refinement + 1;
  const int columns = 24 * refinement + 1;
  const Welded ring = welded(
      gridMesh(rows, columns, [&](double u, double v) { return shape(u, kFullAngle * v); }), 1e-9);
  const Mesh mesh{ring.vertices, ring.triangles};  // its seam is closed
  EXPECT_EQ(mesh.n(), rows * (columns - 1));
  return errorOf(mesh, exact,
                 [&](std::size_t i) { return int(i) % rows == 0 || int(i) % rows == rows - 1; });
}

TEST(Accuracy, ConvergesInSecondOrder) {
  const auto annulus = [](double u, double angle) {
    return std::array<double, 3>{(1 + u) * std::cos(angle), (1 + u) * std::sin(angle), 0};
  };
  const auto logarithm = [](const double* p) { return std::log(std::hypot(p[0], p[1])); };
  // Of the unit sphere, from one latitude to another, across a great circle.
  const auto band = [](double u, double angle) {
    const double latitude = 1.6 * u - 0.6;
    return std::array<double, 3>{std::cos(latitude) * std::cos(angle),
                                 std::cos(latitude) * std::sin(angle), std::sin(latitude)};
  };
  const auto mercator = [](const double* p) { return std::atanh(p[2]); };
  const std::pair<Shape, Function> rings[] = {{annulus, logarithm}, {band, mercator}};
  for (const auto& [shape, exact] : rings) {
    for (int refinement = 1; refinement < 8; refinement *= 2) {
      const double ratio =
          ringError(refinement, shape, exact) / ringError(2 * refinement, shape, exact);
      EXPECT_NEAR(ratio, 4, 0.25) << refinement;
    }
  }
}

}  // namespace
