// Boxes along their points never rule out what the rule calls near.

#include "weld/oriented_box.h"
#include "support/nasty_points.h"
#include "support/weld_oracle.h"

#include <gtest/gtest.h>

using namespace test;

namespace {

using Vector = std::array<double, 3>;

Vector direction(Random& random) {
  Vector d{};
  double length = 0;
  while (length < 0.1) {
    d = {uniform(random, -1, 1), uniform(random, -1, 1), uniform(random, -1, 1)};
    length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  }
  return {d[0] / length, d[1] / length, d[2] / length};
}

/// Up to 32 points of a tilted line, plane or box, no longer than half a tolerance of 1.
std::vector<Vector> patch(Random& random, const Vector& center) {
  const std::array<Vector, 3> axes{direction(random), direction(random), direction(random)};
  const int dimensions = below(random, 4);
  const double size = std::pow(10, -uniform(random, 1, below(random, 2) == 0 ? 2 : 15));
  std::vector<Vector> points(std::size_t(1 + below(random, 32)), center);
  for (Vector& p : points) {
    for (int k = 0; k < dimensions; ++k) {
      const double along = uniform(random, -size, size);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        p[axis] += along * axes[std::size_t(k)][axis];
      }
    }
  }
  return points;
}

/// For each of some points one about 1 away from it.
std::vector<Vector> aboutOneAway(Random& random, const std::vector<Vector>& points) {
  const Vector away = direction(random);
  std::vector<Vector> others;
  for (const Vector& p : points) {
    const double distance = 1 + (below(random, 2) == 0 ? 0
                                                       : std::pow(10, -uniform(random, 2, 17)) *
                                                             (2 * below(random, 2) - 1));
    others.push_back(
        {p[0] + distance * away[0], p[1] + distance * away[1], p[2] + distance * away[2]});
  }
  return others;
}

TEST(OrientedBox, NeverRulesOutANearPoint) {
  Random random(61);
  int near = 0;
  int ruledOut = 0;
  for (int round = 0; round < 40000; ++round) {
    const double offset = below(random, 2) == 0 ? 0 : std::pow(10, uniform(random, 0, 16));
    const std::vector<Vector> first = patch(random, {offset, -offset / 3, offset / 7});
    const std::vector<Vector> second = aboutOneAway(random, first);
    const double tolerance = std::array{1.0, 1e-139, 1e139}[std::size_t(below(random, 3))];
    quor::PointColumns columns(first.size() + second.size());
    Mesh all;
    const auto n = std::int32_t(first.size());
    for (std::int32_t i = 0; i < 2 * n; ++i) {
      const Vector& p = i < n ? first[std::size_t(i)] : second[std::size_t(i - n)];
      all.vertices.insert(all.vertices.end(),
                          {p[0] * tolerance, p[1] * tolerance, p[2] * tolerance});
      columns.put(i, all.vertices.data() + 3 * std::size_t(i));
    }
    const quor::Range a{0, n};
    const quor::Range b{n, 2 * n};
    const double squared = tolerance * tolerance;
    if (!(columns.box(a).squaredDiagonal() < squared &&
          columns.box(b).squaredDiagonal() < squared)) {
      continue;  // rounded apart, far from the origin
    }
    const quor::OrientedBox boxA(columns, columns.box(a), a);
    const quor::OrientedBox boxB(columns, columns.box(b), b);
    const auto nearA = boxA.nearIn(columns, b, squared);
    const auto nearB = boxB.nearIn(columns, a, squared);
    bool isAnyNear = false;
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        if (areNear(all, std::size_t(i), std::size_t(n) + std::size_t(j), tolerance)) {
          isAnyNear = true;
          ASSERT_TRUE((nearA >> j & 1U) != 0 && (nearB >> i & 1U) != 0)
              << "round " << round << ", offset " << offset;
        }
      }
    }
    const bool isBeyond = boxA.isBeyond(boxB, squared);
    ASSERT_FALSE(isAnyNear && isBeyond) << "round " << round << ", offset " << offset;
    near += int(isAnyNear);
    ruledOut += int(nearA == 0 && nearB == 0 && isBeyond);
  }
  EXPECT_GT(near, 5000);
  EXPECT_GT(ruledOut, 1000);
}

}  // namespace
