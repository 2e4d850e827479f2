// The kit when memory runs out: every single allocation of every function fails in its turn, and
// the answer is a status.

#include "support/allocations.h"
#include "support/kit.h"
#include "support/temp_directory.h"

#include <new>

using namespace test;

namespace {

class KitMemory : public testing::Test {
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

QuorkitStatus watched(Allocations plan, const std::function<QuorkitStatus()>& call) {
  plan.watched = true;
  allocations = plan;
  const QuorkitStatus status = call();
  allocations.watched = false;
  EXPECT_EQ(allocations.live, 0) << "memory leaked";
  return status;
}

/// The k-th allocation fails, alone or with all later ones, for k = 1, 1 + step, ... until the call
/// succeeds.
/// @return number of allocations of a call
long failEveryAllocation(long step, const std::function<QuorkitStatus()>& call) {
  for (const bool andAllLater : {false, true}) {
    Allocations plan;
    plan.andAllLater = andAllLater;
    QuorkitStatus status = QUORKIT_OUT_OF_MEMORY;
    for (plan.failing = 1; status == QUORKIT_OUT_OF_MEMORY; plan.failing += step) {
      status = watched(plan, call);
      if (testing::Test::HasFailure()) {
        ADD_FAILURE() << "at allocation " << plan.failing;
        return 0;
      }
    }
    EXPECT_EQ(status, QUORKIT_DONE) << "at allocation " << plan.failing - step;
    EXPECT_LT(allocations.count, plan.failing) << "a failed allocation went unnoticed";
  }
  return allocations.count;
}

TEST_F(KitMemory, EveryFunctionAnswersWithAStatus) {
  const Mesh mesh = bumpyMesh(12, 12, 1);
  Mesh flat = mesh;
  flat.vertices[1] = flat.vertices[4] = flat.vertices[7] = 0;  // three on the border in a line
  flat.vertices[2] = flat.vertices[5] = flat.vertices[8] = 0;
  flat.triangles.insert(flat.triangles.end(), {0, 1, 2});
  const Mesh soup = soupOf(mesh);
  const std::vector<std::int32_t> tags = tagEnds(12, 12);
  const std::int32_t n = mesh.n();
  const double* const v = mesh.vertices.data();
  const std::int32_t m = mesh.m();
  const std::int32_t* const t = mesh.triangles.data();
  const KitSolver solver = construct(mesh, tags);
  std::vector<double> field(tags.size());
  QuorkitReport report{};
  std::vector<double> outVertices = soup.vertices;
  std::vector<std::int32_t> outTriangles = soup.triangles;
  std::vector<std::int32_t> map = soup.triangles;
  std::int32_t counts[2] = {};
  std::vector<std::int32_t> origins(std::size_t(soup.m()));
  const std::vector<double> columns(10 * tags.size(), 0.5);
  const std::vector<double> untouched(columns.size(), 77.0);
  std::vector<double> fields = untouched;
  std::vector<double> sizes(tags.size(), 1.0);
  sizes[0] = 0.01;
  std::vector<double> triangleValues(std::size_t(m), kNaN);
  triangleValues.front() = 1;
  triangleValues.back() = 0;
  const QuorkitMesh* made = nullptr;
  const auto freed = [&](QuorkitStatus status) {
    EXPECT_EQ(made == nullptr, status != QUORKIT_DONE);
    quorkitFreeMesh(made);
    return status;
  };
  const TempDirectory directory;
  const std::string path = directory / "written";
  const std::string ramp = directory / "ramp";
  std::ofstream(ramp) << "ramp";
  const auto progress = [](double, void*) { return std::int32_t{0}; };
  struct Case {
    const char* what;
    long allocations;  ///< at least
    std::function<QuorkitStatus()> call;
  };
  for (const Case& c : {
           Case{"weld", 2,
                [&] {
                  return quorkitWeld(soup.n(), soup.vertices.data(), soup.m(),
                                     soup.triangles.data(), outVertices.data(), outTriangles.data(),
                                     map.data(), &counts[0], &counts[1], 0.01);
                }},
           {"check", 3, [&] { return quorkitCheck(n, v, m, t, tags.data(), &report); }},
           {"clean", 8,
            [&] {
              return freed(quorkitClean(flat.n(), flat.vertices.data(), flat.m(),
                                        flat.triangles.data(), &made));
            }},
           {"refine", 6, [&] { return freed(quorkitRefine(n, v, m, t, 0.03, &made)); }},
           {"refine near a vertex", 6,
            [&] { return freed(quorkitRefineGraded(n, v, m, t, 1.0, sizes.data(), &made)); }},
           {"refine to", 6, [&] { return freed(quorkitRefineTo(n, v, m, t, 3000, &made)); }},
           {"refine to less", 4, [&] { return freed(quorkitRefineTo(n, v, m, t, 3, &made)); }},
           {"flip", 4, [&] { return freed(quorkitFlip(n, v, m, t, nullptr, &made)); }},
           {"faces", 8,
            [&] {
              const QuorkitFaces* found = nullptr;
              const QuorkitStatus status = quorkitFaces(n, v, m, t, 30, &found);
              EXPECT_EQ(found == nullptr, status != QUORKIT_DONE);
              quorkitFreeFaces(found);
              return status;
            }},
           {"solve within", 60,
            [&] {
              QuorkitProblem problem{};
              problem.n = n;
              problem.vertices = v;
              problem.m = m;
              problem.triangles = t;
              problem.triangleValues = triangleValues.data();
              problem.tolerance = 0.2;
              const QuorkitSolution* solution = nullptr;
              const QuorkitStatus status =
                  quorkitSolveWithin(&problem, progress, nullptr, &solution);
              EXPECT_EQ(solution == nullptr, status != QUORKIT_DONE);
              quorkitFreeSolution(solution);
              return status;
            }},
           {"construct", 30,
            [&] {
              QuorkitSolver* built = nullptr;
              const QuorkitStatus status =
                  quorkitConstruct(n, v, m, t, tags.data(), progress, nullptr, &built);
              EXPECT_EQ(built == nullptr, status != QUORKIT_DONE);
              quorkitFreeSolver(built);
              return status;
            }},
           {"weld with origins, in place", 3,
            [&] {
              outVertices = soup.vertices;
              outTriangles = soup.triangles;
              return quorkitWeldOrigins(soup.n(), outVertices.data(), soup.m(), outTriangles.data(),
                                        outVertices.data(), outTriangles.data(), map.data(),
                                        origins.data(), &counts[0], &counts[1], 0.01);
            }},
           {"check regions", 8,
            [&] { return quorkitCheckRegions(n, v, m, t, tags.data(), v, &report); }},
           {"solve many", 2,
            [&] {
              fields = untouched;
              const QuorkitStatus status =
                  quorkitSolveMany(solver.get(), 10, columns.data(), columns.data(), fields.data());
              const bool isUntouched = fields == untouched;
              EXPECT_EQ(isUntouched, status != QUORKIT_DONE);
              return status;
            }},
           {"solve", 1, [&] { return quorkitSolve(solver.get(), v, v, field.data()); }},
           {"write", 10,
            [&] {
              return quorkitWrite(n, v, m, t, field.data(), path.c_str(), ramp.c_str(), 0.001);
            }},
       }) {
    EXPECT_GE(failEveryAllocation(1, c.call), c.allocations) << c.what;
  }
  const std::function<QuorkitStatus()> never[] = {
      [&] { return quorkitAreas(n, v, m, t, field.data()); },
      [&] { return quorkitFlow(n, v, m, t, v, tags.data(), 4, field.data()); },
      [&] { return quorkitGradients(n, v, m, t, v, fields.data()); },
      [&] {
        return quorkitColours(4, v, 0, 1, reinterpret_cast<std::uint8_t*>(outVertices.data()));
      }};
  for (const auto& call : never) {
    Allocations plan;
    plan.failing = 1;
    EXPECT_EQ(watched(plan, call), QUORKIT_DONE);
    EXPECT_EQ(allocations.count, 0);
  }
}

TEST_F(KitMemory, ALargeMeshIsBuiltInBlocksAndCancelledWithoutALeak) {
#if defined(__OPTIMIZE__)
  const long step = 1;
#else
  const long step = 17;
#endif
  const Mesh mesh = bumpyMesh(85, 85, 1);
  const std::vector<std::int32_t> tags = tagEnds(85, 85);
  const auto build = [&](QuorkitProgress progress, void* context) {
    QuorkitSolver* built = nullptr;
    const QuorkitStatus status =
        quorkitConstruct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         tags.data(), progress, context, &built);
    quorkitFreeSolver(built);
    return status;
  };
  EXPECT_GT(failEveryAllocation(step, [&] { return build(nullptr, nullptr); }), 30);
  for (int calls = 0;; ++calls) {
    int left = calls;
    const auto countDown = [](double, void* context) {
      return (*static_cast<int*>(context))-- <= 0 ? 1 : 0;
    };
    const QuorkitStatus status = watched({}, [&] { return build(countDown, &left); });
    if (status != QUORKIT_CANCELLED) {
      EXPECT_EQ(status, QUORKIT_DONE);
      break;
    }
    EXPECT_EQ(left, -1);
  }
}

TEST_F(KitMemory, SizesThatDoNotFitAreRefusedBeforeAnythingIsRead) {
  const auto* const coordinates = reinterpret_cast<const double*>(8);
  const auto* const indices = reinterpret_cast<const std::int32_t*>(8);
  QuorkitSolver* solver = nullptr;
  Allocations plan;
  plan.largestAllowed = std::size_t{1} << 20U;
  for (const auto& [n, m] : {std::pair{1431655766, 1}, {3, 238609295}}) {
    EXPECT_EQ(watched(plan,
                      [&, n = n, m = m] {
                        return quorkitConstruct(n, coordinates, m, indices, indices, nullptr,
                                                nullptr, &solver);
                      }),
              QUORKIT_TOO_LARGE);
  }
  const Mesh mesh = bumpyMesh(6, 6, 1);
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(watched(plan,
                    [&] {
                      return quorkitRefine(mesh.n(), mesh.vertices.data(), mesh.m(),
                                           mesh.triangles.data(), 1e-5, &made);
                    }),
            QUORKIT_TOO_LARGE);
}

}  // namespace
