// The two searches for near points, each on its own, against brute force.

#include "support/nasty_points.h"
#include "support/weld_oracle.h"
#include "weld/equal_points.h"
#include "weld/hash_index.h"
#include "weld/near_points.h"
#include "weld/sparse_cells.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace test;

namespace {

/// The vertex of each point once the forest is complete.
std::vector<std::int32_t> mapOf(const std::vector<double>& points,
                                std::vector<std::int32_t> forest) {
  quor::DisjointSets trees(forest.data());
  std::vector<std::int32_t> roots;
  for (std::int32_t i = 0; i < std::int32_t(forest.size()); ++i) {
    roots.push_back(trees.root(i));
  }
  return weldedByRoots({points, {}}, roots).map;
}

TEST(WeldSearch, BothSearchesMatchBruteForce) {
  Random random(31);
  int inCells = 0;
  for (const Nasty& nasty : kNasty) {
    for (int round = 0; round < 400; ++round) {
      double tolerance = 0;
      const int count = 2 + below(random, round % 20 == 0 ? 1500 : 90);
      const std::vector<double> points = nasty.points(random, count, tolerance);
      const double squaredTolerance = tolerance * tolerance;
      if (!(squaredTolerance > 0)) {
        continue;
      }
      const auto n = std::int32_t(points.size() / 3);
      const std::vector<std::int32_t> expected = bruteForceWeld({points, {}}, tolerance).map;
      const quor::PointArray array(points.data());

      std::vector<std::int32_t> forest(std::size_t(n), -1);
      const quor::DisjointSets trees(forest.data());
      const std::vector<std::int32_t> distinct = quor::EqualPoints(n, array, trees).link();
      quor::NearPoints(distinct, array, trees, squaredTolerance).link();
      ASSERT_EQ(mapOf(points, forest), expected) << "tree: " << nasty.name << ", round " << round;

      forest.assign(std::size_t(n), -1);
      if (quor::CellNumbers(tolerance).isUsable() &&
          quor::SparseCells(n, array, trees, tolerance).link()) {
        ASSERT_EQ(mapOf(points, forest), expected)
            << "cells: " << nasty.name << ", round " << round;
        ++inCells;
      }
    }
  }
  EXPECT_GT(inCells, 1000);  // the others are too crowded for cells
}

TEST(WeldSearch, EqualPointsLeaveTheFirstOfEach) {
  Random random(32);
  std::vector<double> points;
  for (int i = 0; i < 3 * 5000; ++i) {
    points.push_back(below(random, 9) == 0 ? -0.0 : below(random, 7));
  }
  points[0] = kNaN;
  points[3] = points[6] = kInfinity;
  std::vector<std::int32_t> forest(points.size() / 3);
  const std::vector<std::int32_t> distinct =
      quor::EqualPoints(5000, quor::PointArray(points.data()), quor::DisjointSets(forest.data()))
          .link();
  EXPECT_TRUE(std::is_sorted(distinct.begin(), distinct.end()));
  EXPECT_EQ(distinct.size(), 7U * 7U * 7U);
  std::set<std::array<double, 3>> seen;
  for (const std::int32_t i : distinct) {
    const double* p = points.data() + 3 * std::size_t(i);
    EXPECT_TRUE(seen.insert({p[0], p[1], p[2]}).second);
    EXPECT_EQ(forest[std::size_t(i)], i);
  }
}

TEST(WeldSearch, EqualPointsAreComparedWhereTheirHashesLookAlike) {
  // Points on an axis whose hashes have the same upper bits, which lead to a slot, and the same
  // lower half, which is kept there.
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
  std::uint64_t inverse = kFactor;  // whose product with the factor is 1, by Newton's method
  for (int k = 0; k < 6; ++k) {
    inverse *= 2 - kFactor * inverse;
  }
  const std::uint64_t hash = quor::mixHash(0, 0x3FF0000000000000U);  // of 0 0 1
  std::vector<double> points;
  for (std::uint64_t middle = 0; points.size() < 3 * 40; ++middle) {
    const std::uint64_t wanted = hash ^ middle << 32U;
    const std::uint64_t word = (wanted ^ wanted >> 32U) * inverse;
    ASSERT_EQ(quor::mixHash(0, word), wanted);
    double z = 0;
    std::memcpy(&z, &word, sizeof z);
    if (std::isfinite(z)) {
      points.insert(points.end(), {0.0, 0.0, z});
    }
  }
  std::vector<std::int32_t> forest(40);
  const std::vector<std::int32_t> distinct =
      quor::EqualPoints(40, quor::PointArray(points.data()), quor::DisjointSets(forest.data()))
          .link();
  EXPECT_EQ(distinct.size(), 40U);
}

TEST(WeldSearch, HashIndexHoldsTheLargestIndices) {
  // As many points as there can be leave one bit of a slot for the hash.
  constexpr std::int32_t limit = std::numeric_limits<std::int32_t>::max();
  quor::HashIndex index(4, limit);
  const auto hashOf = [](std::int32_t i) { return quor::mixHash(0, std::uint64_t(i)); };
  for (std::int32_t i = limit - 1; i > limit - 1000; --i) {
    index.fill(index.locate(hashOf(i), [](std::int32_t) { return false; }), hashOf(i), i);
    if (index.isFull()) {
      index.grow(0, hashOf, limit);
    }
  }
  for (std::int32_t i = limit - 1; i > limit - 1100; --i) {
    const std::size_t slot = index.locate(hashOf(i), [i](std::int32_t j) { return i == j; });
    EXPECT_EQ(index.index(slot), i > limit - 1000 ? i : quor::HashIndex::kNone);
  }
}

TEST(WeldSearch, HashIndexStaysFastWhereHomesAreCrowded) {
  constexpr std::int32_t count = 10000;
  // Tags, the lower halves, tell no records apart. All have one home, or homes in one quarter of
  // the table, which is fewer than there are records.
  const auto mixed = [](std::int32_t i) { return quor::mixHash(0, std::uint64_t(i)); };
  const std::function<std::uint64_t(std::int32_t)> hashes[] = {
      [&](std::int32_t i) { return std::uint64_t(i) << 32U; },
      [&](std::int32_t i) { return mixed(i) >> 34U << 32U; }};
  for (const auto& hashOf : hashes) {
    quor::HashIndex index(count, count);
    std::int64_t looks = 0;
    for (const bool isThere : {false, true}) {
      for (std::int32_t i = 0; i < count; ++i) {
        const std::size_t slot = index.locate(hashOf(i), [&](std::int32_t j) {
          ++looks;
          return i == j;
        });
        ASSERT_EQ(index.index(slot), isThere ? i : quor::HashIndex::kNone);
        if (!isThere) {
          index.fill(slot, hashOf(i), i);
        }
      }
    }
    EXPECT_LT(looks, 2 * count * 50);
  }
}

}  // namespace
