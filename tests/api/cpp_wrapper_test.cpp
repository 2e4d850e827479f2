// quor.hpp: that it passes everything on, in the right order, and checks what it says it checks.

#include "support/mesh.h"

#include <gtest/gtest.h>
#include <quor.hpp>

#include <cstdio>
#include <fstream>
#include <type_traits>

using namespace test;

namespace {

const std::vector<double> kSquare{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
const std::vector<std::int32_t> kTwoTriangles{0, 1, 2, 0, 2, 3};

static_assert(std::is_nothrow_move_constructible_v<quor::Solver>);
static_assert(!std::is_copy_constructible_v<quor::Solver>);
static_assert(std::is_convertible_v<const double (&)[3], quor::Span<double>>);
static_assert(std::is_convertible_v<const std::array<double, 3>&, quor::Span<double>>);
static_assert(!std::is_convertible_v<const std::vector<float>&, quor::Span<double>>);
static_assert(!std::is_convertible_v<const std::vector<std::uint32_t>&, quor::Span<std::int32_t>>);

TEST(CppWrapper, DoesTheWholeJob) {
  const Mesh soup = soupOf(bumpyMesh(7, 5, 1));
  const quor::Welded mesh = quor::weld(soup.vertices, soup.triangles, 1e-9);
  ASSERT_EQ(mesh.vertices.size(), 3U * 35U);
  EXPECT_EQ(mesh.triangles.size(), soup.triangles.size());
  EXPECT_EQ(mesh.pointMap.size(), soup.vertices.size() / 3);

  std::vector<std::int32_t> tags(35, -1);
  tags[3] = 3;
  tags[20] = 1;
  const quor::Solver solver(mesh.vertices, mesh.triangles, tags);
  EXPECT_EQ(solver.vertexCount(), 35U);
  EXPECT_EQ(solver.prescribedCount(), 2U);
  std::vector<double> values(35, kNaN);
  values[3] = 5;
  values[20] = 5;
  for (const double value : solver.solve(values)) {
    EXPECT_NEAR(value, 5, 1e-12);
  }
  const std::vector<double> lowered = solver.solve(values, std::vector<double>(35, 1.0));
  EXPECT_LT(lowered[0], 5);

  // The stored mesh is the caller's in solver order, which toSolverOrder has to know as well.
  std::vector<double> x(35);
  for (std::size_t i = 0; i < 35; ++i) {
    x[i] = mesh.vertices[3 * i];
  }
  const std::vector<double> ordered = quor::toSolverOrder(x, tags);
  for (std::size_t i = 0; i < 35; ++i) {
    EXPECT_EQ(solver.vertices()[3 * i], ordered[i]);
  }
  EXPECT_EQ(solver.triangles().size(), mesh.triangles.size());

  const std::string base = testing::TempDir() + "quor_cpp_wrapper_test";
  solver.writeObj(ordered, base);
  std::string line;
  std::getline(std::ifstream(base + ".obj"), line);
  EXPECT_EQ(line, "mtllib " + base + ".mtl");
  std::remove((base + ".obj").c_str());
  std::remove((base + ".mtl").c_str());
}

TEST(CppWrapper, ThrowsOnSizesThatDoNotFit) {
  const std::vector<std::int32_t> tags{1, 0, 2, 0};
  const quor::Solver solver(kSquare, kTwoTriangles, tags);
  const quor::Span<double> four(kSquare.data(), 4);
  const quor::Span<double> five(kSquare.data(), 5);
  const quor::Span<std::int32_t> fiveCorners(kTwoTriangles.data(), 5);
  using Wrong = std::invalid_argument;
  EXPECT_THROW(quor::weld(five, kTwoTriangles, 0), Wrong);
  EXPECT_THROW(quor::weld(kSquare, fiveCorners, 0), Wrong);
  EXPECT_THROW(quor::weld(kSquare, kTwoTriangles, kNaN), Wrong);
  EXPECT_THROW(quor::Solver(five, kTwoTriangles, tags), Wrong);
  EXPECT_THROW(quor::Solver(kSquare, fiveCorners, tags), Wrong);
  EXPECT_THROW(quor::Solver(kSquare, kTwoTriangles, kTwoTriangles), Wrong);
  EXPECT_THROW(solver.solve(five), Wrong);
  EXPECT_THROW(solver.solve(five, four), Wrong);
  EXPECT_THROW(solver.solve(four, five), Wrong);
  EXPECT_THROW(solver.writeObj(five, "never"), Wrong);
  EXPECT_THROW(quor::toSolverOrder(five, tags), Wrong);
  const quor::Span<double> huge(kSquare.data(), 3 * (std::size_t{1} << 31));
  EXPECT_THROW(quor::weld(huge, {}, 0), std::length_error);
  for (const std::int32_t outside : {-1, 4}) {
    const std::array<std::int32_t, 3> corners{0, 1, outside};
    EXPECT_THROW(quor::weld(kSquare, corners, 0), std::out_of_range);
    EXPECT_THROW(quor::Solver(kSquare, corners, tags), std::out_of_range);
  }
}

TEST(CppWrapper, ThrowsWhereAFileCannotBeOpened) {
  const quor::Solver solver(kSquare, kTwoTriangles, std::vector<std::int32_t>{1, 0, 2, 0});
  const std::vector<double> field(4);
  try {
    solver.writeObj(field, "no/such/directory");
    ADD_FAILURE();
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
  }
  quor::Solver().writeObj({}, "no/such/directory");
}

TEST(CppWrapper, GivesTheStatusAsExceptionOrValue) {
  struct Case {
    std::vector<std::int32_t> triangles;
    std::vector<std::int32_t> tags;
    StatusCode status;
    std::uint32_t info;
  };
  for (const Case& c : {Case{{}, {1, 0, 0}, QUOR_UNUSED_VERTEX, QUOR_INFO_NULL_HANDLE},
                        {{0, 1, 1}, {1, 0, 0}, QUOR_REPEATED_CORNER, QUOR_INFO_NULL_HANDLE},
                        {{0, 1, 2}, {0, 0, 0}, QUOR_SUCCESS, QUOR_INFO_NUMERICAL_ISSUE}}) {
    const std::vector<double> vertices{0, 0, 0, 1, 0, 0, 0, 1, 0};
    StatusCode status = 99;
    const quor::Solver made = quor::Solver::make(vertices, c.triangles, c.tags, status);
    EXPECT_EQ(status, c.status);
    EXPECT_EQ(made.info(), c.info);
    EXPECT_EQ(bool(made), c.status == QUOR_SUCCESS);
    try {
      const quor::Solver thrown(vertices, c.triangles, c.tags);
      ADD_FAILURE() << "status " << c.status;
    } catch (const quor::Error& error) {
      EXPECT_EQ(error.status(), c.status);
      EXPECT_EQ(error.info(), c.info);
    }
  }
}

TEST(CppWrapper, IsEmptyAfterAMove) {
  quor::Solver from(kSquare, kTwoTriangles, std::vector<std::int32_t>{1, 0, 2, 0});
  const void* handle = from.handle();
  const quor::Solver to = std::move(from);
  EXPECT_EQ(to.handle(), handle);
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what a moved-from one does
  EXPECT_FALSE(from);
  EXPECT_EQ(from.vertexCount() + from.prescribedCount() + from.triangles().size(), 0U);
  EXPECT_THROW(from.solve(kSquare), std::invalid_argument);
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

TEST(CppWrapper, PutsLabelsOnTheSphere) {
  EXPECT_EQ(quor::integerFromSphere(quor::sphereFromInteger(65534)), 65534);
  EXPECT_THROW(quor::sphereFromInteger(65535), std::out_of_range);
}

}  // namespace
