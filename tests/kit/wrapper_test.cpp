// quorkit.hpp: that it passes everything on, and which exception a status becomes.

#include "support/mesh.h"

#include <gtest/gtest.h>
#include <quorkit.hpp>

#include <algorithm>
#include <cstdio>
#include <type_traits>

using namespace test;
namespace kit = quor::kit;

namespace {

static_assert(std::is_nothrow_move_constructible_v<kit::Mesh>);
static_assert(!std::is_copy_constructible_v<kit::Mesh>);
static_assert(std::is_nothrow_move_constructible_v<kit::Solver>);
static_assert(!std::is_copy_constructible_v<kit::Solver>);

TEST(KitWrapper, DoesTheWholeJob) {
  const Mesh soup = soupOf(bumpyMesh(7, 5, 1));
  const quor::Welded welded = kit::weld(soup.vertices, soup.triangles, 1e-9);
  ASSERT_EQ(welded.vertices.size(), 3U * 35U);
  EXPECT_EQ(welded.pointMap.size(), soup.vertices.size() / 3);
  const kit::Mesh clean = kit::clean(welded.vertices, welded.triangles);
  EXPECT_EQ(clean.vertexMap().size(), 35U);
  EXPECT_EQ(clean.triangles().size(), welded.triangles.size());
  const kit::Mesh mesh = kit::refine(clean.vertices(), clean.triangles(), 0.1);
  EXPECT_EQ(mesh.longestEdge(), 0.1);
  EXPECT_EQ(mesh.vertexMap().size(), 0U);
  EXPECT_EQ(mesh.triangleOrigins().size(), mesh.triangles().size() / 3);
  EXPECT_EQ(mesh.vertexOrigins().size(), mesh.vertices().size() / 3 * 2);
  const kit::Mesh more = kit::refineTo(mesh.vertices(), mesh.triangles(), 20000);
  EXPECT_GT(more.triangles().size(), mesh.triangles().size());

  const std::size_t n = mesh.vertices().size() / 3;
  std::vector<std::int32_t> tags(n, 0);
  EXPECT_EQ(kit::check(mesh.vertices(), mesh.triangles()).unprescribedPieces.count, 0);
  EXPECT_EQ(kit::check(mesh.vertices(), mesh.triangles(), tags).unprescribedPieces.count, 1);
  tags[3] = 3;
  const kit::Solver solver(mesh.vertices(), mesh.triangles(), tags);
  EXPECT_EQ(solver.info().prescribedCount, 1);
  const std::vector<double> values(n, 5);
  for (const double value : solver.solve(values)) {
    EXPECT_NEAR(value, 5, 1e-9);
  }
  std::vector<double> source = kit::areas(mesh.vertices(), mesh.triangles());
  const std::vector<double> field = solver.solve(values, source);
  EXPECT_LT(field[0], 5);
  EXPECT_EQ(kit::colours(field, 0, 5).size(), 4 * n);
  const std::string base = testing::TempDir() + "quor_kit_wrapper_test";
  kit::write(mesh.vertices(), mesh.triangles(), field, base);
  EXPECT_EQ(std::remove((base + ".obj").c_str()), 0);
  EXPECT_EQ(std::remove((base + ".mtl").c_str()), 0);
}

TEST(KitWrapper, ThrowsWhatAStatusMeans) {
  const Mesh mesh = bumpyMesh(4, 4, 1);
  const std::vector<double>& v = mesh.vertices;
  const std::vector<std::int32_t>& t = mesh.triangles;
  const std::vector<std::int32_t> tags(16, 1);
  using Wrong = std::invalid_argument;
  const std::vector<double> four(4);
  const std::vector<std::int32_t> outside{0, 1, 16};
  EXPECT_THROW(kit::weld(v, outside, 0), Wrong);
  EXPECT_THROW(kit::check(four, t), Wrong);
  EXPECT_THROW(kit::check(v, t, outside), Wrong);
  EXPECT_THROW(kit::clean(v, outside), Wrong);
  EXPECT_THROW(kit::refine(v, t, 0), Wrong);
  EXPECT_THROW(kit::refine(v, t, 1e-30), std::length_error);
  EXPECT_THROW(kit::refineTo(v, t, 0), Wrong);
  EXPECT_THROW(kit::Solver(v, t, outside), Wrong);
  EXPECT_THROW(kit::Solver(v, outside, tags), Wrong);
  const kit::Solver solver(v, t, tags);
  EXPECT_THROW(solver.solve(four), Wrong);
  EXPECT_THROW(solver.solve(std::vector<double>(16), four), Wrong);
  EXPECT_THROW(kit::areas(v, outside), Wrong);
  EXPECT_THROW(kit::colours(four, 0, kNaN), Wrong);
  EXPECT_THROW(kit::write(v, t, four, "never"), Wrong);
  try {
    kit::write(v, t, std::vector<double>(16), "no/such/directory");
    ADD_FAILURE();
  } catch (const kit::Error& error) {
    EXPECT_EQ(error.status(), QUORKIT_FILE);
    EXPECT_EQ(error.system(), ENOENT);
    EXPECT_STREQ(error.what(), "quor: no/such/directory.obj: no such file or directory");
  }
  try {
    kit::refine(v, std::vector<std::int32_t>{0, 1, 4, 5, 4, 5}, 1);
    ADD_FAILURE();
  } catch (const kit::BadArgument& error) {
    EXPECT_EQ(error.reason(), QUORKIT_REPEATED_CORNER);
    EXPECT_STREQ(error.argument(), "triangles");
    EXPECT_EQ(error.index(), 1);
  }
  EXPECT_THROW(kit::detail::fail({QUORKIT_OUT_OF_MEMORY, 0, "", -1, 0, ""}), std::bad_alloc);
}

// Two triangles apart; a vertex of each is prescribed.
struct Pair {
  std::vector<double> vertices{0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0};
  std::vector<std::int32_t> triangles{0, 1, 2, 3, 4, 5};
  std::vector<std::int32_t> tags{1, 0, 0, 0, 2, 0};
};

TEST(KitWrapper, SolvesToATolerance) {
  const Mesh mesh = gridMesh(5, 3);
  const std::vector<double> sources(16, -1);
  const std::vector<std::int32_t> left{0, 5, 5, 10};
  const std::vector<double> leftValues{2, 2};
  kit::Problem problem;
  problem.vertices = mesh.vertices;
  problem.triangles = mesh.triangles;
  problem.edges = left;
  problem.edgeValues = leftValues;
  problem.sources = sources;
  problem.tolerance = 0.01;
  double last = -1;
  const kit::Solution solution = kit::solveWithin(problem, [&](double fraction) {
    last = fraction;
    return false;
  });
  EXPECT_EQ(last, 1);
  EXPECT_TRUE(solution.isReached());
  EXPECT_LE(solution.error(), 0.01);
  EXPECT_EQ(solution.info().tolerance, 0.01);
  EXPECT_EQ(solution.jumps().size(), 0U);
  ASSERT_EQ(solution.field().size(), solution.vertices().size() / 3);
  EXPECT_EQ(solution.triangleOrigins().size(), solution.triangles().size() / 3);
  EXPECT_EQ(solution.vertexOrigins().size(), 2 * solution.field().size());
  for (std::size_t v = 0; v < solution.field().size(); ++v) {  // u'' = -1, u(0) = 2, u'(1) = 0
    const double x = solution.vertices()[3 * v];
    EXPECT_NEAR(solution.field()[v], 2 + x - x * x / 2, 0.01);
  }

  std::vector<double> ends(15, kNaN);
  ends[0] = ends[5] = 2;
  ends[4] = ends[9] = 6;
  kit::Problem byVertices;
  byVertices.vertices = mesh.vertices;
  byVertices.triangles = mesh.triangles;
  byVertices.vertexValues = ends;
  byVertices.tolerance = 1e-6;
  byVertices.isShareOfSpan = true;
  byVertices.triangleLimit = 1000;
  const kit::Solution limited = kit::solveWithin(byVertices);
  EXPECT_NEAR(limited.info().tolerance, 4e-6, 1e-15);
  EXPECT_FALSE(limited.isReached());
  EXPECT_LE(limited.triangles().size(), 3U * 1000U);

  std::vector<double> jump(16, kNaN);
  jump[0] = 1;
  jump[2] = 2;
  std::vector<std::int32_t> numbers(16, 4);
  kit::Problem byTriangles;
  byTriangles.vertices = mesh.vertices;
  byTriangles.triangles = mesh.triangles;
  byTriangles.triangleValues = jump;
  byTriangles.faces = numbers;
  byTriangles.tolerance = 0.5;
  const kit::Solution jumping = kit::solveWithin(byTriangles);
  ASSERT_EQ(jumping.jumps().size(), 1U);
  EXPECT_EQ(jumping.jumps()[0], 1);
}

TEST(KitWrapper, SaysWhyThereIsNoFieldWithinATolerance) {
  const Pair pair;
  std::vector<double> values(6, kNaN);
  kit::Problem problem;
  problem.vertices = pair.vertices;
  problem.triangles = pair.triangles;
  problem.vertexValues = values;
  problem.tolerance = 1;
  values[0] = values[1] = 1;
  try {
    kit::solveWithin(problem);
    ADD_FAILURE();
  } catch (const quor::Unprescribed& error) {
    EXPECT_EQ(error.vertex(), 3);
    EXPECT_NE(std::string(error.what()).find("triangle or an edge"), std::string::npos);
  }
  values[4] = 1;
  try {
    kit::solveWithin(problem);
    ADD_FAILURE();
  } catch (const kit::IsolatedVertex& error) {
    EXPECT_EQ(error.vertex(), 4);
  }
  values[5] = 1;
  EXPECT_THROW(kit::solveWithin(problem, [](double) { return true; }), kit::Error);
  EXPECT_THROW(kit::solveWithin(problem, [](double) -> bool { throw std::domain_error("mine"); }),
               std::domain_error);

  // Lengths that do not fit together, which the library could not see.
  const std::vector<double> three(3);
  const std::vector<std::int32_t> numbers(3);
  using Wrong = std::invalid_argument;
  const auto refuses = [&](const auto& change) {
    kit::Problem changed = problem;
    change(changed);
    EXPECT_THROW(kit::solveWithin(changed), Wrong);
  };
  refuses([&](kit::Problem& p) { p.triangleValues = three; });
  refuses([&](kit::Problem& p) { p.vertexValues = three; });
  refuses([&](kit::Problem& p) { p.sources = three; });
  refuses([&](kit::Problem& p) { p.faces = numbers; });
  refuses([&](kit::Problem& p) { p.edges = numbers; });
  refuses([&](kit::Problem& p) { p.edgeValues = three; });
  refuses([&](kit::Problem& p) { p.tolerance = kNaN; });
  EXPECT_THROW(kit::flip(pair.vertices, pair.triangles, numbers), Wrong);
  EXPECT_THROW(kit::faces(pair.vertices, pair.triangles, 90), Wrong);
}

TEST(KitWrapper, FindsFacesFlipsAndCleans) {
  // Two squares that meet at a right angle, the first with the longer diagonal of a kite.
  const std::vector<double> vertices{0, 0, 0, 4, 0, 0, 4, 1, 0, 0, 1, 0, 0, 1, 2, 4, 1, 2};
  const std::vector<std::int32_t> triangles{0, 1, 2, 0, 2, 3, 3, 2, 5, 3, 5, 4};
  const kit::Faces faces = kit::faces(vertices, triangles);
  EXPECT_EQ(faces.faceCount(), 2);
  ASSERT_EQ(faces.faces().size(), 4U);
  EXPECT_EQ(faces.faces()[1], 0);
  EXPECT_EQ(faces.faces()[2], 1);
  ASSERT_EQ(faces.edges().size(), 2 * faces.chains().size());
  EXPECT_EQ(faces.chains().size(), 7U);
  EXPECT_EQ(faces.chainCount(), 7);

  const std::vector<double> kite{0, 0, 0, 9, 0, 0, 5, 1, 0, 5, -1, 0};
  const std::vector<std::int32_t> long2{0, 1, 2, 1, 0, 3};
  const auto hasLong = [](const kit::Mesh& mesh) {
    const quor::Span<std::int32_t> t = mesh.triangles();
    return std::count(t.begin(), t.begin() + 3, 0) + std::count(t.begin(), t.begin() + 3, 1) == 2;
  };
  EXPECT_FALSE(hasLong(kit::flip(kite, long2)));
  EXPECT_TRUE(hasLong(kit::flip(kite, long2, std::vector<std::int32_t>{7, 8})));
  EXPECT_EQ(kit::clean(kite, long2).degenerateCount(), 0);
  // Three triangles at one edge, one of them without height: dropping it would open a crack.
  const std::vector<double> fan{4, 1e-6, 0, 3, 0, 0, 3, 1e-6, 0, 4, 0, 0, 4, 2e-6, 0};
  const std::vector<std::int32_t> shared{0, 4, 3, 3, 4, 1, 4, 3, 2, 2, 3, 1};
  EXPECT_EQ(kit::clean(fan, shared).degenerateCount(), 1);
}

template <class Solver>
void refusesWhatHasNoField() {
  const Pair good;
  EXPECT_TRUE(Solver(good.vertices, good.triangles, good.tags));
  Pair one = good;
  one.tags[4] = 0;
  try {
    const Solver solver(one.vertices, one.triangles, one.tags);
    ADD_FAILURE();
  } catch (const quor::Unprescribed& error) {
    EXPECT_EQ(error.vertex(), 3);
  }
  Pair wide = good;
  wide.vertices[7] = kNaN;
  EXPECT_THROW(Solver(wide.vertices, wide.triangles, wide.tags), std::invalid_argument);
  // The weights of the free corners with the far one are lost in that with each other.
  const Pair singular{{0, 0, 0, 1e20, 0, 0, 1e20, 1, 0}, {0, 1, 2}, {1, 0, 0}};
  try {
    const Solver solver(singular.vertices, singular.triangles, singular.tags);
    ADD_FAILURE();
  } catch (const quor::Error& error) {
    EXPECT_EQ(error.info(), QUOR_INFO_NUMERICAL_ISSUE);
  }
}

TEST(Wrappers, RefuseWhatHasNoFieldAlike) {
  refusesWhatHasNoField<quor::Solver>();
  refusesWhatHasNoField<kit::Solver>();
  Pair none;
  none.tags = {0, 0, 0, 0, 0, 0};
  QuorStatusCode status = 99;
  EXPECT_TRUE(quor::Solver::make(none.vertices, none.triangles, none.tags, status));
  EXPECT_EQ(status, QUOR_SUCCESS);
  EXPECT_TRUE(kit::Solver::make(none.vertices, none.triangles, none.tags));
}

TEST(KitWrapper, PassesProgressOnAndExceptionsThrough) {
  const Mesh mesh = bumpyMesh(4, 4, 1);
  const std::vector<std::int32_t> tags = tagEnds(4, 4);
  double last = -1;
  const kit::Solver solver(mesh.vertices, mesh.triangles, tags, [&](double fraction) {
    last = fraction;
    return false;
  });
  EXPECT_EQ(last, 1);
  try {
    const kit::Solver never(mesh.vertices, mesh.triangles, tags, [](double) { return true; });
    ADD_FAILURE();
  } catch (const kit::Error& error) {
    EXPECT_EQ(error.status(), QUORKIT_CANCELLED);
  }
  EXPECT_THROW(kit::Solver(mesh.vertices, mesh.triangles, tags,
                           [](double) -> bool { throw std::domain_error("mine"); }),
               std::domain_error);
}

TEST(KitWrapper, IsEmptyAfterAMove) {
  const Mesh mesh = bumpyMesh(4, 4, 1);
  kit::Solver from(mesh.vertices, mesh.triangles, tagEnds(4, 4));
  kit::Mesh refined = kit::refine(mesh.vertices, mesh.triangles, 0.1);
  const kit::Solver to = std::move(from);
  const kit::Mesh taken = std::move(refined);
  EXPECT_TRUE(to);
  EXPECT_NE(taken.vertices().size(), 0U);
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what a moved-from one does
  EXPECT_FALSE(from);
  EXPECT_EQ(from.info().vertexCount, 0);
  EXPECT_TRUE(from.solve(std::vector<double>()).empty());
  EXPECT_EQ(kit::Solution().field().size() + kit::Faces().faces().size(), 0U);
  EXPECT_EQ(refined.vertices().size() + refined.triangles().size() +
                refined.triangleOrigins().size() + refined.vertexOrigins().size(),
            0U);
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

}  // namespace
