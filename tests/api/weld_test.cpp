// quorWeld from outside: its arguments, its examples, and thousands of inputs made to be nasty.

#include "support/nasty_points.h"
#include "support/weld_oracle.h"

#include <gtest/gtest.h>
#include <quor.h>

using namespace test;

namespace {

/// Adds random triangles, repeats among them.
Mesh withTriangles(std::vector<double> points, Random& random) {
  Mesh soup{std::move(points), {}};
  const std::int32_t n = soup.n();
  for (std::int32_t t = 0; t < n; ++t) {
    const std::int32_t window = 1 + below(random, n);
    for (int k = 0; k < 3; ++k) {
      soup.triangles.push_back(below(random, window));
    }
  }
  return soup;
}

TEST(Weld, ArgumentChecks) {
  struct Case {
    std::int32_t points, triangles;
    double tolerance;
  };
  for (const Case& c : {Case{-1, 0, 1},
                        {0, -1, 1},
                        {-1, -1, 1},
                        {1, 0, kNaN},
                        {1, 0, -1e-300},
                        {1, 0, -kInfinity},
                        {0, 0, -1},
                        {-2147483647 - 1, 1, 0}}) {
    std::int32_t counts[2] = {7, 8};
    EXPECT_EQ(quorWeld(c.points, nullptr, c.triangles, nullptr, nullptr, nullptr, nullptr,
                       &counts[0], &counts[1], c.tolerance),
              1);
    EXPECT_EQ(counts[0], 7);
    EXPECT_EQ(counts[1], 8);
  }
  std::int32_t counts[2] = {7, 8};
  EXPECT_EQ(quorWeld(0, nullptr, 5, nullptr, nullptr, nullptr, nullptr, &counts[0], &counts[1], 0),
            0);
  EXPECT_EQ(counts[0], 0);
  EXPECT_EQ(counts[1], 0);
  EXPECT_EQ(quorWeld(0, nullptr, 5, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
}

TEST(Weld, Examples) {
  struct Case {
    const char* why;
    Mesh soup;
    double tolerance;
    std::vector<double> vertices;
    std::vector<std::int32_t> triangles, map;
  };
  const Case cases[] = {
      {"exactly the tolerance stays apart",
       {{0, 0, 0, 1, 0, 0}, {}},
       1,
       {0, 0, 0, 1, 0, 0},
       {},
       {0, 1}},
      {"chains merge", {{0, 0, 0, .6, 0, 0, 1.2, 0, 0}, {}}, 1, {0, 0, 0}, {}, {0, 0, 0}},
      {"the first point is kept",
       {{.1, 0, 0, 10, 0, 0, 0, 0, 0}, {}},
       .5,
       {.1, 0, 0, 10, 0, 0},
       {},
       {0, 1, 0}},
      {"repeats in any order go, the first stays",
       {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2, 2, 1, 0, 1, 2, 0, 1, 1, 2}},
       .1,
       {0, 0, 0, 1, 0, 0, 0, 1, 0},
       {0, 1, 2},
       {0, 1, 2}},
      {"tolerance 0 keeps identical points",
       {{1, 2, 3, 1, 2, 3, 1, 2, 3}, {0, 1, 2, 1, 2, 0, 0, 0, 1}},
       0,
       {1, 2, 3, 1, 2, 3, 1, 2, 3},
       {0, 1, 2},
       {0, 1, 2}},
      {"so does -0.0", {{1, 2, 3, 1, 2, 3}, {}}, -0.0, {1, 2, 3, 1, 2, 3}, {}, {0, 1}},
      {"and a square that underflows",
       {{1, 2, 3, 1, 2, 3}, {}},
       1e-170,
       {1, 2, 3, 1, 2, 3},
       {},
       {0, 1}},
      {"a square that just does not underflow, to the smallest number above 0",
       {{1, 2, 3, 1, 2, 3}, {}},
       1.58e-162,
       {1, 2, 3},
       {},
       {0, 0}},
      {"one that just does", {{1, 2, 3, 1, 2, 3}, {}}, 1.56e-162, {1, 2, 3, 1, 2, 3}, {}, {0, 1}},
      {"infinity merges what is finite",
       {{0, 0, 0, 9e9, 1, 1, kNaN, 0, 0, -5, 0, 0}, {}},
       kInfinity,
       {0, 0, 0, kNaN, 0, 0},
       {},
       {0, 0, 1, 0}},
      {"distances that overflow stay apart",
       {{1e300, 0, 0, -1e300, 0, 0, 1e300, 0, 0}, {}},
       kInfinity,
       {1e300, 0, 0, -1e300, 0, 0},
       {},
       {0, 1, 0}},
      {"identical infinite points stay apart",
       {{kInfinity, 0, 0, kInfinity, 0, 0}, {}},
       kInfinity,
       {kInfinity, 0, 0, kInfinity, 0, 0},
       {},
       {0, 1}},
      {"a tolerance that takes the largest number beyond all, and a square beyond all",
       {{1.7976931348623157e308, 0, 0, 1.7976931348623155e308, 0, 0}, {}},
       1e300,
       {1.7976931348623157e308, 0, 0, 1.7976931348623155e308, 0, 0},
       {},
       {0, 1}},
      {"zeros of both signs are equal",
       {{0.0, 0, 0, -0.0, 0, -0.0}, {}},
       1e-100,
       {0.0, 0, 0},
       {},
       {0, 0}},
      {"the bits of the first are kept",
       {{-0.0, 0, 0, 0.0, 0, 0}, {}},
       1e-100,
       {-0.0, 0, 0},
       {},
       {0, 0}},
  };
  for (const Case& c : cases) {
    EXPECT_TRUE(same(welded(c.soup, c.tolerance), {0, c.vertices, c.triangles, c.map})) << c.why;
  }
}

TEST(Weld, MatchesBruteForceOnManySmallNastyInputs) {
  Random random(20);
  for (const Nasty& nasty : kNasty) {
    for (int round = 0; round < 2500; ++round) {
      double tolerance = 0;
      const int count = 2 + below(random, 60);
      std::vector<double> points = nasty.points(random, count, tolerance);
      const Mesh soup = withTriangles(std::move(points), random);
      ASSERT_TRUE(same(welded(soup, tolerance), bruteForceWeld(soup, tolerance)))
          << nasty.name << ", round " << round << ", tolerance " << tolerance;
    }
  }
}

TEST(Weld, MatchesBruteForceWhereverABlockEnds) {
  // Points are taken by 1024 after the first one, triangles by 512.
  Random random(25);
  for (const int n : {1, 2, 1024, 1025, 1026, 2048, 2049, 2050}) {
    for (const int m : {0, 1, 511, 512, 513, 1024, 1025}) {
      Mesh soup;
      for (int i = 0; i < 3 * n; ++i) {
        soup.vertices.push_back(below(random, 9));
      }
      for (int corner = 0; corner < 3 * m; ++corner) {
        soup.triangles.push_back(below(random, n));
      }
      ASSERT_TRUE(same(welded(soup, 1e-3), bruteForceWeld(soup, 1e-3))) << n << ", " << m;
    }
  }
}

TEST(Weld, MatchesBruteForceWhereTheTreeIsDeep) {
  Random random(21);
  for (const Nasty& nasty : kNasty) {
    for (const double scale : {1.0, 0.1, 0.01, 30.0}) {
      double tolerance = 0;
      std::vector<double> points = nasty.points(random, 1500, tolerance);
      const Mesh soup = withTriangles(std::move(points), random);
      ASSERT_TRUE(same(welded(soup, tolerance * scale), bruteForceWeld(soup, tolerance * scale)))
          << nasty.name << ", tolerance " << tolerance * scale;
    }
  }
}

/// Points by the hundred thousand, with a spacing of about 1.
std::vector<double> manyPoints(const std::string& shape, int count, Random& random) {
  std::vector<double> points;
  const int side = int(std::sqrt(count));
  const auto jitter = [&] { return uniform(random, -0.05, 0.05); };
  for (int i = 0; i < count; ++i) {
    const double u = i % side;
    const int row = i / side;
    const double v = row;
    if (shape == "a line along an axis") {  // more points than the grid has slabs on one axis
      points.insert(points.end(), {0.0, double(i) + jitter(), 0.0});
    } else if (shape == "a tilted line") {
      points.insert(points.end(), {0.6 * i, -0.48 * i + jitter(), 0.64 * i});
    } else if (shape == "a tilted sheet") {
      points.insert(points.end(), {0.8 * u, v + jitter(), 0.6 * u});
    } else if (shape == "two sheets") {  // about one spacing apart
      const double layer = i % 2;
      points.insert(points.end(), {u / 2 + jitter(), 0.8 * v - 0.6 * layer, 0.6 * v + 0.8 * layer});
    } else if (shape == "clusters") {  // of 25 points, some nearer than others
      const int cluster = i / 25;
      points.insert(points.end(), {cluster % 91 * 1.3 + 4 * jitter(), cluster / 91 * 1.3 + jitter(),
                                   4 * jitter()});
    } else {  // a volume
      const int edge = int(std::cbrt(count));
      points.insert(points.end(), {i % edge + jitter(), i / edge % edge + jitter(),
                                   double(i / edge) / edge + jitter()});
    }
  }
  return points;
}

TEST(Weld, MatchesAGridOnManyPoints) {
#if defined(__OPTIMIZE__) && !defined(QUOR_SANITIZED)
  const int count = 100000;
#else
  const int count = 20000;
#endif
  Random random(23);
  for (const char* shape : {"a line along an axis", "a tilted line", "a tilted sheet", "two sheets",
                            "clusters", "a volume"}) {
    const Mesh soup{manyPoints(shape, count, random), {}};
    for (const double tolerance : {0.25, 0.97, 1.02}) {
      ASSERT_TRUE(same(welded(soup, tolerance), gridWeld(soup, tolerance)))
          << shape << ", tolerance " << tolerance;
    }
  }
}

TEST(Weld, LongChainInRandomOrderIsOneVertex) {
  Random random(22);
  const int count = 10000;
  std::vector<int> order(count);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), random);
  Mesh chain;
  for (const int i : order) {  // a helix whose turns are far apart
    chain.vertices.insert(chain.vertices.end(),
                          {std::cos(i * 0.01), std::sin(i * 0.01), i * 0.001});
  }
  const double link = std::hypot(2 * std::sin(0.005), 0.001);
  EXPECT_EQ(welded(chain, link * 1.001).vertices.size(), 3U);
  EXPECT_EQ(welded(chain, link * 0.999).vertices.size(), 3U * count);
}

TEST(Weld, SoupBecomesTheMeshAgain) {
  // Large enough for the table to grow and for more than one level of everything.
  const Mesh mesh = bumpyMesh(120, 90, 11);
  const Mesh soup = soupOf(mesh);
  const Welded result = welded(soup, 1e-9);
  EXPECT_EQ(result.vertices.size(), mesh.vertices.size());
  EXPECT_EQ(result.triangles.size(), mesh.triangles.size());
  for (std::size_t i = 0; i < result.map.size(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      ASSERT_EQ(result.vertices[3 * std::size_t(result.map[i]) + axis],
                soup.vertices[3 * i + axis]);
    }
  }
}

TEST(Weld, WorksInPlace) {
  const Mesh soup = soupOf(bumpyMesh(20, 20, 12));
  EXPECT_TRUE(same(weldedInPlace(soup, 1e-9), bruteForceWeld(soup, 1e-9)));
  Random random(24);
  for (const Nasty& nasty : kNasty) {
    for (int round = 0; round < 100; ++round) {
      double tolerance = 0;
      std::vector<double> points = nasty.points(random, 2 + below(random, 60), tolerance);
      const Mesh mesh = withTriangles(std::move(points), random);
      ASSERT_TRUE(same(weldedInPlace(mesh, tolerance), bruteForceWeld(mesh, tolerance)))
          << nasty.name << ", round " << round;
    }
  }
}

TEST(Weld, EqualHashesDoNotMakeEqualPoints) {
  // Integers and powers of two have few mantissa bits, the weak spot of multiplicative hashes.
  Mesh lattice;
  for (int x = 0; x < 32; ++x) {
    for (int y = 0; y < 32; ++y) {
      for (int z = 0; z < 32; ++z) {
        lattice.vertices.insert(lattice.vertices.end(),
                                {std::ldexp(1.0, x), double(y << 20), std::ldexp(z, -400)});
      }
    }
  }
  const std::vector<double> once = lattice.vertices;
  lattice.vertices.insert(lattice.vertices.end(), once.begin(), once.end());
  EXPECT_EQ(welded(lattice, 1e-150).vertices, once);
}

}  // namespace
