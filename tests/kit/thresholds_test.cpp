// Every threshold that quorkit.h states, from both sides.

#include "support/kit.h"

#include <cmath>
#include <limits>

using namespace test;

namespace {

constexpr double kPi = 3.14159265358979323846;

QuorkitReport check(const Mesh& mesh) {
  QuorkitReport report{};
  EXPECT_EQ(quorkitCheck(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), nullptr,
                         &report),
            QUORKIT_DONE);
  return report;
}

/// Two triangles on the edge from 0 0 0 to 1 0 0, with these corners above and below it.
Mesh kite(double above, double below, double z = 0) {
  return {{0, 0, 0, 1, 0, 0, 0.5, above, 0, 0.5, -below, z}, {0, 1, 2, 1, 0, 3}};
}

TEST(KitThresholds, OfCheckAreAMillionthAndAThousandthOfTheLongestSide) {
  struct Case {
    double height;
    std::array<int, 2> expected;  // flat, needle
  };
  for (const Case& c : {Case{0.999e-6, {1, 0}},
                        {1e-6, {1, 0}},
                        {1.001e-6, {0, 1}},
                        {0.999e-3, {0, 1}},
                        {1e-3, {0, 0}},
                        {1.001e-3, {0, 0}}}) {
    for (const double unit : {1.0, 0x1p-600, 0x1p600}) {
      const QuorkitReport report =
          check({{0, 0, 0, unit, 0, 0, 0.5 * unit, c.height * unit, 0}, {0, 1, 2}});
      EXPECT_EQ((std::array<int, 2>{report.flatTriangles.count, report.needles.count}), c.expected)
          << c.height << " " << unit;
    }
  }
}

TEST(KitThresholds, OfNegativeWeightsIsABillionth) {
  // Opposite a right angle the cotangent is 0; nearer to the edge by d it is -2 d.
  for (const auto& [d, count] : {std::pair{0.9e-9, 0}, {1.1e-9, 1}}) {
    EXPECT_EQ(check(kite(0.5, 0.5 - d)).negativeWeights.count, count) << d;
    EXPECT_EQ(check({{0, 0, 0, 1, 0, 0, 0.5, 0.5 - d, 0}, {0, 1, 2}}).obtuseBorders.count, count)
        << d;
  }
}

TEST(KitThresholds, OfCleanMakesOneVertexUpToAMillionthOfTheLongestSide) {
  // A square of which one corner is there twice, a degenerate triangle between them.
  for (const auto& [share, vertices] : {std::pair{0.999e-6, 4}, {1.001e-6, 5}}) {
    const double s = share * std::sqrt(2.0);
    const Mesh mesh{{0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1 + s, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3, 0, 3, 4}};
    ASSERT_EQ(check(mesh).flatTriangles.count, 1);
    EXPECT_EQ(clean(mesh)->vertexCount, vertices) << share;
    EXPECT_EQ(clean(mesh)->degenerateCount, 0) << share;
  }
}

TEST(KitThresholds, OfCleanLosesATriangleUpToAHundredThousandthOfTheLongestSide) {
  for (const auto& [size, triangles] : {std::pair{0.99e-5, 0}, {1.01e-5, 1}}) {
    const Mesh mesh{{0, 0, 0, 0, 0.9e-6, 0, 1, 0, 0, -size, 0, 0}, {0, 2, 1, 0, 1, 3}};
    ASSERT_EQ(check(mesh).flatTriangles.count, 1);
    EXPECT_EQ(clean(mesh)->triangleCount, triangles) << size;
  }
}

TEST(KitThresholds, OfCleanTurnsATriangleByUpToSixtyDegrees) {
  // Where vertex 1 becomes vertex 0 the small triangle 1 3 4 turns about its side 3 4.
  for (const auto& [degrees, isOne] : {std::pair{59.9, true}, {60.1, false}}) {
    const double u = 5e-7;
    const double angle = degrees * kPi / 180;
    const Mesh mesh{
        {0, 0, 0, u * std::sin(angle), u * (std::cos(angle) - 1), 0, 1, 0, 0, 0, -u, u, 0, -u, -u},
        {0, 1, 2, 1, 3, 4}};
    ASSERT_EQ(check(mesh).flatTriangles.count, 1);
    const KitMesh cleaned = clean(mesh);
    EXPECT_EQ(cleaned->triangleCount, 1);
    EXPECT_EQ(cleaned->vertexMap[0] == cleaned->vertexMap[1], isOne) << degrees;
  }
}

TEST(KitThresholds, OfRefineIsTheLengthItself) {
  const Mesh mesh{{0, 0, 0, 3, 0, 0, 0, 4, 0}, {0, 1, 2}};
  for (const auto& [length, triangles] : {std::pair{5.0, 1}, {4.0, 2}, {3.0, 3}}) {
    EXPECT_EQ(refine(mesh, length)->triangleCount, triangles) << length;
    EXPECT_GT(refine(mesh, std::nextafter(length, 0))->triangleCount, triangles) << length;
  }
}

TEST(KitThresholds, OfRefineAreSixteenStepsOfRounding) {
  const double step = std::numeric_limits<double>::epsilon();
  for (const auto& [steps, triangles] : {std::pair{16, 1}, {17, 3}}) {  // the third side is shorter
    const Mesh mesh{{1.5, 0, 0, 1.5, 1.5 * step * steps, 0, 1.5, 0, 1e-30}, {0, 1, 2}};
    EXPECT_EQ(refine(mesh, 1e-300)->triangleCount, triangles) << steps;
  }
}

TEST(KitThresholds, OfRefineToAreOneAndTheMostThatASolverTakes) {
  const Mesh point{{1, 2, 3, 1, 2, 3, 1, 2, 3}, {0, 1, 2}};
  constexpr std::int32_t kMost = 238609294;
  EXPECT_EQ(refineTo(point, 0, QUORKIT_BAD_ARGUMENT), nullptr);
  EXPECT_NE(refineTo(point, 1), nullptr);
  EXPECT_NE(refineTo(point, kMost), nullptr);
  EXPECT_EQ(refineTo(point, kMost + 1, QUORKIT_BAD_ARGUMENT), nullptr);
}

bool isFlipped(const Mesh& mesh) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(
      quorkitFlip(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), nullptr, &made),
      QUORKIT_DONE);
  return !sameMesh(plain(KitMesh(made)), mesh);
}

TEST(KitThresholds, OfFlipAreAMillionthOffThePlaneAndASumOfPi) {
  EXPECT_TRUE(isFlipped(kite(0.2, 0.2, 0.999e-6)));
  EXPECT_FALSE(isFlipped(kite(0.2, 0.2, 1.001e-6)));
  EXPECT_TRUE(isFlipped(kite(0.5, 0.5 - 1e-8)));
  EXPECT_FALSE(isFlipped(kite(0.5, 0.5)));
  EXPECT_FALSE(isFlipped(kite(0.5, 0.5 + 1e-8)));
}

/// The numbers of faces and chains.
std::array<int, 2> facesOf(const Mesh& mesh, double angle, QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitFaces* found = nullptr;
  EXPECT_EQ(
      quorkitFaces(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), angle, &found),
      expected);
  const std::array<int, 2> counts{found ? found->faceCount : -1, found ? found->chainCount : -1};
  quorkitFreeFaces(found);
  return counts;
}

/// Two rectangles of length 4 that meet at an angle, the first one 1 wide.
Mesh fold(double degrees, double width) {
  const double x = -width * std::cos(degrees * kPi / 180);
  const double z = width * std::sin(degrees * kPi / 180);
  return {{0, 0, 0, 0, 4, 0, 1, 4, 0, 1, 0, 0, x, 0, z, x, 4, z},
          {0, 2, 1, 0, 3, 2, 0, 1, 5, 0, 5, 4}};
}

TEST(KitThresholds, OfFacesAreTheAngleATenthOfADegreeAndTwoAndAHalfTimes) {
  for (const double angle : {10.0, 30.0, 60.0}) {
    EXPECT_EQ(facesOf(fold(angle - 0.01, 1), angle)[0], 1) << angle;
    EXPECT_EQ(facesOf(fold(angle + 0.01, 1), angle)[0], 2) << angle;
  }
  // Something goes on smoothly: a plane is 2.5 times as large and reaches 2.5 times as far.
  EXPECT_EQ(facesOf(fold(20, 2.4), 30)[0], 1);
  EXPECT_EQ(facesOf(fold(20, 2.6), 30)[0], 2);
  EXPECT_EQ(facesOf(fold(0.09, 2.6), 30)[0], 1);
  EXPECT_EQ(facesOf(fold(0.11, 2.6), 30)[0], 2);
}

TEST(KitThresholds, OfChainsIsTheAngle) {
  for (const auto& [degrees, chains] : {std::pair{29.99, 3}, {30.01, 4}}) {
    const double angle = degrees * kPi / 180;
    const Mesh mesh{{0, 0, 0, 1, 0, 0, 1 + std::cos(angle), std::sin(angle), 0, 0, 5, 0},
                    {0, 1, 3, 1, 2, 3}};
    EXPECT_EQ(facesOf(mesh, 30)[1], chains) << degrees;
  }
}

TEST(KitThresholds, OfTheAngleOfFacesAreZeroAndNinety) {
  const Mesh mesh = fold(45, 1);
  facesOf(mesh, 0, QUORKIT_BAD_ARGUMENT);
  facesOf(mesh, 90, QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(facesOf(mesh, 1e-9)[0], 2);
  EXPECT_EQ(facesOf(mesh, std::nextafter(90.0, 0))[0], 1);
}

TEST(KitThresholds, OfColoursAreTheTwoHundredAndFiftySixths) {
  const auto colourOf = [](double value) {
    std::array<std::uint8_t, 4> rgba{};
    EXPECT_EQ(quorkitColours(1, &value, 0, 256, rgba.data()), QUORKIT_DONE);
    return rgba;
  };
  int changes = 0;
  for (int k = 1; k < 256; ++k) {
    EXPECT_EQ(colourOf(std::nextafter(k, 0)), colourOf(k - 0.5)) << k;
    EXPECT_EQ(colourOf(k), colourOf(k + 0.5)) << k;
    changes += colourOf(k) != colourOf(k - 0.5) ? 1 : 0;
  }
  EXPECT_GE(changes, 249);  // a few neighbours are equal
}

}  // namespace
