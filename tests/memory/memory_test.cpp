// What happens when memory runs out: every single allocation of every function fails in its turn.

#include "support/allocations.h"
#include "support/handle.h"
#include "support/temp_directory.h"
#include "support/weld_oracle.h"

#include <locale>
#include <new>
#include <stdexcept>
#include <utility>

using namespace test;

namespace {

class Memory : public testing::Test {
 protected:
  void SetUp() override {
    if (!Allocations::canBeWatched()) {
      GTEST_SKIP() << "the allocator belongs to a sanitizer";
    }
    try {  // whatever the first exception of a program allocates for good
      throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
    }
  }
};

/// Makes the call with the given allocations failing. In the end it must have freed all it took.
/// @return whether std::bad_alloc left it
bool runsOutOfMemory(Allocations plan, const std::function<void()>& call) {
  bool ranOut = false;
  plan.watched = true;
  allocations = plan;
  try {
    call();
  } catch (const std::bad_alloc&) {
    ranOut = true;
  }
  allocations.watched = false;
  EXPECT_EQ(allocations.live, 0) << "memory leaked";
  return ranOut;
}

/// The k-th allocation fails, alone or with all later ones, for k = 1, 1 + step, ... until the call
/// succeeds.
/// @param afterFailure  checks what the call has left behind
/// @return number of allocations of a call
long failEveryAllocation(long step, const std::function<void()>& call,
                         const std::function<void()>& afterFailure) {
  for (const bool andAllLater : {false, true}) {
    Allocations plan;
    plan.andAllLater = andAllLater;
    for (plan.failing = 1; runsOutOfMemory(plan, call); plan.failing += step) {
      afterFailure();
      if (testing::Test::HasFailure()) {
        ADD_FAILURE() << "at allocation " << plan.failing;
        return 0;
      }
    }
    EXPECT_LT(allocations.count, plan.failing) << "a failed allocation went unnoticed";
  }
  return allocations.count;
}

TEST_F(Memory, Weld) {
  const Mesh soup = soupOf(bumpyMesh(20, 20, 3));
  struct Case {
    const char* search;
    Mesh soup;
    double tolerance;
    long allocations;  ///< at least
  };
  for (const Case& c : {Case{"cells", soup, 1e-9, 2},
                        {"tree", soup, 0.1, 15},
                        {"tree, all points different", bumpyMesh(60, 60, 3), 1e-9, 20}}) {
    const Welded expected = bruteForceWeld(c.soup, c.tolerance);
    Welded room{99, c.soup.vertices, c.soup.triangles, c.soup.triangles};
    room.map.resize(std::size_t(c.soup.n()));
    std::int32_t n = 0;
    std::int32_t m = 0;
    const long count = failEveryAllocation(
        1,
        [&] {
          room.result = 99;
          room.result = quorWeld(c.soup.n(), c.soup.vertices.data(), c.soup.m(),
                                 c.soup.triangles.data(), room.vertices.data(),
                                 room.triangles.data(), room.map.data(), &n, &m, c.tolerance);
        },
        [&] { EXPECT_EQ(room.result, 99); });
    EXPECT_GE(count, c.allocations) << c.search;
    room.vertices.resize(3 * std::size_t(n));
    room.triangles.resize(3 * std::size_t(m));
    EXPECT_TRUE(same(room, expected)) << c.search;
  }
}

TEST_F(Memory, ConstructorAndSolves) {
  // The larger mesh is worth factorizing in blocks. It is swept whole where the compiler optimizes.
  for (const int side : {4, 85}) {
#if defined(__OPTIMIZE__)
    const long step = 1;
#else
    const long step = side < 10 ? 1 : 17;
#endif
    const Mesh mesh = bumpyMesh(side, side, 1);
    const std::vector<std::int32_t> tags = tagEnds(side, side);
    const std::vector<double> values(tags.size(), 1.5);
    std::uint32_t prescribed = 99;
    StatusCode status = 99;
    void* handle = &status;
    const long count = failEveryAllocation(
        step,
        [&] {
          handle = &status;
          prescribed = status = 99;
          quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         tags.data(), &prescribed, &status, &handle);
          quorfree(handle);
        },
        [&] {
          EXPECT_EQ(handle, nullptr);
          EXPECT_EQ(prescribed, 0U);
          EXPECT_EQ(status, 99U);
        });
    EXPECT_GT(count, 30);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(prescribed, 2U * unsigned(side));

    const Handle solver = build(mesh, tags);
    const std::vector<double> expected = solve(solver, values);
    const std::vector<double> source(values.size(), 0.25);
    std::vector<double> field(values.size(), kInfinity);
    const std::function<void()> solves[] = {
        [&] { quorsolveTagged(solver.get(), values.data(), field.data(), &status); },
        [&] {
          quorsolvePTagged(solver.get(), values.data(), source.data(), field.data(), &status);
        }};
    for (const auto& call : solves) {
      const long solveCount = failEveryAllocation(
          1,
          [&] {
            status = 99;
            std::fill(field.begin(), field.end(), kInfinity);
            call();
          },
          [&] {
            EXPECT_EQ(status, 99U);
            EXPECT_EQ(std::count(field.begin(), field.end(), kInfinity), mesh.n());
          });
      EXPECT_GE(solveCount, 2);
      EXPECT_EQ(status, 0U);
      EXPECT_TRUE(sameBits(solve(solver, values), expected));
    }
  }
}

TEST_F(Memory, Writer) {
  const TempDirectory directory;
  const Mesh mesh = bumpyMesh(4, 4, 1);
  const Handle handle = build(mesh, tagEnds(4, 4));
  const std::string base = directory / "mesh";
  std::vector<double> field(std::size_t(mesh.n()));
  std::iota(field.begin(), field.end(), 0.0);
  const auto write = [&] { wobj(handle.get(), field.data(), base.c_str()); };
  write();
  const std::string expected = readFile(base + ".obj");
  const std::string expectedMaterial = readFile(base + ".mtl");

  testing::internal::CaptureStderr();
  EXPECT_GE(failEveryAllocation(1, write, [] {}), 5);
  EXPECT_EQ(readFile(base + ".obj"), expected);
  EXPECT_EQ(readFile(base + ".mtl"), expectedMaterial);
  // A locale that no stream has used yet is prepared on the way.
  const auto writeInLocale = [&] {
    struct Classic {
      ~Classic() { std::locale::global(std::locale::classic()); }
    } classicAfterwards;
    const long failing = std::exchange(allocations.failing, 0);  // not these
    std::locale::global(std::locale(std::locale::classic(), new std::numpunct<char>));
    allocations.count = 0;
    allocations.failing = failing;
    write();
  };
  EXPECT_GE(failEveryAllocation(1, writeInLocale, [] {}), 8);
  EXPECT_EQ(readFile(base + ".obj"), expected);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Memory, SizesNearTheLimitDoNotWrapAround) {
  // Counts whose products pass 2^31 and 2^32. A size that wrapped around would be granted, and the
  // call would go on to read arrays whose addresses are not mapped.
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t mostVertices = 1431655765;
  constexpr std::int32_t mostTriangles = 238609294;
  const auto* const coordinates = reinterpret_cast<const double*>(8);
  const auto* const indices = reinterpret_cast<const std::int32_t*>(8);
  const std::int32_t threeTags[] = {1, 0, 0};
  const double threePoints[9] = {};
  double vertices[9];
  std::int32_t map[3];
  std::int32_t counts[2] = {99, 99};
  StatusCode status = 99;
  void* handle = nullptr;
  struct Case {
    const char* what;
    std::function<void()> call;
  };
  const Case cases[] = {
      {"points",
       [&] {
         quorWeld(most, coordinates, most, indices, vertices, map, map, &counts[0], &counts[1],
                  1e-9);
       }},
      {"triangles",
       [&] {
         quorWeld(3, threePoints, most, indices, vertices, map, map, &counts[0], &counts[1], 1e-9);
       }},
      {"vertices",
       [&] {
         quorctorTagged(mostVertices, coordinates, mostTriangles, indices, indices, nullptr,
                        &status, &handle);
       }},
      {"triangles of a solver",
       [&] {
         quorctorTagged(3, threePoints, mostTriangles, indices, threeTags, nullptr, &status,
                        &handle);
       }},
  };
  for (const Case& c : cases) {
    Allocations plan;
    plan.largestAllowed = std::size_t{1} << 28U;
    EXPECT_TRUE(runsOutOfMemory(plan, c.call)) << c.what;
  }
  EXPECT_EQ(status, 99U);
  EXPECT_EQ(counts[1], 0);
}

}  // namespace
