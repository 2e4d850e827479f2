// The tree of points that the heat map looks for the nearest singular point in.

#include "../../tools/heatmap/nearest_point.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace {

using heatmap::Point;

/// Points with some of their coordinates on a coarse grid, so that many are equal.
std::vector<Point> points(std::size_t count, Point extent, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> step(0, 40);
  std::vector<Point> all(count);
  for (Point& p : all) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      p[axis] = 2.0 + extent[axis] * step(random) / 40.0;
    }
  }
  return all;
}

TEST(NearestPoint, IsThatOfASearchThroughAll) {
  for (const Point extent : {Point{1, 1, 1}, Point{0, 1, 2}, Point{0, 0, 3}, Point{0, 0, 0}}) {
    for (const std::size_t count : {0, 1, 2, 3, 50, 700}) {
      const std::vector<Point> all = points(count, extent, 1);
      const heatmap::NearestPoint tree(all);
      for (const Point& p : points(300, {1.5, 1.5, 1.5}, 2)) {
        for (const double most : {0.0, 0.02, 1e9}) {
          double nearest = most;
          for (const Point& q : all) {
            nearest = std::min(nearest, heatmap::squaredDistance(p.data(), q.data()));
          }
          ASSERT_EQ(tree.squaredDistanceFrom(p.data(), most), nearest);
        }
      }
    }
  }
}

}  // namespace
