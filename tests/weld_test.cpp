// quorWeld from outside: its arguments, its examples, and thousands of inputs made to be nasty.

#include "weld_oracle.h"

using namespace test;

namespace {

using Random = std::mt19937_64;

double uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

int below(Random& random, int limit) {
  return std::uniform_int_distribution<int>(0, limit - 1)(random);
}

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
    EXPECT_TRUE(same(weld(c.soup, c.tolerance), {0, c.vertices, c.triangles, c.map})) << c.why;
  }
}

/// One kind of nasty input: points, and the tolerance that makes them nasty.
struct Nasty {
  const char* name;
  std::vector<double> (*points)(Random&, int count, double& tolerance);
};

const Nasty kNasty[] = {
    {"cloud",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -6, 1));
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(uniform(random, 0, 1));
       }
       return points;
     }},
    {"pairs a rounding step around the tolerance",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -3, 3));
       std::vector<double> points;
       for (int i = 0; i < count; i += 2) {
         double p[3];
         double q[3];
         double d[3];
         double length = 0;
         for (int axis = 0; axis < 3; ++axis) {
           p[axis] = uniform(random, -20, 20) * tolerance;
           d[axis] = uniform(random, -1, 1);
           length += d[axis] * d[axis];
         }
         for (int axis = 0; axis < 3; ++axis) {
           q[axis] = p[axis] + d[axis] / std::sqrt(length) * tolerance;
           for (int steps = below(random, 4); steps > 0; --steps) {
             q[axis] = std::nextafter(q[axis], below(random, 2) != 0 ? 1e9 : -1e9);
           }
         }
         points.insert(points.end(), p, p + 3);
         points.insert(points.end(), q, q + 3);
       }
       return points;
     }},
    {"lattice at exactly the tolerance, or a step less or more",
     [](Random& random, int count, double& tolerance) {
       const double spacing = std::ldexp(1.0, below(random, 9) - 4);
       const double tolerances[] = {spacing, std::nextafter(spacing, 0),
                                    std::nextafter(spacing, 9e9), spacing * std::sqrt(2.0),
                                    spacing * std::sqrt(3.0)};
       tolerance = tolerances[below(random, 5)];
       const double origin = below(random, 2) != 0 ? 0.1 : 1e6;
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(origin + spacing * below(random, 6));
       }
       return points;
     }},
    {"denormals",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -375, -368));  // squares underflow to a few units
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(uniform(random, -3, 3) * tolerance);
       }
       return points;
     }},
    {"magnitudes from 1e-320 to 1e300",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::pow(10.0, uniform(random, -160, 200));
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(std::pow(10.0, uniform(random, -320, 300)) * (below(random, 2) - 0.5));
       }
       return points;
     }},
    {"finite points among others",
     [](Random& random, int count, double& tolerance) {
       tolerance = 0.2;
       const double odd[] = {kNaN, kInfinity, -kInfinity, 1e308, 0.0, -0.0};
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(below(random, 12) == 0 ? odd[below(random, 6)] : uniform(random, 0, 1));
       }
       return points;
     }},
    {"few distinct points",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -8, 1));
       std::vector<double> distinct;
       for (int i = 0; i < 3 * 7; ++i) {
         distinct.push_back(uniform(random, 0, 1));
       }
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         const double* p = distinct.data() + 3 * below(random, 7);
         points.insert(points.end(), p, p + 3);
       }
       return points;
     }},
    {"two dense clusters just out of reach, and outliers",
     [](Random& random, int count, double& tolerance) {
       tolerance = 1;
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         const double side = below(random, 2);
         points.insert(points.end(), {side * (1 + 1e-3) + uniform(random, -5e-4, 5e-4),
                                      uniform(random, 0, 1e-3), uniform(random, 0, 1e-3)});
       }
       points[below(random, count) * std::size_t{3}] = 1e12;
       return points;
     }},
    {"geometric sequence towards a point",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::pow(2.0, uniform(random, -60, 0));
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         points.insert(points.end(), {std::pow(1.5, -i % 700), 0, below(random, 2) * 1e-9});
       }
       return points;
     }},
};

TEST(Weld, MatchesBruteForceOnManySmallNastyInputs) {
  Random random(20);
  for (const Nasty& nasty : kNasty) {
    for (int round = 0; round < 2500; ++round) {
      double tolerance = 0;
      const int count = 2 + below(random, 60);
      std::vector<double> points = nasty.points(random, count, tolerance);
      const Mesh soup = withTriangles(std::move(points), random);
      ASSERT_TRUE(same(weld(soup, tolerance), bruteForceWeld(soup, tolerance)))
          << nasty.name << ", round " << round << ", tolerance " << tolerance;
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
      ASSERT_TRUE(same(weld(soup, tolerance * scale), bruteForceWeld(soup, tolerance * scale)))
          << nasty.name << ", tolerance " << tolerance * scale;
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
  EXPECT_EQ(weld(chain, link * 1.001).vertices.size(), 3U);
  EXPECT_EQ(weld(chain, link * 0.999).vertices.size(), 3U * count);
}

TEST(Weld, SoupBecomesTheMeshAgain) {
  // Large enough for the table to grow and for more than one level of everything.
  const Mesh mesh = bumpyMesh(120, 90, 11);
  const Mesh soup = soupOf(mesh);
  const Welded welded = weld(soup, 1e-9);
  EXPECT_EQ(welded.vertices.size(), mesh.vertices.size());
  EXPECT_EQ(welded.triangles.size(), mesh.triangles.size());
  for (std::size_t i = 0; i < welded.map.size(); ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      ASSERT_EQ(welded.vertices[3 * std::size_t(welded.map[i]) + axis],
                soup.vertices[3 * i + axis]);
    }
  }
}

TEST(Weld, WorksInPlace) {
  const Mesh soup = soupOf(bumpyMesh(20, 20, 12));
  const Welded expected = weld(soup, 1e-9);
  Mesh inPlace = soup;
  std::vector<std::int32_t> map(std::size_t(soup.n()));
  std::int32_t vertexCount = 0;
  std::int32_t triangleCount = 0;
  quorWeld(soup.n(), inPlace.vertices.data(), soup.m(), inPlace.triangles.data(),
           inPlace.vertices.data(), inPlace.triangles.data(), map.data(), &vertexCount,
           &triangleCount, 1e-9);
  inPlace.vertices.resize(3 * std::size_t(vertexCount));
  inPlace.triangles.resize(3 * std::size_t(triangleCount));
  EXPECT_TRUE(same({0, inPlace.vertices, inPlace.triangles, map}, expected));
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
  EXPECT_EQ(weld(lattice, 1e-150).vertices, once);
}

}  // namespace
