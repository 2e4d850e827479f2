// The guarded functions: the answers of the eleven, a status for everything else, progress.

#include "support/handle.h"
#include "support/kit.h"
#include "support/weld_oracle.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

using namespace test;

namespace {

TEST(KitSolver, GivesTheBitsOfTheEleven) {
  for (const int side : {5, 85}) {  // the larger one is factorized by blocks
    const Mesh soup = soupOf(bumpyMesh(side, side, 4));
    Welded weld{0, soup.vertices, soup.triangles, std::vector<std::int32_t>(std::size_t(soup.n()))};
    std::int32_t n = 0;
    std::int32_t m = 0;
    ASSERT_EQ(
        quorkitWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                    weld.vertices.data(), weld.triangles.data(), weld.map.data(), &n, &m, 1e-9),
        QUORKIT_DONE);
    weld.vertices.resize(3 * std::size_t(n));
    weld.triangles.resize(3 * std::size_t(m));
    EXPECT_TRUE(same(weld, welded(soup, 1e-9)));

    const Mesh mesh{weld.vertices, weld.triangles};
    std::vector<std::int32_t> tags(std::size_t(n), 0);
    tags.front() = 1;
    tags.back() = 3;
    const Handle handle = build(mesh, tags);
    const KitSolver solver = construct(mesh, tags);
    const std::vector<double> values(mesh.vertices.begin(), mesh.vertices.begin() + n);
    std::vector<double> field(values.size());
    ASSERT_EQ(quorkitSolve(solver.get(), values.data(), nullptr, field.data()), QUORKIT_DONE);
    EXPECT_TRUE(sameBits(field, solve(handle, values)));
    std::vector<double> expected(values.size());
    StatusCode status = 99;
    quorsolvePTagged(handle.get(), values.data(), field.data(), expected.data(), &status);
    std::vector<double> inPlace = field;  // the source is the output
    ASSERT_EQ(quorkitSolve(solver.get(), values.data(), inPlace.data(), inPlace.data()),
              QUORKIT_DONE);
    EXPECT_TRUE(sameBits(inPlace, expected));

    QuorkitSolverInfo info{};
    ASSERT_EQ(quorkitSolverInfo(solver.get(), &info), QUORKIT_DONE);
    const double* vertices = nullptr;
    quoverts(handle.get(), &vertices);
    EXPECT_EQ(info.vertexCount, n);
    EXPECT_EQ(info.triangleCount, m);
    EXPECT_EQ(info.prescribedCount, 2);
    EXPECT_EQ(info.factorization, 0U);
    EXPECT_EQ(std::memcmp(info.vertices, vertices, 24 * std::size_t(n)), 0);
    for (std::int32_t k = 0; k < n; ++k) {
      ASSERT_EQ(info.vertices[3 * std::size_t(k)], mesh.vertices[3 * std::size_t(info.order[k])]);
    }
    for (std::size_t k = 0; k < 3 * std::size_t(m); ++k) {
      ASSERT_EQ(info.order[info.triangles[k]], mesh.triangles[k]);
    }
  }
}

TEST(KitSolver, SolvesManyColumnsWithTheBitsOfEach) {
  for (const int side : {5, 85}) {
    const Mesh mesh = bumpyMesh(side, side, 4);
    const auto n = std::size_t(mesh.n());
    const KitSolver solver = construct(mesh, tagEnds(side, side));
    constexpr std::size_t kColumns = 11;
    std::vector<double> values;
    std::vector<double> sources;
    const double* const none = nullptr;
    for (std::size_t k = 0; k < kColumns * n; ++k) {
      values.push_back(mesh.vertices[k % (3 * n)] + double(k / n));
      sources.push_back(k % 3 == 0 ? 0 : mesh.vertices[(7 * k) % (3 * n)]);
    }
    for (const double* const source : {none, std::as_const(sources).data()}) {
      std::vector<double> expected(values.size());
      for (std::size_t k = 0; k < values.size(); k += n) {
        ASSERT_EQ(quorkitSolve(solver.get(), values.data() + k,
                               source != nullptr ? source + k : nullptr, expected.data() + k),
                  QUORKIT_DONE);
      }
      std::vector<double> fields = values;  // in place
      ASSERT_EQ(quorkitSolveMany(solver.get(), kColumns, fields.data(), source, fields.data()),
                QUORKIT_DONE);
      EXPECT_TRUE(sameBits(fields, expected));
    }
  }
}

TEST(KitSolver, SaysWhatIsABadArgument) {
  const Mesh mesh = gridMesh(3, 3);
  const std::vector<std::int32_t> tags = tagEnds(3, 3);
  QuorkitSolver* solver = nullptr;
  const auto build = [&](std::int32_t n, const double* v, std::int32_t m, const std::int32_t* t,
                         const std::int32_t* g) {
    solver = reinterpret_cast<QuorkitSolver*>(8);
    const QuorkitStatus status = quorkitConstruct(n, v, m, t, g, nullptr, nullptr, &solver);
    EXPECT_EQ(solver, nullptr);
    return status;
  };
  const double* const v = mesh.vertices.data();
  const std::int32_t* const t = mesh.triangles.data();
  EXPECT_EQ(build(0, v, 8, t, tags.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(build(9, v, 0, t, tags.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(build(9, nullptr, 8, t, tags.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(build(9, v, 8, nullptr, tags.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(build(9, v, 8, t, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(build(9, v, 6, t, tags.data()), QUORKIT_BAD_ARGUMENT) << "an unused vertex";
  for (const std::int32_t corner : {-1, 9, t[1]}) {
    std::vector<std::int32_t> bad = mesh.triangles;
    bad[0] = corner;
    EXPECT_EQ(build(9, v, 8, bad.data(), tags.data()), QUORKIT_BAD_ARGUMENT) << corner;
  }
  EXPECT_EQ(quorkitConstruct(9, v, 8, t, tags.data(), nullptr, nullptr, nullptr),
            QUORKIT_BAD_ARGUMENT);

  const KitSolver good = construct(mesh, tags);
  double field[9];
  QuorkitSolverInfo info{};
  EXPECT_EQ(quorkitSolve(nullptr, v, nullptr, field), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolve(good.get(), nullptr, nullptr, field), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolve(good.get(), v, nullptr, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolveMany(nullptr, 1, v, nullptr, field), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolveMany(good.get(), -1, v, nullptr, field), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolveMany(good.get(), 1, nullptr, nullptr, field), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolveMany(good.get(), 1, v, nullptr, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolveMany(good.get(), 0, nullptr, nullptr, nullptr), QUORKIT_DONE);
  EXPECT_EQ(quorkitSolverInfo(nullptr, &info), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitSolverInfo(good.get(), nullptr), QUORKIT_BAD_ARGUMENT);
  quorkitFreeSolver(nullptr);
}

TEST(KitWeld, SaysWhatIsABadArgument) {
  const double p[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  const std::int32_t good[3] = {0, 1, 2};
  double v[9];
  std::int32_t t[3];
  std::int32_t map[3];
  std::int32_t n = 55;
  std::int32_t m = 66;
  for (const std::int32_t corner : {-1, 3}) {
    const std::int32_t bad[3] = {0, corner, 2};
    EXPECT_EQ(quorkitWeld(3, p, 1, bad, v, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  }
  for (const double tolerance : {-1.0, kNaN}) {
    EXPECT_EQ(quorkitWeld(3, p, 1, good, v, t, map, &n, &m, tolerance), QUORKIT_BAD_ARGUMENT);
  }
  EXPECT_EQ(quorkitWeld(-1, p, 1, good, v, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, -1, good, v, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, nullptr, 1, good, v, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, nullptr, v, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, good, nullptr, t, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, good, v, nullptr, map, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, good, v, t, nullptr, &n, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, good, v, t, map, nullptr, &m, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWeld(3, p, 1, good, v, t, map, &n, nullptr, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(n + m, 121);
  EXPECT_EQ(quorkitWeld(0, nullptr, 0, nullptr, nullptr, nullptr, nullptr, &n, &m, 0),
            QUORKIT_DONE);
  EXPECT_EQ(n + m, 0);
}

TEST(KitSphere, IsThatOfTheEleven) {
  std::array<float, 3> a{};
  std::array<float, 3> b{};
  for (const std::int32_t value : {-1, 0, 77, 65534}) {
    EXPECT_EQ(quorkitEncodeToSphere(value, a.data(), &a[1], &a[2]), QUORKIT_DONE);
    encode_integer_to_sphere(value, b.data(), &b[1], &b[2]);
    EXPECT_EQ(a, b);
    EXPECT_EQ(quorkitDecodeFromSphere(-a[0], -a[1], -a[2]), value);
  }
  EXPECT_EQ(quorkitEncodeToSphere(65535, a.data(), &a[1], &a[2]), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitEncodeToSphere(-2, a.data(), &a[1], &a[2]), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitEncodeToSphere(1, nullptr, &a[1], &a[2]), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(a, b);
}

TEST(KitStatus, HasATextForEveryNumber) {
  for (QuorkitStatus status = QUORKIT_DONE; status <= QUORKIT_INTERNAL; ++status) {
    EXPECT_STRNE(quorkitStatusText(status), quorkitStatusText(-1)) << status;
  }
  EXPECT_STREQ(quorkitStatusText(QUORKIT_DONE), "done");
  EXPECT_STREQ(quorkitStatusText(99), quorkitStatusText(-1));
}

/// What a progress function was told.
struct Progress {
  std::vector<double> fractions;
  std::size_t cancelAt = std::size_t(-1);  ///< the call that cancels
  bool throws = false;

  static std::int32_t call(double fraction, void* context) {
    auto* const self = static_cast<Progress*>(context);
    self->fractions.push_back(fraction);
    if (self->throws) {
      throw std::runtime_error("from the host");
    }
    return self->fractions.size() > self->cancelAt ? 1 : 0;
  }
};

QuorkitStatus construct(const Mesh& mesh, const std::vector<std::int32_t>& tags, Progress& progress,
                        KitSolver& solver) {
  auto* made = reinterpret_cast<QuorkitSolver*>(8);
  const QuorkitStatus status =
      quorkitConstruct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                       &Progress::call, &progress, &made);
  solver.reset(made);
  return status;
}

TEST(KitProgress, GoesFromNothingToEverythingAndChangesNoBit) {
  for (const int side : {3, 60, 150}) {
    const Mesh mesh = bumpyMesh(side, side, 8);
    const std::vector<std::int32_t> tags = tagEnds(side, side);
    Progress progress;
    KitSolver solver;
    ASSERT_EQ(construct(mesh, tags, progress, solver), QUORKIT_DONE);
    EXPECT_EQ(progress.fractions.front(), 0);
    EXPECT_EQ(progress.fractions.back(), 1);
    EXPECT_TRUE(std::is_sorted(progress.fractions.begin(), progress.fractions.end()));
    std::vector<double> field(tags.size());
    ASSERT_EQ(quorkitSolve(solver.get(), mesh.vertices.data(), nullptr, field.data()),
              QUORKIT_DONE);
    const std::vector<double> values(mesh.vertices.begin(), mesh.vertices.begin() + mesh.n());
    EXPECT_TRUE(sameBits(field, solve(build(mesh, tags), values)));
    if (side == 150) {
      EXPECT_GE(progress.fractions.size(), 3U) << "nothing between the first and the last report";
    }
  }
}

TEST(KitProgress, CancelsWheneverItIsCalled) {
  const Mesh mesh = bumpyMesh(100, 100, 8);
  const std::vector<std::int32_t> tags = tagEnds(100, 100);
  for (const std::size_t at : {0, 1}) {  // before the work, and later
    Progress progress;
    progress.cancelAt = at;
    KitSolver solver;
    EXPECT_EQ(construct(mesh, tags, progress, solver), QUORKIT_CANCELLED) << at;
    EXPECT_EQ(solver, nullptr);
    EXPECT_EQ(progress.fractions.size(), at + 1);
  }
  Progress progress;
  progress.throws = true;
  KitSolver solver;
  EXPECT_EQ(construct(mesh, tags, progress, solver), QUORKIT_CANCELLED);
}

}  // namespace
