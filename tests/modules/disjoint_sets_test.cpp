// The forest of every module that unites things, beside sets that are relabelled one by one.

#include "util/disjoint_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

TEST(DisjointSets, AreNamedByTheirSmallestElementsInWhateverOrderTheyAreLinked) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    const auto n = std::int32_t(1 + random() % 60);
    std::vector<std::int32_t> parents = quor::DisjointSets::singletons(n);
    quor::DisjointSets sets(parents.data());
    std::vector<std::int32_t> smallest = parents;
    for (auto links = random() % 80; links > 0; --links) {
      const auto i = std::int32_t(random() % std::uint32_t(n));
      const auto j = std::int32_t(random() % std::uint32_t(n));
      const std::int32_t a = smallest[std::size_t(i)];
      const std::int32_t b = smallest[std::size_t(j)];
      if (links % 2 == 0 && i != j) {
        sets.attach(std::max(i, j), std::min(i, j));
      } else {
        EXPECT_EQ(sets.link(i, j), a != b);
      }
      std::replace(smallest.begin(), smallest.end(), std::max(a, b), std::min(a, b));
    }
    for (std::int32_t i = 0; i < n; ++i) {
      ASSERT_EQ(sets.root(i), smallest[std::size_t(i)]) << "round " << round;
      ASSERT_LE(parents[std::size_t(i)], i);
    }
  }
}

TEST(DisjointSets, HalvesThePathThatALookUpTakes) {
  constexpr std::int32_t n = 1000;
  std::vector<std::int32_t> parents = quor::DisjointSets::singletons(n);
  quor::DisjointSets sets(parents.data());
  for (std::int32_t i = n - 1; i > 0; --i) {
    sets.link(i, i - 1);  // one long path
  }
  EXPECT_EQ(sets.root(n - 1), 0);
  int length = 0;
  for (std::int32_t i = n - 1; i != 0; i = parents[std::size_t(i)]) {
    ++length;
  }
  EXPECT_LE(length, n / 2);
}

}  // namespace
