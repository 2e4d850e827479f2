// quorkitRefine and quorkitRefineTo: conforming, exact about who comes from where, and refusing in
// time.

#include "support/kit.h"
#include "support/refinement_oracle.h"

#include <algorithm>
#include <limits>

using namespace test;

namespace {

/// The strips of a cylinder as a CAD host hands them over: as long as it is, with nothing in
/// between.
Mesh cylinder(int sides, double radius, double length) {
  Mesh mesh;
  for (int i = 0; i < sides; ++i) {
    const double angle = 2 * 3.141592653589793 * i / sides;
    for (const double z : {0.0, length}) {
      mesh.vertices.insert(mesh.vertices.end(),
                           {radius * std::cos(angle), radius * std::sin(angle), z});
    }
    const int a = 2 * i;
    const int b = 2 * ((i + 1) % sides);
    mesh.triangles.insert(mesh.triangles.end(), {a, b, b + 1, a, b + 1, a + 1});
  }
  return mesh;
}

struct Case {
  const char* what;
  Mesh mesh;
  double longest;
};

std::vector<Case> cases() {
  const Mesh one{{0, 0, 0, 1, 0, 0, 0.3, 0.8, 0.1}, {0, 1, 2}};
  Mesh far = bumpyMesh(5, 5, 3);
  for (double& coordinate : far.vertices) {
    coordinate += 1e9;  // a step of rounding is 1.2e-7
  }
  Mesh large = one;
  Mesh small = one;
  for (std::size_t i = 0; i < one.vertices.size(); ++i) {
    large.vertices[i] *= 1e70;
    small.vertices[i] *= 1e-70;
  }
  return {
      {"nothing to do", bumpyMesh(5, 4, 1), 10},
      {"one triangle", one, 0.07},
      {"a border all around", bumpyMesh(7, 9, 2), 0.03},
      {"strips", cylinder(40, 1, 50), 0.4},
      {"exactly the length", gridMesh(5, 5), 0.25},
      {"exactly half the length", gridMesh(5, 5), 0.125},
      {"three triangles on an edge",
       {{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 1}, {0, 1, 2, 1, 0, 3, 4, 0, 1}},
       0.1},
      {"two that look at each other", {one.vertices, {0, 1, 2, 2, 1, 0}}, 0.1},
      {"twice the same", {one.vertices, {0, 1, 2, 1, 2, 0}}, 0.1},
      {"any triangles on any points", tangledMesh(12, 60, 5), 0.2},
      {"a vertex that nothing uses", {{0, 0, 0, 1, 0, 0, 9, 9, 9, 0, 1, 0}, {0, 1, 3}}, 0.3},
      {"a line", {{0, 0, 0, 1, 0, 0, 2, 0, 0}, {0, 1, 2}}, 0.3},
      {"far from the origin", far, 0.04},
      {"large", large, 1e69},
      {"small", small, 1e-71},
      {"no triangle", {{0, 0, 0}, {}}, 1},
      {"no vertex", {}, 1},
  };
}

TEST(KitRefine, IsConformingAndKnowsWhereEverythingComesFrom) {
  for (const Case& c : cases()) {
    const KitMesh refined = refine(c.mesh, c.longest);
    ASSERT_NE(refined, nullptr) << c.what;
    EXPECT_EQ(faultOfRefinement(c.mesh, *refined, c.longest), "") << c.what;
    EXPECT_EQ(refined->vertexMap, nullptr);
    EXPECT_EQ(refined->vertexMapCount, 0);
    EXPECT_EQ(refined->longestEdge, c.longest);
    const KitMesh again = refine(c.mesh, c.longest);
    EXPECT_TRUE(sameMesh(plain(refined), plain(again))) << c.what;
  }
}

TEST(KitRefine, IsFinerNearVerticesOfLesserSize) {
  const Mesh mesh = bumpyMesh(6, 6, 3);
  std::vector<double> sizes(36, kInfinity);
  const auto graded = [&](QuorkitStatus expected) {
    const QuorkitMesh* made = nullptr;
    EXPECT_EQ(quorkitRefineGraded(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                  0.1, sizes.data(), &made),
              expected);
    return KitMesh(made);
  };
  EXPECT_TRUE(sameMesh(plain(graded(QUORKIT_DONE)), plain(refine(mesh, 0.1))));
  sizes[14] = 0.01;
  const KitMesh refined = graded(QUORKIT_DONE);
  // No longer edge than anywhere, none that could be longer than at the vertex, no hanging vertex.
  EXPECT_EQ(faultOfRefinement(mesh, *refined, 0.1, 0.01), "");
  EXPECT_LT(refined->triangleCount, 4 * refine(mesh, 0.1)->triangleCount);
  const Mesh result = plain(refined);
  for (std::size_t k = 0; k < result.triangles.size(); ++k) {
    const std::int32_t next = result.triangles[k % 3 == 2 ? k - 2 : k + 1];
    if (result.triangles[k] == 14 || next == 14) {
      EXPECT_LE(squaredLength(result, result.triangles[k], next), 0.01 * 0.01);
    }
  }
  for (const double size : {0.0, -1.0, kNaN}) {
    sizes[3] = size;
    EXPECT_EQ(graded(QUORKIT_BAD_ARGUMENT), nullptr);
  }
}

TEST(KitRefine, SplitsIntoTheFewestPartsOfTheirPatterns) {
  // One, two and three sides longer than 1: two, three and four triangles.
  const double r = 0.9;
  for (const auto& [x, y, count] :
       {std::array{0.55, 0.6, 2.0}, {1.0, 0.3, 3.0}, {0.55, 1.0, 4.0}}) {
    const Mesh mesh{{0, 0, 0, 1.1, 0, 0, x, y * r, 0}, {0, 1, 2}};
    EXPECT_EQ(refine(mesh, 1)->triangleCount, count) << x << " " << y;
  }
}

TEST(KitRefine, EndsWhereSizesAreBelowTheStepsOfRounding) {
  const Mesh triangle{{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};
  for (const double size : {1e-17, 1e-30, 5e-324}) {
    const std::vector<double> sizes{kInfinity, size, kInfinity};
    const QuorkitMesh* made = nullptr;
    ASSERT_EQ(quorkitRefineGraded(3, triangle.vertices.data(), 1, triangle.triangles.data(), 1,
                                  sizes.data(), &made),
              QUORKIT_DONE);
    const KitMesh refined(made);
    EXPECT_LT(refined->triangleCount, 10000) << size;
    EXPECT_GT(refined->triangleCount, 100) << size;
  }
}

TEST(KitRefine, EndsOnTrianglesOfAFewStepsOfRounding) {
  std::mt19937 random(11);
  for (int i = 0; i < 300; ++i) {
    const double size = std::ldexp(1.0, int(random() % 60) - 30);
    const double step = std::nextafter(size, 2 * size) - size;
    Mesh mesh{{}, {0, 1, 2}};
    for (int k = 0; k < 9; ++k) {
      mesh.vertices.push_back(size + step * int(random() % 40));
    }
    for (const double longest : {1e-3 * step, 0.5 * step, step, 3 * step}) {
      const KitMesh refined = refine(mesh, longest);
      ASSERT_NE(refined, nullptr);
      EXPECT_LE(refined->triangleCount, 64);
    }
    EXPECT_LE(refineTo(mesh, 1000)->triangleCount, 1000);
  }
}

TEST(KitRefine, RefusesWhatDoesNotFitBeforeItStarts) {
  const Mesh mesh = bumpyMesh(6, 6, 1);
  const Mesh strips = cylinder(100, 1, 30);
  // The last ones cannot be told from what fits without counting.
  for (const double longest : {1e-300, 1e-30, 1e-12, 1e-9, 1e-6, 4e-5}) {
    EXPECT_EQ(refine(mesh, longest, QUORKIT_TOO_LARGE), nullptr) << longest;
    EXPECT_EQ(refine(strips, longest, QUORKIT_TOO_LARGE), nullptr) << longest;
  }
  const double huge = 1e300;
  const Mesh large{{-huge, 0, 0, huge, 0, 0, 0, huge, 0}, {0, 1, 2}};
  EXPECT_EQ(refine(large, 1, QUORKIT_TOO_LARGE), nullptr);
  const Mesh needle{{0, 1, 0, 1, 1, 0, -std::numeric_limits<double>::max(), 1, 0}, {0, 1, 2}};
  EXPECT_EQ(refine(needle, 1e150, QUORKIT_TOO_LARGE), nullptr);
  // No square is larger than that of 1e200, and those of 1e-190 and 1e-280 are both 0.
  EXPECT_EQ(refine(needle, 1e200)->triangleCount, 1);
  const Mesh tiny{{0, 0, 0, 1e-284, 0, 0, 0, 1e-284, 1e-190}, {0, 1, 2}};
  EXPECT_EQ(refine(tiny, 1e-285)->triangleCount, 1);
}

TEST(KitRefine, SaysWhatIsABadArgument) {
  const Mesh mesh = bumpyMesh(3, 3, 1);
  for (const double longest : {0.0, -1.0, kNaN, kInfinity}) {
    EXPECT_EQ(refine(mesh, longest, QUORKIT_BAD_ARGUMENT), nullptr);
  }
  for (const std::int32_t count : {0, -1, 238609295}) {
    EXPECT_EQ(refineTo(mesh, count, QUORKIT_BAD_ARGUMENT), nullptr);
  }
  for (const auto& [where, what] : {std::pair{0, -1}, {1, 9}, {2, 0}}) {
    Mesh bad = mesh;
    bad.triangles[std::size_t(where)] = what;  // below, above, equal to another corner
    if (what == 0) {
      bad.triangles[0] = 0;
    }
    EXPECT_EQ(refine(bad, 1, QUORKIT_BAD_ARGUMENT), nullptr) << what;
    EXPECT_EQ(refineTo(bad, 100, QUORKIT_BAD_ARGUMENT), nullptr) << what;
  }
  for (const double value : {kNaN, kInfinity, -kInfinity}) {
    Mesh bad = mesh;
    bad.vertices[4] = value;
    EXPECT_EQ(refine(bad, 1, QUORKIT_BAD_ARGUMENT), nullptr);
    EXPECT_EQ(refineTo(bad, 100, QUORKIT_BAD_ARGUMENT), nullptr);
  }
  const QuorkitMesh* made = nullptr;
  const double* const v = mesh.vertices.data();
  const std::int32_t* const t = mesh.triangles.data();
  EXPECT_EQ(quorkitRefine(9, nullptr, 8, t, 1, &made), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitRefine(9, v, 8, nullptr, 1, &made), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitRefine(-1, v, 0, t, 1, &made), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitRefine(9, v, -1, t, 1, &made), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitRefine(9, v, 8, t, 1, nullptr), QUORKIT_BAD_ARGUMENT);
  // Without vertices nothing says that there are n sizes to read.
  const double size = 1;
  EXPECT_EQ(quorkitRefineGraded(INT32_MAX, nullptr, 8, t, 1, &size, &made), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(made, nullptr);
  quorkitFreeMesh(nullptr);
}

TEST(KitRefineTo, ComesNearFromBelow) {
  for (const auto& [mesh, share] :
       {std::pair{bumpyMesh(9, 7, 2), 0.9}, {cylinder(30, 1, 20), 0.5}, {gridMesh(6, 6), 0.2}}) {
    for (const std::int32_t wanted : {1000, 4321, 20000}) {
      const KitMesh refined = refineTo(mesh, wanted);
      EXPECT_LE(refined->triangleCount, wanted);
      EXPECT_GE(refined->triangleCount, share * wanted);
      EXPECT_EQ(faultOfRefinement(mesh, *refined, refined->longestEdge), "");
      EXPECT_TRUE(sameMesh(plain(refined), plain(refine(mesh, refined->longestEdge))));
    }
  }
}

TEST(KitRefineTo, FindsALengthWhereverCoordinatesAre) {
  // The square of a length that leaves few triangles here has no place in double.
  const Mesh mesh{{0, 0, 0, 1, 0, 0, 0, 1, 0, -std::numeric_limits<double>::max(), 1, 0},
                  {0, 1, 2, 1, 2, 3}};
  const KitMesh refined = refineTo(mesh, 10);
  EXPECT_GE(refined->triangleCount, 2);
  EXPECT_LE(refined->triangleCount, 10);
}

TEST(KitRefineTo, GivesTheMeshBackThatHasAsMany) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {  // roots that are rounded up and down
    const Mesh mesh = bumpyMesh(9, 7, seed);
    for (const std::int32_t wanted : {1, mesh.m() - 1, mesh.m(), mesh.m() + 1}) {
      const KitMesh refined = refineTo(mesh, wanted);
      EXPECT_TRUE(sameMesh(plain(refined), mesh)) << wanted;
      EXPECT_EQ(faultOfRefinement(mesh, *refined, refined->longestEdge), "");
      EXPECT_TRUE(sameMesh(plain(refine(mesh, refined->longestEdge)), mesh));
    }
  }
  const Mesh point{{1, 2, 3, 1, 2, 3, 1, 2, 3}, {0, 1, 2}};
  EXPECT_EQ(refineTo(point, 100)->triangleCount, 1);
  EXPECT_EQ(refineTo({}, 100)->vertexCount, 0);
}

}  // namespace
