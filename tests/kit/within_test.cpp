// quorkitSolveWithin, quorkitFlip and quorkitFaces.

#include "support/kit.h"
#include "support/solution.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

using namespace test;

namespace {

QuorkitProblem problemOf(const Mesh& mesh, double tolerance) {
  QuorkitProblem problem{};
  problem.n = mesh.n();
  problem.vertices = mesh.vertices.data();
  problem.m = mesh.m();
  problem.triangles = mesh.triangles.data();
  problem.tolerance = tolerance;
  return problem;
}

Solution solved(const QuorkitProblem& problem, QuorkitStatus expected = QUORKIT_DONE) {
  const QuorkitSolution* made = nullptr;
  EXPECT_EQ(quorkitSolveWithin(&problem, nullptr, nullptr, &made), expected);
  EXPECT_EQ(made != nullptr, expected == QUORKIT_DONE);
  return Solution(made);
}

/// The square 0 .. 1 in two triangles.
const Mesh kSquare{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3}};

TEST(KitWithin, IsExactWhereTheFieldIsLinear) {
  const std::vector<std::int32_t> edges{0, 3, 1, 2};
  const std::vector<double> values{20, 100};
  QuorkitProblem problem = problemOf(kSquare, 1e-9);
  problem.edgeCount = 2;
  problem.edges = edges.data();
  problem.edgeValues = values.data();
  const Solution s = solved(problem);
  EXPECT_LT(trueError(*s, [](const Point& p) { return 20 + 80 * p[0]; }), 1e-10);
  EXPECT_EQ(s->isReached, 1);
  EXPECT_EQ(s->jumpCount, 0);
  for (std::int32_t v = 0; v < kSquare.n(); ++v) {
    EXPECT_EQ(s->vertexOrigins[2 * v], v);
    for (int axis = 0; axis < 3; ++axis) {
      EXPECT_EQ(s->vertices[3 * v + axis], kSquare.vertices[std::size_t(3 * v + axis)]);
    }
  }
}

TEST(KitWithin, FollowsASourceOfADensity) {
  // u'' = f on a strip between two edges with value 0: the field is f x (x - 1) / 2.
  const std::vector<std::int32_t> edges{0, 3, 1, 2};
  const std::vector<double> values{0, 0};
  const std::vector<double> density{8, 8};
  QuorkitProblem problem = problemOf(kSquare, 1e-3);
  problem.edgeCount = 2;
  problem.edges = edges.data();
  problem.edgeValues = values.data();
  problem.sources = density.data();
  const Solution s = solved(problem);
  EXPECT_LT(trueError(*s, [](const Point& p) { return 4 * p[0] * (p[0] - 1); }), s->error);
  EXPECT_NEAR(*std::min_element(s->field, s->field + s->vertexCount), -1, 1e-3);
}

TEST(KitWithin, BindsRegionsToTheInputMesh) {
  // A prescribed triangle keeps its value in all its parts, and no other vertex gets one: not even
  // a midpoint between two prescribed vertices whose edge is free.
  Mesh mesh = gridMesh(5, 5);
  std::vector<double> values(std::size_t(mesh.m()), kNaN);
  values[0] = 7;
  values.back() = -7;
  QuorkitProblem problem = problemOf(mesh, 0.05);
  problem.triangleValues = values.data();
  const Solution s = solved(problem);
  ASSERT_EQ(s->outcome, QUORKIT_SOLVED);
  for (std::int32_t k = 0; k < 3 * s->triangleCount; ++k) {
    const double value = values[std::size_t(s->triangleOrigins[k / 3])];
    if (!std::isnan(value)) {
      EXPECT_EQ(s->field[s->triangles[k]], value);
    }
  }
  const auto isInside = [&](const double* p) {  // of triangle 0: below the diagonal of a cell
    return p[0] <= 0.25 && p[1] <= p[0];
  };
  for (std::int32_t v = 0; v < s->vertexCount; ++v) {
    EXPECT_EQ(s->field[v] == 7, isInside(s->vertices + 3 * v)) << v;
  }
  EXPECT_LE(*std::max_element(s->field, s->field + s->vertexCount), 7);
}

TEST(KitWithin, RefusesWhatHasNoSolution) {
  std::vector<double> values(4, kNaN);
  values[1] = 3;
  QuorkitProblem problem = problemOf(kSquare, 0.1);
  problem.vertexValues = values.data();
  const Solution point = solved(problem);
  EXPECT_EQ(point->outcome, QUORKIT_ISOLATED_VERTEX);
  EXPECT_EQ(point->vertex, 1);
  EXPECT_EQ(point->vertexCount, 0);

  Mesh two = kSquare;  // a second square that nothing is prescribed on
  for (std::size_t i = 0; i < 12; ++i) {
    two.vertices.push_back(kSquare.vertices[i] + (i % 3 == 2 ? 1 : 0));
  }
  two.triangles.insert(two.triangles.end(), {4, 5, 6, 4, 6, 7});
  std::vector<double> triangleValues(4, kNaN);
  triangleValues[0] = 1;
  problem = problemOf(two, 0.1);
  problem.triangleValues = triangleValues.data();
  const Solution component = solved(problem);
  EXPECT_EQ(component->outcome, QUORKIT_UNPRESCRIBED);
  EXPECT_EQ(component->vertex, 4);
}

TEST(KitWithin, ExcludesOnlyTheSurroundingsOfJumps) {
  const std::vector<std::int32_t> edges{0, 1, 1, 2};  // meet at vertex 1
  const std::vector<double> values{0, 1};
  QuorkitProblem problem = problemOf(kSquare, 0.01);
  problem.edgeCount = 2;
  problem.edges = edges.data();
  problem.edgeValues = values.data();
  const Solution s = solved(problem);
  ASSERT_EQ(s->jumpCount, 1);
  EXPECT_EQ(s->jumps[0], 1);
  EXPECT_EQ(s->field[1], 0.5) << "not the middle of the values that meet";
  EXPECT_NEAR(s->jumpRadius, 0.01 * std::sqrt(2.0), 1e-12);
  EXPECT_EQ(s->isReached, 1);
  // By symmetry one half on the diagonal through the jump.
  for (std::int32_t v = 0; v < s->vertexCount; ++v) {
    const double* const p = s->vertices + 3 * v;
    if (p[0] + p[1] == 1 && std::hypot(p[0] - 1, p[1]) > s->jumpRadius) {
      EXPECT_NEAR(s->field[v], 0.5, s->error);
    }
  }
}

TEST(KitWithin, StopsAtTheLimitAndSaysSo) {
  const Mesh mesh = ring(24, 1, 50);
  std::vector<double> values(std::size_t(mesh.m()), kNaN);
  values[0] = 1;
  values[25] = 0;
  QuorkitProblem problem = problemOf(mesh, 1e-6);
  problem.triangleValues = values.data();
  problem.triangleLimit = 20000;
  const Solution s = solved(problem);
  EXPECT_EQ(s->isReached, 0);
  EXPECT_GT(s->error, 1e-6);
  EXPECT_LE(s->triangleCount, 20000);
  EXPECT_GT(s->vertexCount, 0);
  problem.triangleLimit = mesh.m() + 1;  // less than the estimate needs
  const Solution least = solved(problem);
  EXPECT_EQ(least->isReached, 0);
  EXPECT_EQ(least->triangleCount, 4 * mesh.m());
}

TEST(KitWithin, MeasuresAShareOfTheSpan) {
  const std::vector<std::int32_t> edges{0, 1, 1, 2};
  const std::vector<double> values{200, 300};
  QuorkitProblem problem = problemOf(kSquare, 0.02);
  problem.edgeCount = 2;
  problem.edges = edges.data();
  problem.edgeValues = values.data();
  problem.isShareOfSpan = 1;
  const Solution s = solved(problem);
  EXPECT_NEAR(s->tolerance, 2, 1e-9);
  EXPECT_LE(s->error, 2);
  const std::vector<double> same{5, 5};  // a constant field has no span
  problem.edgeValues = same.data();
  const Solution constant = solved(problem);
  EXPECT_EQ(constant->isReached, 1);
  EXPECT_LT(constant->error, 1e-10);
}

TEST(KitWithin, CancelsAndReportsProgressThatNeverFalls) {
  const std::vector<std::int32_t> edges{0, 1, 1, 2};
  const std::vector<double> values{0, 1};
  QuorkitProblem problem = problemOf(kSquare, 1e-3);
  problem.edgeCount = 2;
  problem.edges = edges.data();
  problem.edgeValues = values.data();
  struct Watch {
    double last = 0;
    int calls = 0;
    int stopAt = -1;
  } watch;
  const auto progress = [](double fraction, void* context) {
    Watch& w = *static_cast<Watch*>(context);
    EXPECT_GE(fraction, w.last);
    w.last = fraction;
    return std::int32_t(++w.calls == w.stopAt);
  };
  const QuorkitSolution* made = nullptr;
  ASSERT_EQ(quorkitSolveWithin(&problem, progress, &watch, &made), QUORKIT_DONE);
  const Solution done(made);
  EXPECT_EQ(watch.last, 1);
  Watch again;
  again.stopAt = 2;  // the first call comes before the work, the last one after it
  made = nullptr;
  EXPECT_EQ(quorkitSolveWithin(&problem, progress, &again, &made), QUORKIT_CANCELLED);
  EXPECT_EQ(made, nullptr);
}

TEST(KitWithin, SaysWhatIsABadArgument) {
  const std::vector<std::int32_t> edges{0, 3, 1, 2};
  const std::vector<double> values{0, 1};
  QuorkitProblem good = problemOf(kSquare, 0.1);
  good.edgeCount = 2;
  good.edges = edges.data();
  good.edgeValues = values.data();
  solved(good);
  const auto refuses = [&](const char* what, const std::function<void(QuorkitProblem&)>& spoil) {
    SCOPED_TRACE(what);
    QuorkitProblem bad = good;
    spoil(bad);
    solved(bad, QUORKIT_BAD_ARGUMENT);
  };
  for (const double tolerance : {0.0, -1.0, kNaN, kInfinity}) {
    refuses("tolerance", [=](QuorkitProblem& p) { p.tolerance = tolerance; });
  }
  refuses("no vertex", [](QuorkitProblem& p) { p.n = 0; });
  refuses("vertices", [](QuorkitProblem& p) { p.vertices = nullptr; });
  refuses("limit", [](QuorkitProblem& p) { p.triangleLimit = -1; });
  refuses("no edges", [](QuorkitProblem& p) { p.edges = nullptr; });
  const std::vector<std::int32_t> noEdge{0, 3, 1, 3};
  refuses("no edge of the mesh", [&](QuorkitProblem& p) { p.edges = noEdge.data(); });
  const std::vector<double> infinite{0, kInfinity};
  refuses("value", [&](QuorkitProblem& p) { p.edgeValues = infinite.data(); });
  refuses("source", [&](QuorkitProblem& p) { p.sources = infinite.data(); });
  Mesh flat = kSquare;
  flat.vertices[4] = flat.vertices[7] = flat.vertices[10] = 0;
  refuses("degenerate", [&](QuorkitProblem& p) { p.vertices = flat.vertices.data(); });
  EXPECT_EQ(quorkitSolveWithin(nullptr, nullptr, nullptr, nullptr), QUORKIT_BAD_ARGUMENT);
  quorkitFreeSolution(nullptr);
}

KitMesh flipped(const Mesh& mesh, const std::int32_t* faces = nullptr) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(
      quorkitFlip(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), faces, &made),
      QUORKIT_DONE);
  return KitMesh(made);
}

/// The sum of the cotangents opposite to each edge of two triangles, the smallest one.
double leastWeight(const Mesh& mesh) {
  std::map<std::pair<int, int>, std::pair<int, double>> edges;
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    const auto at = [&](std::size_t e) { return pointOf(mesh, mesh.triangles[k / 3 * 3 + e % 3]); };
    const auto p = at(k % 3 + 2);
    const auto q = at(k % 3);
    const auto r = at(k % 3 + 1);
    double dot = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      dot += (q[axis] - p[axis]) * (r[axis] - p[axis]);
    }
    const auto area = doubleAreaVector(mesh, k / 3);
    auto& [count, sum] =
        edges[std::minmax(mesh.triangles[k], mesh.triangles[k / 3 * 3 + (k + 1) % 3])];
    ++count;
    sum += dot / std::hypot(area[0], area[1], area[2]);
  }
  double least = kInfinity;
  for (const auto& [edge, use] : edges) {
    least = use.first == 2 ? std::min(least, use.second) : least;
  }
  return least;
}

TEST(KitFlip, MakesAFlatFaceDelaunayAndMovesNothing) {
  Mesh mesh;  // a convex fan of needles
  mesh.vertices = {0, 0, 0};
  for (int i = 0; i <= 40; ++i) {
    mesh.vertices.insert(mesh.vertices.end(), {std::cos(0.03 * i) + 1, 3 * std::sin(0.03 * i),
                                               0.25 * std::cos(0.03 * i) + 0.25});
  }
  for (int i = 1; i <= 40; ++i) {
    mesh.triangles.insert(mesh.triangles.end(), {0, i, i + 1});
  }
  ASSERT_LT(leastWeight(mesh), -0.01);
  const KitMesh result = flipped(mesh);
  const Mesh after = plain(result);
  EXPECT_GT(leastWeight(after), -1e-6);
  EXPECT_TRUE(sameBits(after.vertices, mesh.vertices));
  std::array<double, 3> before{};
  std::array<double, 3> sum{};
  for (std::size_t t = 0; t < std::size_t(mesh.m()); ++t) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      before[axis] += doubleAreaVector(mesh, t)[axis];
      sum[axis] += doubleAreaVector(after, t)[axis];
    }
  }
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(sum[axis], before[axis], 1e-12);
  }
}

TEST(KitFlip, LeavesEdgesBetweenFacesAndFolds) {
  // Two triangles whose common edge is not Delaunay, flat and folded by more and less than allowed.
  for (const auto& [lift, flips] :
       {std::pair{0.0, true}, {1e-7, true}, {1e-5, false}, {1.0, false}}) {
    const Mesh mesh{{0, 0, 0, 10, 0, 0, 5, 1, 0, 5, -1, lift}, {0, 1, 2, 1, 0, 3}};
    EXPECT_EQ(!sameMesh(plain(flipped(mesh)), mesh), flips) << lift;
    const std::int32_t faces[2] = {1, 2};
    EXPECT_TRUE(sameMesh(plain(flipped(mesh, faces)), mesh));
  }
}

TEST(KitFlip, MakesNoSecondEdgeBetweenTwoVertices) {
  // Both sides of a flat kite: the edge 0 1 of the one would become 2 3, the edge of the other.
  const Mesh mesh{{0, 0, 0, 10, 0, 0, 5, 1, 0, 5, -1, 0}, {0, 1, 2, 1, 0, 3, 0, 2, 3, 2, 1, 3}};
  EXPECT_TRUE(sameMesh(plain(flipped(mesh)), mesh));
}

TEST(KitFaces, FindsPlanesFirstAndChainsThatEndAtCorners) {
  // A box: six faces and twelve edges. With a round column between two of them: the column is one
  // face, although it goes on smoothly into both.
  const auto count = [](const Mesh& mesh) {
    const QuorkitFaces* found = nullptr;
    EXPECT_EQ(
        quorkitFaces(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), 30, &found),
        QUORKIT_DONE);
    const std::pair<int, int> counts{found->faceCount, found->chainCount};
    quorkitFreeFaces(found);
    return counts;
  };
  const Mesh box{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1},
                 {0, 2, 1, 0, 3, 2, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4,
                  1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7}};
  EXPECT_EQ(count(box), (std::pair{6, 12}));
  // A sheet that is flat, turns by a quarter in nine facets, and is flat again.
  Mesh sheet;
  std::vector<std::array<double, 2>> profile{{0, 0}};
  for (int i = 0; i <= 9; ++i) {
    const double angle = 3.14159265358979 / 18 * i;
    profile.push_back({10 + std::sin(angle), 1 - std::cos(angle)});
  }
  profile.push_back({11, 11});
  for (const auto& p : profile) {
    sheet.vertices.insert(sheet.vertices.end(), {p[0], 0, p[1], p[0], 8, p[1]});
  }
  for (int i = 0; i + 1 < int(profile.size()); ++i) {
    sheet.triangles.insert(sheet.triangles.end(),
                           {2 * i, 2 * i + 2, 2 * i + 3, 2 * i, 2 * i + 3, 2 * i + 1});
  }
  EXPECT_EQ(count(sheet).first, 3);
  const QuorkitFaces* found = nullptr;
  EXPECT_EQ(quorkitFaces(0, nullptr, 0, nullptr, 90, &found), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitFaces(0, nullptr, 0, nullptr, 0, &found), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitFaces(0, nullptr, 0, nullptr, 30, nullptr), QUORKIT_BAD_ARGUMENT);
  ASSERT_EQ(quorkitFaces(0, nullptr, 0, nullptr, 30, &found), QUORKIT_DONE);
  EXPECT_EQ(found->faceCount, 0);
  quorkitFreeFaces(found);
}

}  // namespace
