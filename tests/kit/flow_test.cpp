// quorkitFlow and quorkitGradients against dense algebra, and numbers worked out by hand.

#include "support/cotangent_stiffness.h"
#include "support/kit.h"

#include <algorithm>

using namespace test;

namespace {

std::vector<double> flows(const Mesh& mesh, const std::vector<double>& field,
                          const std::vector<std::int32_t>& regions, std::int32_t count) {
  std::vector<double> result(std::size_t(count), kNaN);
  EXPECT_EQ(quorkitFlow(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                        field.data(), regions.data(), count, result.data()),
            QUORKIT_DONE);
  return result;
}

std::vector<Eigen::Vector3d> gradients(const Mesh& mesh, const std::vector<double>& field) {
  std::vector<double> result(mesh.triangles.size(), kInfinity);
  EXPECT_EQ(quorkitGradients(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                             field.data(), result.data()),
            QUORKIT_DONE);
  std::vector<Eigen::Vector3d> vectors;
  for (std::size_t t = 0; t < result.size(); t += 3) {
    vectors.emplace_back(result[t], result[t + 1], result[t + 2]);
  }
  return vectors;
}

std::vector<double> randomValues(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> values(count);
  for (double& value : values) {
    value = std::ldexp(double(random()), -32) - 0.5;
  }
  return values;
}

TEST(KitFlow, IsTheRowsOfTheMatrixAddedUpByRegion) {
  for (const Mesh& mesh : {bumpyMesh(12, 9, 3), tangledMesh(30, 131, 5)}) {
    const auto n = std::size_t(mesh.n());
    const std::vector<double> field = randomValues(n, 1);
    std::vector<std::int32_t> regions(n);
    for (std::size_t v = 0; v < n; ++v) {
      regions[v] = std::int32_t(v * v % 7) - 2;  // -2 and -1 are no regions, 4 has no vertex
    }
    const Eigen::VectorXd rows =
        denseStiffness(mesh) * Eigen::Map<const Eigen::VectorXd>(field.data(), mesh.n());
    std::vector<double> expected(5, 0);
    for (std::size_t v = 0; v < n; ++v) {
      if (regions[v] >= 0) {
        expected[std::size_t(regions[v])] += rows[Eigen::Index(v)];
      }
    }
    const std::vector<double> result = flows(mesh, field, regions, 5);
    for (std::size_t r = 0; r < 5; ++r) {
      EXPECT_NEAR(result[r], expected[r], 1e-12 * rows.lpNorm<1>()) << r;
    }
    std::vector<std::int32_t> own(n);
    std::iota(own.begin(), own.end(), 0);
    const std::vector<double> each = flows(mesh, field, own, mesh.n());
    for (std::size_t v = 0; v < n; ++v) {
      EXPECT_NEAR(each[v], rows[Eigen::Index(v)], 1e-12 * rows.lpNorm<1>()) << v;
    }
  }
}

TEST(KitFlow, ThroughAStripIsDifferenceTimesWidthOverLength) {
  const Mesh strip = gridMesh(9, 4, [](double u, double v) {
    return std::array<double, 3>{0, 8 * u, 2 * v};
  });
  std::vector<double> field;
  for (int i = 0; i < strip.n(); ++i) {
    field.push_back(20 + 60 * double(i % 9) / 8);
  }
  std::vector<std::int32_t> tags = tagEnds(9, 4);  // flow 0 is that of the free vertices
  const std::vector<double> result = flows(strip, field, tags, 4);
  EXPECT_NEAR(result[0], 0, 1e-12);
  EXPECT_NEAR(result[1], -60.0 * 2 / 8, 1e-12);
  EXPECT_EQ(result[2], 0);
  EXPECT_NEAR(result[3], 60.0 * 2 / 8, 1e-12);
}

TEST(KitFlow, LosesNothingInWhatPassesInsideARegion) {
  const Mesh mesh = gridMesh(9, 4);
  std::vector<double> field(std::size_t(mesh.n()), 0);
  std::vector<std::int32_t> regions(field.size(), -1);
  for (std::size_t v = 0; v < field.size(); ++v) {
    regions[v] = v % 9 <= 1 ? 0 : -1;
    field[v] = v % 9 == 0 ? 1e20 : v % 9 == 1 ? 1 : 0;
  }
  EXPECT_NEAR(flows(mesh, field, regions, 1)[0], 8, 1e-12);  // width 1, over 1/8
}

TEST(KitFlow, OfASolvedFieldSumsToItsSource) {
  for (const int side : {9, 85}) {  // the larger one is factorized by blocks
    const Mesh mesh = bumpyMesh(side, side, 4);
    const std::vector<std::int32_t> tags = tagEnds(side, side);
    const KitSolver solver = construct(mesh, tags);
    const std::vector<double> values = randomValues(tags.size(), 2);
    const std::vector<double> source = randomValues(tags.size(), 3);
    double total = 0;
    for (std::size_t v = 0; v < tags.size(); ++v) {
      total += tags[v] == 0 ? source[v] : 0;  // elsewhere it is not read
    }
    std::vector<double> field(tags.size());
    ASSERT_EQ(quorkitSolve(solver.get(), values.data(), source.data(), field.data()), QUORKIT_DONE);
    std::vector<double> result = flows(mesh, field, tags, 4);
    EXPECT_GT(std::abs(result[1]), 0.01);
    EXPECT_NEAR(result[1] + result[3], total, 1e-10) << side;
    EXPECT_NEAR(result[0], -total, 1e-10) << side;
    ASSERT_EQ(quorkitSolve(solver.get(), values.data(), nullptr, field.data()), QUORKIT_DONE);
    result = flows(mesh, field, tags, 4);
    EXPECT_NEAR(result[1] + result[3], 0, 1e-10) << side;
  }
}

TEST(KitFlow, SaysWhatIsABadArgument) {
  const Mesh mesh = gridMesh(2, 2);
  const std::vector<double> field(4, 1);
  std::vector<std::int32_t> regions{0, 1, 2, -5};
  std::vector<double> out(3, 77);
  const auto flow = [&](std::int32_t n, std::int32_t m, const double* f, const std::int32_t* r,
                        std::int32_t count, double* o) {
    return quorkitFlow(n, mesh.vertices.data(), m, mesh.triangles.data(), f, r, count, o);
  };
  EXPECT_EQ(flow(4, 2, field.data(), regions.data(), 2, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(4, 2, field.data(), regions.data(), -1, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(4, 2, nullptr, regions.data(), 3, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(4, 2, field.data(), nullptr, 3, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(4, 2, field.data(), regions.data(), 3, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(3, 2, field.data(), regions.data(), 3, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(flow(-1, 2, field.data(), regions.data(), 3, out.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(out, std::vector<double>(3, 77));
  EXPECT_EQ(flow(4, 2, field.data(), regions.data(), 3, out.data()), QUORKIT_DONE);
  EXPECT_EQ(out, std::vector<double>(3, 0));
  EXPECT_EQ(flow(0, 0, nullptr, nullptr, 2, out.data()), QUORKIT_DONE);
  EXPECT_EQ(flow(0, 0, nullptr, nullptr, 0, nullptr), QUORKIT_DONE);
}

TEST(KitGradients, OfALinearFunctionAreItsPartInThePlane) {
  const Eigen::Vector3d slope(3, -5, 7);
  // Units whose squares and fourth powers have no place in a double.
  for (const double unit : {1.0, 1e-100, 1e-290, 1e100, 1e300}) {
    Mesh mesh = bumpyMesh(8, 7, 2);
    std::vector<double> field;
    for (std::int32_t v = 0; v < mesh.n(); ++v) {
      field.push_back(slope.dot(at(mesh, v)));
    }
    const Mesh unscaled = mesh;
    for (double& coordinate : mesh.vertices) {
      coordinate *= unit;
    }
    const std::vector<Eigen::Vector3d> result = gradients(mesh, field);
    for (std::size_t t = 0; t < result.size(); ++t) {
      const auto area = doubleAreaVector(unscaled, t);
      const Eigen::Vector3d normal = Eigen::Vector3d(area[0], area[1], area[2]).normalized();
      const Eigen::Vector3d expected = slope - slope.dot(normal) * normal;
      EXPECT_LT((result[t] * unit - expected).norm(), 1e-11) << unit << " " << t;
    }
  }
}

TEST(KitGradients, HaveTheEnergyOfTheFlows) {
  const Mesh mesh = bumpyMesh(12, 9, 3);
  const std::vector<double> field = randomValues(std::size_t(mesh.n()), 6);
  std::vector<std::int32_t> own(field.size());
  std::iota(own.begin(), own.end(), 0);
  const std::vector<double> flow = flows(mesh, field, own, mesh.n());
  const std::vector<Eigen::Vector3d> gradient = gradients(mesh, field);
  double ofFlows = 0;
  for (std::size_t v = 0; v < field.size(); ++v) {
    ofFlows += flow[v] * field[v];
  }
  double ofGradients = 0;
  for (std::size_t t = 0; t < gradient.size(); ++t) {
    const auto area = doubleAreaVector(mesh, t);
    ofGradients +=
        gradient[t].squaredNorm() * Eigen::Vector3d(area[0], area[1], area[2]).norm() / 2;
  }
  EXPECT_NEAR(ofGradients, ofFlows, 1e-12 * ofFlows);
}

TEST(KitGradients, AreNaNWithoutAnAreaAndRefuseWhatIsBad) {
  const Mesh flat{{0, 0, 0, 1, 1, 1, 3, 3, 3}, {0, 1, 2, 0, 0, 0}};
  const std::vector<double> field{1, 2, 3};
  for (const Eigen::Vector3d& gradient : gradients(flat, field)) {
    EXPECT_TRUE(gradient.array().isNaN().all());
  }
  double out[6] = {77};
  const double* const v = flat.vertices.data();
  const std::int32_t* const t = flat.triangles.data();
  EXPECT_EQ(quorkitGradients(3, v, 2, t, nullptr, out), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitGradients(3, v, 2, t, field.data(), nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitGradients(2, v, 2, t, field.data(), out), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitGradients(3, v, -1, t, field.data(), out), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(out[0], 77);
  EXPECT_EQ(quorkitGradients(0, nullptr, 0, nullptr, nullptr, nullptr), QUORKIT_DONE);
}

}  // namespace
