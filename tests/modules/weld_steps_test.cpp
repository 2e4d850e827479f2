// Soups made to be slow to weld, with full knowledge of the source: none takes many steps a point.

#include "support/weld_steps.h"
#include "soups/slow_soups.h"
#include "support/sanitizers.h"
#include "support/weld_oracle.h"

#include <gtest/gtest.h>

using namespace test;

namespace {

double stepsPerPoint(const bench::Soup& soup, double tolerance) {
  return double(weldSteps({soup.points, soup.triangles}, tolerance)) / soup.pointCount();
}

// Enough for a step that grows with their number to show; sanitizers make each ten times as slow.
#if defined(QUOR_SANITIZED)
constexpr int kPoints = 16000;
#else
constexpr int kPoints = 64000;
#endif

void expectFewSteps(const std::vector<bench::SlowSoup>& soups, double limit) {
  for (const bench::SlowSoup& slow : soups) {
    double tolerance = 0;
    const bench::Soup soup = slow.make(kPoints, tolerance);
    const double steps = stepsPerPoint(soup, tolerance);
    EXPECT_LT(steps, limit) << slow.name;
  }
}

TEST(WeldSteps, TablesAreLeftWhereTheyAreMadeToBeSlow) {
  expectFewSteps(bench::soupsSlowInTables(), 10);
}

TEST(WeldSteps, TheTreeIsNotSlow) {
  expectFewSteps(bench::soupsSlowInTree(), 12);
}

TEST(WeldSteps, HarmlessSoupsTakeOneOrTwo) {
  for (const bench::Harmless kind : {bench::Harmless::kDistinct, bench::Harmless::kRepeated}) {
    EXPECT_LT(stepsPerPoint(bench::harmlessSoup(kind, 64000), 1e-9), 2);
  }
}

TEST(WeldSteps, WhatIsMadeToBeSlowIsWeldedByTheRule) {
  for (const auto& soups : {bench::soupsSlowInTables(), bench::soupsSlowInTree()}) {
    for (const bench::SlowSoup& slow : soups) {
      double tolerance = 0;
      const bench::Soup soup = slow.make(1200, tolerance);
      Mesh mesh{soup.points, soup.triangles};
      // The other way round too, so that triangles repeat.
      mesh.triangles.insert(mesh.triangles.end(), soup.triangles.rbegin(), soup.triangles.rend());
      EXPECT_TRUE(same(welded(mesh, tolerance), bruteForceWeld(mesh, tolerance))) << slow.name;
      for (const double other : {0.5, 0.999999, 1.0001, 1.5}) {
        EXPECT_TRUE(same(welded(mesh, other * tolerance), bruteForceWeld(mesh, other * tolerance)))
            << slow.name << ", " << other << " tolerances";
      }
    }
  }
}

TEST(WeldSteps, TrianglesThatCrowdTheTableAreSortedAndNothingIsWrittenBehindTheKeptOnes) {
  const auto& soups = bench::soupsSlowInTables();
  const auto crafted = std::find_if(soups.begin(), soups.end(), [](const bench::SlowSoup& slow) {
    return slow.name == "triangles of one home";
  });
  ASSERT_NE(crafted, soups.end());
  double tolerance = 0;
  const bench::Soup soup = crafted->make(64000, tolerance);
  Mesh mesh{soup.points, soup.triangles};
  // Repeats: all of them the other way round; and a collapsed one.
  mesh.triangles.insert(mesh.triangles.end(), soup.triangles.rbegin(), soup.triangles.rend());
  mesh.triangles.insert(mesh.triangles.end(), {5, 6, 5});
  std::vector<std::int32_t> roots(std::size_t(mesh.n()));
  std::iota(roots.begin(), roots.end(), 0);
  const Welded expected = weldedByRoots(mesh, roots);
  ASSERT_EQ(expected.triangles, soup.triangles);
  EXPECT_TRUE(same(welded(mesh, tolerance), expected));
  EXPECT_TRUE(same(weldedInPlace(mesh, tolerance), expected));
}

}  // namespace
