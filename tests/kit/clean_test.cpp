// quorkitClean on closed meshes with degenerate triangles put into their edges: no crack opens, no
// triangle turns over, and what is left is counted.

#include "support/damaged_mesh.h"
#include "support/kit.h"
#include "support/plain_cleaning.h"

#include <quorkit.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

using namespace test;

namespace {

using Edge = std::pair<std::int32_t, std::int32_t>;

std::map<Edge, int> edgeUses(const Mesh& mesh) {
  std::map<Edge, int> uses;
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    ++uses[std::minmax(mesh.triangles[k], mesh.triangles[k / 3 * 3 + (k + 1) % 3])];
  }
  return uses;
}

/// How many edges have one triangle, and how long they are together.
std::pair<int, double> border(const Mesh& mesh) {
  std::pair<int, double> sum{0, 0};
  for (const auto& [edge, count] : edgeUses(mesh)) {
    if (count == 1) {
      ++sum.first;
      sum.second += std::sqrt(squaredLength(mesh, edge.first, edge.second));
    }
  }
  return sum;
}

int degenerateCount(const Mesh& mesh) {
  QuorkitReport report{};
  EXPECT_EQ(quorkitCheck(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), nullptr,
                         &report),
            QUORKIT_DONE);
  return report.flatTriangles.count + report.repeatedCorners.count;
}

/// A triangle's normal times twice its area; nothing if it is degenerate.
std::array<double, 3> sideOf(const Mesh& mesh, std::size_t t) {
  const auto v = doubleAreaVector(mesh, t);
  double longest = 0;
  for (std::size_t e = 0; e < 3; ++e) {
    longest = std::max(longest, squaredLength(mesh, mesh.triangles[3 * t + e],
                                              mesh.triangles[3 * t + (e + 1) % 3]));
  }
  return std::hypot(v[0], v[1], v[2]) > 1e-6 * longest ? v : std::array<double, 3>{};
}

/// The smallest cosine by which a part with an area is turned from its origin with an area.
double leastCosine(const Mesh& input, const KitMesh& cleaned) {
  double least = 1;
  const Mesh result = plain(cleaned);
  for (std::size_t t = 0; t < std::size_t(result.m()); ++t) {
    const auto p = sideOf(result, t);
    const auto w = sideOf(input, std::size_t(cleaned->triangleOrigins[t]));
    const double sizes = std::hypot(p[0], p[1], p[2]) * std::hypot(w[0], w[1], w[2]);
    if (sizes > 0) {
      least = std::min(least, (p[0] * w[0] + p[1] * w[1] + p[2] * w[2]) / sizes);
    }
  }
  return least;
}

void expectSound(const Mesh& mesh, const char* what, int number) {
  const KitMesh cleaned = clean(mesh);
  const Mesh result = plain(cleaned);
  EXPECT_EQ(border(result).first, border(mesh).first) << what << " " << number;
  EXPECT_NEAR(border(result).second, border(mesh).second, 1e-5) << what << " " << number;
  EXPECT_GE(leastCosine(mesh, cleaned), 0.49) << what << " " << number;
  EXPECT_EQ(cleaned->degenerateCount, degenerateCount(result)) << what << " " << number;
}

TEST(KitClean, OpensNoCrackWhereDegenerateTrianglesReplaceEachOther) {
  const Mesh mesh{{-100, .3, 0, 0, 0, 0, -.004, 0, 0, 170, .5, 0, 0, 80, 0, 0, -80, 0},
                  {0, 1, 2, 0, 3, 1, 0, 2, 4, 2, 1, 4, 1, 3, 4, 0, 5, 3}};
  expectSound(mesh, "six triangles", 0);
}

TEST(KitClean, KeepsClosedMeshesClosed) {
  std::mt19937 random(17);
  int left = 0;
  int found = 0;
  for (int i = 0; i < 400; ++i) {
    Mesh mesh = closedMesh(1 + int(random() % 4), random);
    for (int fillers = 1 + int(random() % 20); fillers > 0; --fillers) {
      addFiller(mesh, random);
    }
    ASSERT_EQ(border(mesh).first, 0);
    expectSound(mesh, "closed", i);
    const KitMesh cleaned = clean(mesh);
    left += cleaned->degenerateCount;
    found += degenerateCount(mesh);
  }
  EXPECT_LT(left, found / 100) << "of " << found;
}

TEST(KitClean, KeepsTheBorderOfOpenMeshes) {
  std::mt19937 random(23);
  for (int i = 0; i < 100; ++i) {
    Mesh mesh = closedMesh(3, random);
    mesh.triangles.resize(mesh.triangles.size() - 3 * (1 + random() % 20));
    for (int fillers = 1 + int(random() % 12); fillers > 0; --fillers) {
      addFiller(mesh, random);
    }
    const KitMesh cleaned = clean(mesh);
    // A filler on the border goes, and the border runs through its middle corner.
    EXPECT_NEAR(border(plain(cleaned)).second, border(mesh).second, 1e-5) << i;
    EXPECT_GE(leastCosine(mesh, cleaned), 0.49) << i;
  }
}

/// Points on few places of a line, or hardly off it, in triangles of any order.
Mesh tangleOnALine(std::mt19937& random) {
  Mesh mesh = tangledMesh(4 + int(random() % 8), 1 + int(random() % 16), unsigned(random()));
  const double off = std::pow(10.0, -double(random() % 10));
  for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
    mesh.vertices[i] = i % 3 == 0 ? std::floor(8 * mesh.vertices[i]) / 8 : off * mesh.vertices[i];
  }
  return mesh;
}

/// Moves a corner of a triangle next to another one, or on the line through both others.
void squeeze(Mesh& mesh, std::mt19937& random) {
  const std::size_t t = random() % std::size_t(mesh.m());
  const auto a = pointOf(mesh, mesh.triangles[3 * t]);
  const auto b = pointOf(mesh, mesh.triangles[3 * t + 1]);
  const double share =
      random() % 2 == 0 ? std::pow(10.0, -4 - double(random() % 8)) : double(random() % 64) / 64;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    mesh.vertices[3 * std::size_t(mesh.triangles[3 * t + 2]) + axis] =
        (1 - share) * a[axis] + share * b[axis];
  }
}

TEST(KitClean, IsTheOneOfTheHeaderToTheLastBit) {
  int close = 0;
  int left = 0;
  constexpr unsigned kWaits = 12139;  // a triangle that can be removed only after another one
  for (unsigned i = 0; i <= 2000; ++i) {
    std::mt19937 random(i < 2000 ? i : kWaits);
    Mesh mesh = i % 2 == 0 ? closedMesh(1 + int(random() % 2), random) : tangleOnALine(random);
    if (random() % 3 == 0) {
      mesh.triangles.resize(mesh.triangles.size() - 3 * (random() % std::size_t(mesh.m())));
    }
    for (int faults = int(random() % 16); faults > 0; --faults) {
      random() % 4 != 0 ? addFiller(mesh, random) : squeeze(mesh, random);
    }
    const PlainCleaning expected(mesh);
    const KitMesh cleaned = clean(mesh);
    close += expected.isClose() ? 1 : 0;
    left += cleaned->degenerateCount > 0 ? 1 : 0;
    if (!expected.isClose()) {
      ASSERT_EQ(expected.differenceOf(*cleaned), "") << "mesh " << i;
    }
  }
  EXPECT_LT(close, 100);
  EXPECT_GT(left, 10);
}

}  // namespace
