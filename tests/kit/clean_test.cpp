// quorkitClean on closed meshes with degenerate triangles put into their edges: no crack opens, no
// triangle turns over, and what is left is counted.

#include "support/cleaning_rules.h"
#include "support/damaged_mesh.h"
#include "support/kit.h"
#include "support/plain_cleaning.h"

#include <quorkit.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace test;

namespace {

int borderCount(const Mesh& mesh) {
  int count = 0;
  for (const auto& [edge, uses] : edgeUses(mesh)) {
    count += uses == 1 ? 1 : 0;
  }
  return count;
}

TEST(KitClean, OpensNoCrackWhereDegenerateTrianglesReplaceEachOther) {
  const Mesh mesh{{-100, .3, 0, 0, 0, 0, -.004, 0, 0, 170, .5, 0, 0, 80, 0, 0, -80, 0},
                  {0, 1, 2, 0, 3, 1, 0, 2, 4, 2, 1, 4, 1, 3, 4, 0, 5, 3}};
  const KitMesh cleaned = clean(mesh);
  EXPECT_EQ(faultOfCleaning(mesh, cleaned), "");
  EXPECT_EQ(borderCount(plain(cleaned)), 4);
}

TEST(KitClean, KeepsClosedMeshesClosed) {
  std::mt19937 random(17);
  int left = 0;
  int found = 0;
  for (int i = 0; i < 400; ++i) {
    Mesh mesh = closedMesh(1 + int(random() % 4), random);
    for (int fillers = 1 + int(random() % 20); fillers > 0; --fillers) {
      addFiller(mesh, random);
      ++found;
    }
    ASSERT_EQ(borderCount(mesh), 0);
    const KitMesh cleaned = clean(mesh);
    EXPECT_EQ(borderCount(plain(cleaned)), 0) << i;
    EXPECT_EQ(faultOfCleaning(mesh, cleaned), "") << i;
    left += cleaned->degenerateCount;
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
    EXPECT_EQ(faultOfCleaning(mesh, cleaned), "") << i;
    EXPECT_GE(borderCount(plain(cleaned)), borderCount(mesh)) << i;
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
