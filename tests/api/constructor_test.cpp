// quorctorTagged, quorinfo, quoverts, quotris, quorfree from outside.

#include "support/handle.h"

#include <array>
#include <stdexcept>

using namespace test;

namespace {

const Mesh kSquare{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3}};

struct Outcome {
  std::uint32_t result;
  StatusCode status;
  std::uint32_t prescribed;
  Handle handle;
};

Outcome construct(std::int32_t n, const double* vertices, std::int32_t m,
                  const std::int32_t* triangles, const std::int32_t* tags) {
  int stale = 0;
  Outcome outcome{99, 99, 99, nullptr};
  void* handle = &stale;
  outcome.result = quorctorTagged(n, vertices, m, triangles, tags, &outcome.prescribed,
                                  &outcome.status, &handle);
  outcome.handle.reset(handle);
  return outcome;
}

Outcome construct(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  return construct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data());
}

TEST(Constructor, ChecksArgumentsInOrder) {
  const double* v = kSquare.vertices.data();
  const std::int32_t* t = kSquare.triangles.data();
  const std::array<std::int32_t, 4> tags{1, 0, 0, 0};
  constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
  struct Case {  // NOLINT(clang-analyzer-optin.performance.Padding): in the order of the arguments
    std::int32_t n;
    const double* vertices;
    std::int32_t m;
    const std::int32_t* triangles;
    const std::int32_t* tags;
    StatusCode status;
  };
  const Case cases[] = {
      {0, nullptr, 0, nullptr, nullptr, 1},
      {-5, v, 2, t, tags.data(), 1},
      {0, v, huge, t, tags.data(), 1},
      {4, v, 0, t, tags.data(), 24},
      {1, nullptr, 0, nullptr, nullptr, 24},
      {huge, v, -1, t, tags.data(), 24},
      {4, nullptr, 2, t, tags.data(), 25},
      {4, v, 2, nullptr, tags.data(), 25},
      {4, v, 2, t, nullptr, 25},
      {huge, v, huge, nullptr, tags.data(), 25},
  };
  for (const Case& c : cases) {
    const Outcome outcome = construct(c.n, c.vertices, c.m, c.triangles, c.tags);
    EXPECT_EQ(outcome.result, 1U);
    EXPECT_EQ(outcome.status, c.status) << "n " << c.n << " m " << c.m;
    EXPECT_EQ(outcome.prescribed, 0U);
    EXPECT_EQ(outcome.handle, nullptr);

    StatusCode status = 99;
    void* handle = &status;
    EXPECT_EQ(quorctorTagged(c.n, c.vertices, c.m, c.triangles, c.tags, nullptr, &status, &handle),
              1U);
    EXPECT_EQ(status, c.status);
    EXPECT_EQ(handle, nullptr);
  }
}

TEST(Constructor, RejectsTheMeshAndStillCountsPrescribed) {
  const Mesh fiveVertices{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 2, 2}, {}};
  struct Case {
    std::vector<std::int32_t> triangles;
    StatusCode status;
  };
  const Case cases[] = {
      {{0, 1, 2, 0, 0, 4, 0, 2, 3}, 23}, {{0, 1, 2, 4, 3, 3}, 23}, {{2, 1, 2}, 23},
      {{0, 1, 2, 0, 2, 3}, 24},  // the last vertex, prescribed, is in no triangle
      {{1, 2, 3, 1, 4, 2}, 24},  // the first is in none
      {{0, 1, 2, 0, 2, 0}, 23},  // both faults: the triangle decides
  };
  for (const Case& c : cases) {
    const Mesh mesh{fiveVertices.vertices, c.triangles};
    const Outcome outcome = construct(mesh, {2, 0, 3, 0, 1});
    EXPECT_EQ(outcome.result, 1U);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_EQ(outcome.prescribed, 3U);
    EXPECT_EQ(outcome.handle, nullptr);
  }
}

TEST(Constructor, RefusesSizesBeyondIndicesBeforeReading) {
  // Nothing may be read: the addresses are not mapped.
  const auto* v = reinterpret_cast<const double*>(8);
  const auto* t = reinterpret_cast<const std::int32_t*>(8);
  const std::pair<std::int32_t, std::int32_t> sizes[] = {
      {1431655766, 1}, {2147483647, 1}, {3, 238609295}, {3, 2147483647}};
  for (const auto& [n, m] : sizes) {
    std::uint32_t prescribed = 99;
    StatusCode status = 99;
    void* handle = &status;
    try {
      quorctorTagged(n, v, m, t, t, &prescribed, &status, &handle);
      FAIL() << "n " << n << " m " << m;
    } catch (const std::length_error& error) {
      EXPECT_STREQ(error.what(), "vector");
    }
    EXPECT_EQ(prescribed, 0U);
    EXPECT_EQ(status, 99U);
    EXPECT_EQ(handle, nullptr);
  }
}

TEST(Constructor, OnlyTags123Prescribe) {
  const Mesh mesh = gridMesh(4, 2);
  const Outcome outcome = construct(mesh, {0, 1, 2, 3, 4, -1, 2147483647, -2147483647 - 1});
  EXPECT_EQ(outcome.status, 0U);
  EXPECT_EQ(outcome.prescribed, 3U);
}

TEST(ReadBack, SolverOrderReversesFreeVertices) {
  Mesh mesh = kSquare;
  Outcome outcome = construct(mesh, {0, 1, 0, 0});
  std::fill(mesh.vertices.begin(), mesh.vertices.end(), kNaN);  // the handle has its own copy
  mesh.triangles.assign(6, 0);
  const double* vertices = nullptr;
  const std::int32_t* triangles = nullptr;
  ASSERT_EQ(quoverts(outcome.handle.get(), &vertices), 4U);
  ASSERT_EQ(quotris(outcome.handle.get(), &triangles), 4U);  // vertices, not triangles
  const std::vector<double> expectedVertices{1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 0};
  EXPECT_EQ(std::vector<double>(vertices, vertices + 12), expectedVertices);
  const std::vector<std::int32_t> expectedTriangles{3, 0, 2, 3, 2, 1};
  EXPECT_EQ(std::vector<std::int32_t>(triangles, triangles + 6), expectedTriangles);

  const double* again = nullptr;
  quoverts(outcome.handle.get(), &again);
  EXPECT_EQ(again, vertices);
}

TEST(NullHandle, IsAnsweredWithoutTouchingAnything) {
  const double stale = 5.0;
  const double* vertices = &stale;
  const std::int32_t staleIndex = 5;
  const std::int32_t* triangles = &staleIndex;
  EXPECT_EQ(quoverts(nullptr, &vertices), 0U);
  EXPECT_EQ(vertices, &stale);
  EXPECT_EQ(quotris(nullptr, &triangles), 0U);
  EXPECT_EQ(triangles, &staleIndex);
  EXPECT_EQ(quorinfo(nullptr), 7U);
  quorfree(nullptr);
  wobj(nullptr, nullptr, nullptr);
  StatusCode status = 99;
  quorsolveTagged(nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1U);
  status = 99;
  quorsolvePTagged(nullptr, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1U);
}

TEST(Info, TellsAnExactZeroPivot) {
  // Entries 1, 0.5 and 0 only: all arithmetic of the factorization is exact, the last pivot is 0.
  const Mesh triangle{{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};
  EXPECT_EQ(quorinfo(construct(triangle, {0, 0, 0}).handle.get()), 1U);
  EXPECT_EQ(quorinfo(construct(triangle, {0, 0, 1}).handle.get()), 0U);
  EXPECT_EQ(quorinfo(construct(triangle, {1, 2, 3}).handle.get()), 0U);  // nothing to factorize
}

TEST(Constructor, AcceptsDegenerateGeometry) {
  const Mesh collinear{{0, 0, 0, 1, 0, 0, 2, 0, 0}, {0, 1, 2}};
  const Mesh coincident{{1, 1, 1, 1, 1, 1, 1, 1, 1}, {0, 1, 2}};
  const Mesh notFinite{{kNaN, 0, 0, kInfinity, 0, 0, 2, 0, 1e308}, {0, 1, 2}};
  for (const Mesh& mesh : {collinear, coincident, notFinite}) {
    for (const auto& tags : {std::vector<std::int32_t>{1, 0, 0}, {0, 0, 0}, {1, 1, 1}}) {
      const Outcome outcome = construct(mesh, tags);
      EXPECT_EQ(outcome.status, 0U);
      ASSERT_NE(outcome.handle, nullptr);
      EXPECT_LE(quorinfo(outcome.handle.get()), 1U);
      solve(outcome.handle, {1, 2, 3});
    }
  }
}

}  // namespace
