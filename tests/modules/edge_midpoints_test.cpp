// The table of midpoints that refining numbers its vertices with, with edges that share their
// slots.

#include "kit/edge_midpoints.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <utility>

namespace {

using Edge = std::pair<std::int32_t, std::int32_t>;

/// Edges between vertices below n whose hashes begin alike: they lead to the same few slots of any
/// table of less than 2^16.
std::vector<Edge> edgesOfOneHome(std::int32_t n, std::size_t count) {
  std::mt19937 random(7);
  std::uniform_int_distribution<std::int32_t> vertex(0, n - 1);
  std::set<Edge> edges;
  while (edges.size() < count) {
    const Edge edge = std::minmax({vertex(random), vertex(random)});
    const std::uint64_t key = std::uint64_t(edge.first) << 32 | std::uint64_t(edge.second);
    const std::uint64_t mixed = (key ^ key >> 29) * 0x9E3779B97F4A7C15;
    if (((mixed ^ mixed >> 32) & 0xFFFF) < 32 && edge.first < edge.second) {
      edges.insert(edge);
    }
  }
  return {edges.begin(), edges.end()};
}

TEST(EdgeMidpoints, AreNumberedInTheOrderOfQuestionsHoweverTheirEdgesCollide) {
  constexpr std::int32_t n = 200000;
  const std::vector<Edge> colliding = edgesOfOneHome(n, 4000);
  for (const std::size_t likely : {std::size_t(0), colliding.size()}) {
    quorkit::EdgeMidpoints midpoints(n, likely);
    std::map<Edge, std::int32_t> expected;
    std::mt19937 random(1);
    for (int question = 0; question < 30000; ++question) {
      const Edge edge = colliding[random() % colliding.size()];
      const auto [place, isNew] = expected.emplace(edge, n + std::int32_t(expected.size()));
      const auto found = question % 2 == 0 ? midpoints.find(edge.first, edge.second)
                                           : midpoints.find(edge.second, edge.first);
      ASSERT_EQ(found.vertex, place->second);
      ASSERT_EQ(found.isNew, isNew);
    }
    EXPECT_GT(midpoints.steps(), 300U) << "these edges do not collide";
    EXPECT_LT(midpoints.steps(), 20U * 30000U);
    const std::vector<std::int32_t> ends = midpoints.release();
    for (const auto& [edge, vertex] : expected) {
      ASSERT_EQ((Edge{ends[2 * std::size_t(vertex)], ends[2 * std::size_t(vertex) + 1]}), edge);
    }
  }
}

}  // namespace
