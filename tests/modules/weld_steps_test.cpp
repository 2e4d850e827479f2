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

/// The most steps a record that a table takes for the first points or triangles, or for all points.
double stepsInCrowdedTables(const bench::Soup& soup, double tolerance) {
  const std::int32_t n = soup.pointCount();
  double most = 0;
  for (const std::int32_t points : {200, n}) {
    const auto end = soup.points.begin() + std::ptrdiff_t{3} * points;
    const Mesh first{{soup.points.begin(), end}, {}};
    most = std::max(most, double(searchSteps(first, tolerance)) / points);
  }
  Mesh first{{}, soup.triangles};
  constexpr std::ptrdiff_t triangles = 512;
  std::fill(first.triangles.begin() + 3 * triangles, first.triangles.end(), 0);  // they collapse
  const std::uint64_t steps = triangleSteps(first, quor::DisjointSets::singletons(n), n);
  return std::max(most, double(steps) / triangles);
}

TEST(WeldSteps, SoupsAgainstTheTablesDoCrowdThem) {
  constexpr std::int32_t count = 16000;
  for (const bench::SlowSoup& slow : bench::soupsSlowInTables()) {
    double tolerance = 0;
    const bench::Soup soup = slow.make(count, tolerance);
    EXPECT_GT(stepsInCrowdedTables(soup, tolerance), 4) << slow.name;
  }
  for (const bench::Harmless kind : {bench::Harmless::kDistinct, bench::Harmless::kRepeated}) {
    EXPECT_LT(stepsInCrowdedTables(bench::harmlessSoup(kind, count), 1e-9), 2);
  }
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
  const Welded expected = weldedByRoots(mesh, quor::DisjointSets::singletons(mesh.n()));
  ASSERT_EQ(expected.triangles, soup.triangles);
  EXPECT_TRUE(same(welded(mesh, tolerance), expected));
  EXPECT_TRUE(same(weldedInPlace(mesh, tolerance), expected));
}

}  // namespace
