// quorkitCheck and quorkitClean: what is wrong with a mesh, and what is left of it.

#include "support/cotangent_stiffness.h"
#include "support/kit.h"

#include <algorithm>
#include <map>
#include <set>

using namespace test;

namespace {

QuorkitReport check(const Mesh& mesh, const std::vector<std::int32_t>& tags = {}) {
  QuorkitReport report{};
  EXPECT_EQ(quorkitCheck(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         tags.empty() ? nullptr : tags.data(), &report),
            QUORKIT_DONE);
  return report;
}

using Findings = std::map<std::string, std::pair<int, int>>;

/// Those that were found, each with its number and the first one.
Findings found(const QuorkitReport& report) {
  Findings all;
  for (const auto& [name, finding] : {std::pair{"range", report.cornersOutOfRange},
                                      {"repeated", report.repeatedCorners},
                                      {"finite", report.notFinite},
                                      {"flat", report.flatTriangles},
                                      {"needle", report.needles},
                                      {"unused", report.unusedVertices},
                                      {"prescribed", report.prescribedVertices},
                                      {"piece", report.pieces},
                                      {"unprescribed", report.unprescribedPieces},
                                      {"negative", report.negativeWeights},
                                      {"obtuse", report.obtuseBorders},
                                      {"isolated", report.isolatedPrescribed},
                                      {"touching", report.touchingRegions}}) {
    EXPECT_EQ(finding.count == 0, finding.first == -1) << name;
    if (finding.count != 0) {
      all[name] = {finding.count, finding.first};
    }
  }
  return all;
}

TEST(KitCheck, CountsEachFaultAndNamesTheFirst) {
  const std::vector<double> square{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
  struct Case {
    const char* what;
    Mesh mesh;
    std::vector<std::int32_t> tags;
    Findings expected;
  };
  const double flat = 0.9e-6;
  const double thin = 0.9e-3;
  std::vector<double> nan = square;
  nan[7] = kNaN;
  std::vector<double> infinite = square;
  infinite[0] = -kInfinity;
  const Case cases[] = {
      {"nothing", {}, {}, {}},
      {"a sound square", {square, {0, 1, 2, 0, 2, 3}}, {}, {{"piece", {1, 0}}}},
      {"one prescribed",
       {square, {0, 1, 2, 0, 2, 3}},
       {0, 4, 3, -1},
       {{"isolated", {1, 2}}, {"piece", {1, 0}}, {"prescribed", {1, 2}}}},
      {"none prescribed",
       {square, {0, 1, 2, 0, 2, 3}},
       {0, 0, 4, 0},
       {{"piece", {1, 0}}, {"unprescribed", {1, 0}}}},
      {"below and above, twice in one triangle",
       {square, {0, 1, 2, 0, -1, 3, 4, 4, 0}},
       {},
       {{"piece", {1, 0}}, {"range", {2, 1}}}},
      {"repeated, in each of three places",
       {square, {1, 1, 2, 0, 1, 0, 3, 2, 2}},
       {},
       {{"repeated", {3, 0}}}},
      {"not a number", {nan, {0, 1, 2, 0, 1, 3}}, {}, {{"piece", {1, 0}}, {"finite", {1, 2}}}},
      {"infinite",
       {infinite, {0, 1, 2}},
       {},
       {{"piece", {1, 0}}, {"finite", {1, 0}}, {"unused", {1, 3}}}},
      {"flat",
       {{0, 0, 0, 1, 0, 0, 0.4, flat, 0}, {2, 0, 1}},
       {},
       {{"piece", {1, 0}}, {"flat", {1, 0}}}},
      {"a needle",
       {{0, 0, 0, 1, 0, 0, 0.4, thin, 0}, {2, 0, 1}},
       {},
       {{"piece", {1, 0}}, {"needle", {1, 0}}, {"obtuse", {1, 0}}}},
      {"flat, and as small as it gets",
       {{0, 0, 0, 1e-160, 0, 0, 0.5e-160, 1e-167, 0}, {0, 1, 2}},
       {},
       {{"piece", {1, 0}}, {"flat", {1, 0}}}},
      {"sound, and as large as it gets",
       {{-1e308, 0, 0, 1e308, 0, 0, 0, 1e308, 0}, {0, 1, 2}},
       {},
       {{"piece", {1, 0}}}},
      {"three points in one",
       {{5, 5, 5, 5, 5, 5, 5, 5, 5}, {0, 1, 2}},
       {},
       {{"piece", {1, 0}}, {"flat", {1, 0}}}},
      {"two pieces, the second prescribed, and a vertex of none",
       {{9, 9, 9, 0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0}, {3, 2, 1, 4, 5, 6}},
       {1, 0, 0, 0, 0, 2, 0},
       {{"isolated", {2, 0}},
        {"piece", {2, 1}},
        {"prescribed", {2, 0}},
        {"unprescribed", {1, 1}},
        {"unused", {1, 0}}}},
      {"a vertex of no triangle is no piece, prescribed or not",
       {{9, 9, 9, 0, 0, 0, 1, 0, 0, 0, 1, 0}, {3, 2, 1}},
       {0, 0, 0, 2},
       {{"isolated", {1, 3}}, {"piece", {1, 1}}, {"prescribed", {1, 3}}, {"unused", {1, 0}}}},
      {"joined at a vertex",
       {{0, 0, 0, 1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1, 0}, {0, 1, 2, 0, 3, 4}},
       {0, 0, 0, 0, 1},
       {{"isolated", {1, 4}}, {"piece", {1, 0}}, {"prescribed", {1, 4}}}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(found(check(c.mesh, c.tags)), c.expected) << c.what;
  }
}

TEST(KitCheck, CountsNegativeWeightsInsideAndAtTheBorder) {
  // Cotangents opposite the edge 0 1: -3/4 at 2 and at 3, 77/36 at 4, 5/12 at 5.
  const std::vector<double> fan{0, 0, 0, 4, 0, 0, 2, 1, 0, 2, -1, 0, 2, 0, 9, 2, 0, 3};
  const auto negative = [&](const std::vector<std::int32_t>& triangles) {
    const QuorkitReport report = check({fan, triangles});
    return std::array<std::int32_t, 4>{report.negativeWeights.count, report.negativeWeights.first,
                                       report.obtuseBorders.count, report.obtuseBorders.first};
  };
  using Counts = std::array<std::int32_t, 4>;
  EXPECT_EQ(negative({4, 2, 0, 0, 1, 2}), (Counts{0, -1, 1, 1}));
  EXPECT_EQ(negative({4, 2, 0, 1, 0, 3, 0, 1, 2}), (Counts{1, 1, 0, -1}));
  EXPECT_EQ(negative({0, 1, 2, 1, 0, 4}), (Counts{0, -1, 0, -1}));
  EXPECT_EQ(negative({1, 0, 3, 0, 1, 2, 0, 1, 4}), (Counts{0, -1, 0, -1}));
  EXPECT_EQ(negative({1, 0, 3, 0, 1, 2, 0, 1, 5}), (Counts{1, 0, 0, -1}));
  // Right angles on both sides of a diagonal: rounding decides about the sign.
  const Mesh tilted = gridMesh(40, 40, [](double u, double v) {
    return std::array<double, 3>{0.6 * u - 0.8 * v + 3, 0.8 * u + 0.6 * v, 0.1};
  });
  EXPECT_EQ(found(check(tilted)), (Findings{{"piece", {1, 0}}}));
}

TEST(KitCheck, CountsTheNegativeEntriesOfTheMatrix) {
  // Dense algebra on a mesh with triangles of every shape, two of them refused.
  Mesh mesh = tangledMesh(60, 300, 9);
  Eigen::MatrixXi triangles = Eigen::MatrixXi::Zero(mesh.n(), mesh.n());
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    const std::int32_t a = mesh.triangles[k];
    const std::int32_t b = mesh.triangles[k % 3 == 2 ? k - 2 : k + 1];
    ++triangles(a, b);
    ++triangles(b, a);
  }
  const Eigen::MatrixXd K = denseStiffness(mesh);
  int inside = 0;
  int atBorder = 0;
  for (Eigen::Index a = 0; a < K.rows(); ++a) {
    for (Eigen::Index b = 0; b < a; ++b) {
      inside += K(a, b) > 1e-9 && triangles(a, b) > 1 ? 1 : 0;
      atBorder += K(a, b) > 1e-9 && triangles(a, b) == 1 ? 1 : 0;
    }
  }
  mesh.triangles.insert(mesh.triangles.end(), {0, 0, 1, 5, -1, 7});
  const QuorkitReport report = check(mesh);
  EXPECT_GT(inside, 10);
  EXPECT_GT(atBorder, 10);
  EXPECT_EQ(report.negativeWeights.count, inside);
  EXPECT_EQ(report.obtuseBorders.count, atBorder);
}

TEST(KitCheck, TellsRegionsThatTouchFromThoseApart) {
  // Four columns of vertices: a region, a free one, then two regions side by side.
  const Mesh mesh = gridMesh(4, 3);
  const std::vector<std::int32_t> regions{7, -1, 0, 3, 7, -1, 0, 3, 7, -1, 0, 3};
  const auto look = [&](const std::vector<std::int32_t>& numbers, const double* values) {
    QuorkitReport report{};
    EXPECT_EQ(quorkitCheckRegions(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                  numbers.data(), values, &report),
              QUORKIT_DONE);
    return found(report);
  };
  const Findings apart{{"piece", {1, 0}}, {"prescribed", {9, 0}}};
  Findings touching = apart;
  touching["touching"] = {6, 2};
  EXPECT_EQ(look(regions, nullptr), touching);
  std::vector<double> values{1, kNaN, 2, 5, 1, kNaN, 2, 5, 1, kNaN, 2, 5};
  EXPECT_EQ(look(regions, values.data()), touching);
  for (double& value : values) {
    value = 2;
  }
  EXPECT_EQ(look(regions, values.data()), apart) << "they have one value";
  for (double& value : values) {
    value = kNaN;
  }
  EXPECT_EQ(look(regions, values.data()), touching);

  // Vertex 5 alone among free ones; vertex 11 alone, beside another region.
  std::vector<std::int32_t> alone(12, -1);
  alone[5] = alone[11] = 1;
  EXPECT_EQ(look(alone, nullptr),
            (Findings{{"isolated", {2, 5}}, {"piece", {1, 0}}, {"prescribed", {2, 5}}}));
  alone[10] = 2;
  EXPECT_EQ(
      look(alone, nullptr),
      (Findings{
          {"isolated", {3, 5}}, {"piece", {1, 0}}, {"prescribed", {3, 5}}, {"touching", {3, 5}}}));
  EXPECT_EQ(look(std::vector<std::int32_t>(12, -1), nullptr),
            (Findings{{"piece", {1, 0}}, {"unprescribed", {1, 0}}}));
  QuorkitReport report{};
  EXPECT_EQ(quorkitCheckRegions(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                nullptr, nullptr, &report),
            QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitCheckRegions(0, nullptr, 0, nullptr, nullptr, nullptr, &report), QUORKIT_DONE);
}

TEST(KitCheck, MeasuresWhatIsSound) {
  const Mesh mesh{{0, 0, 0, 3, 0, 0, 0, 4, 0, 50, 0, 0, kInfinity, 0, 0}, {0, 1, 2, 0, 1, 4}};
  const QuorkitReport report = check(mesh);
  EXPECT_EQ(report.longestEdge, 5);
  EXPECT_EQ(report.area, 6);
  EXPECT_EQ(report.diagonal, 5);
  EXPECT_EQ(check({}).diagonal, 0);
}

TEST(KitCheck, MeasuresWhereSquaresOverflowOrUnderflow) {
  // The right triangle with sides 3, 4 and 5 in units whose squares have no place in a double, or
  // none to full precision; then one whose coordinates differ by more than the largest double.
  for (const double unit : {1e-320, 1e-200, 1e-170, 1e-155, 1e-85, 1e-81, 1e80, 1e152, 1e300}) {
    const Mesh mesh{{0, 0, 0, 3 * unit, 0, 0, 0, 4 * unit, 0}, {0, 1, 2}};
    const QuorkitReport report = check(mesh);
    const double precision = unit < 1e-300 ? 1e-3 : 1e-12;  // of few digits
    EXPECT_NEAR(report.longestEdge / (5 * unit), 1, precision) << unit;
    EXPECT_NEAR(report.diagonal / (5 * unit), 1, precision) << unit;
    const double area = 6 * unit * unit;  // 0 or infinite where it has no place in a double
    EXPECT_TRUE(report.area == area || std::abs(report.area / area - 1) < 1e-2) << unit;
    std::vector<double> areas(3);
    ASSERT_EQ(quorkitAreas(3, mesh.vertices.data(), 1, mesh.triangles.data(), areas.data()),
              QUORKIT_DONE);
    EXPECT_TRUE(areas[0] == area / 3 || std::abs(areas[0] / (area / 3) - 1) < 1e-2) << unit;
  }
  const double most = std::numeric_limits<double>::max();
  const QuorkitReport report = check({{-most, 0, 0, most, 0, 0, 0, most, 0}, {0, 1, 2}});
  EXPECT_EQ(report.longestEdge, kInfinity);
  EXPECT_EQ(report.area, kInfinity);
}

TEST(KitCheck, SaysWhatIsABadArgument) {
  const double v[9] = {};
  const std::int32_t t[3] = {0, 1, 2};
  QuorkitReport report{};
  report.area = 77;
  EXPECT_EQ(quorkitCheck(3, v, 1, t, nullptr, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitCheck(-1, v, 1, t, nullptr, &report), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitCheck(3, v, -1, t, nullptr, &report), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitCheck(3, nullptr, 1, t, nullptr, &report), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitCheck(3, v, 1, nullptr, nullptr, &report), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(report.area, 77);
  EXPECT_EQ(quorkitCheck(0, nullptr, 0, nullptr, nullptr, &report), QUORKIT_DONE);
}

/// The edges of one triangle only.
std::set<std::pair<int, int>> borderOf(const Mesh& mesh) {
  std::map<std::pair<int, int>, int> edges;
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    const std::size_t next = k % 3 == 2 ? k - 2 : k + 1;
    ++edges[std::minmax(mesh.triangles[k], mesh.triangles[next])];
  }
  std::set<std::pair<int, int>> border;
  for (const auto& [edge, count] : edges) {
    if (count % 2 == 1) {
      border.insert(edge);
    }
  }
  return border;
}

double areaOf(const Mesh& mesh) {
  double area = 0;
  for (std::size_t t = 0; t < std::size_t(mesh.m()); ++t) {
    const auto v = doubleAreaVector(mesh, t);
    area += std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) / 2;
  }
  return area;
}

/// A square whose lower half is one triangle and whose upper half has a vertex on the diagonal: a
/// flat triangle closes the crack between them.
const Mesh kCrack{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0.5, 0.5, 0},
                  {0, 1, 2, 0, 2, 4, 0, 4, 3, 4, 2, 3}};

/// A fan of strips between two sides, all their vertices on one line: n flat triangles, each on the
/// long side of the next.
Mesh flatFan(int n) {
  Mesh mesh{{0, -1, 0, 0, 1, 0}, {}};
  for (int i = 0; i <= n + 1; ++i) {
    mesh.vertices.insert(mesh.vertices.end(), {double(i), 0, 0});
  }
  const int first = 2;
  for (int i = 0; i <= n; ++i) {
    mesh.triangles.insert(mesh.triangles.end(), {first + i, first + i + 1, 1});
  }
  for (int i = 1; i <= n; ++i) {
    mesh.triangles.insert(mesh.triangles.end(), {first, first + i + 1, first + i});
  }
  mesh.triangles.insert(mesh.triangles.end(), {0, first + n + 1, first});
  return mesh;
}

TEST(KitClean, LeavesNoCrackWhereFlatTrianglesWere) {
  for (const auto& [what, mesh] : {std::pair{"one", kCrack},
                                   {"seven in a row", flatFan(7)},
                                   {"many in a row", flatFan(200)}}) {
    const KitMesh cleaned = clean(mesh);
    const Mesh result = plain(cleaned);
    Findings left = found(check(result));
    left.erase("needle");
    left.erase("obtuse");
    EXPECT_EQ(left, (Findings{{"piece", {1, 0}}})) << what;
    EXPECT_EQ(result.n(), mesh.n()) << what;
    EXPECT_EQ(borderOf(result), borderOf(mesh)) << what;
    EXPECT_NEAR(areaOf(result), areaOf(mesh), 1e-9 * areaOf(mesh)) << what;
    for (std::int32_t t = 0; t < result.m(); ++t) {
      const auto part = doubleAreaVector(result, std::size_t(t));
      const auto whole = doubleAreaVector(mesh, std::size_t(cleaned->triangleOrigins[t]));
      EXPECT_GT(part[2] * whole[2], 0) << what << ": a part is turned over, or of a flat triangle";
    }
  }
  EXPECT_EQ(clean(kCrack)->triangleCount, 4);
  EXPECT_EQ(clean(flatFan(7))->triangleCount, 16);
}

TEST(KitClean, MakesOneVertexOfTwoAtOnePlace) {
  // A square of which one corner is there twice, a flat triangle between them.
  const Mesh mesh{{0, 0, 0, 1, 0, 0, 1, 1, 0, 1, 1, 1e-9, 0, 1, 0}, {0, 1, 2, 0, 2, 3, 0, 3, 4}};
  const KitMesh cleaned = clean(mesh);
  EXPECT_EQ(plain(cleaned).triangles, (std::vector<std::int32_t>{0, 1, 2, 0, 2, 3}));
  const std::vector<std::int32_t> map(cleaned->vertexMap, cleaned->vertexMap + 5);
  EXPECT_EQ(map, (std::vector<std::int32_t>{0, 1, 2, 2, 3}));
  EXPECT_EQ(cleaned->triangleOrigins[1], 2);
}

TEST(KitClean, DropsWhatIsNoTriangleAndWhatNothingUses) {
  const Mesh mesh{{7, 7, 7, 0, 0, 0, kNaN, 0, 0, 1, 0, 0, 0, 1, 0, 5, 5, 5},
                  {1, 1, 3, 1, 3, 4, 5, 4, 5}};
  const KitMesh cleaned = clean(mesh);
  EXPECT_EQ(plain(cleaned).triangles, (std::vector<std::int32_t>{0, 1, 2}));
  const std::vector<std::int32_t> map(cleaned->vertexMap, cleaned->vertexMap + 6);
  EXPECT_EQ(map, (std::vector<std::int32_t>{-1, 0, -1, 1, 2, -1}));
  const std::vector<std::int32_t> origins(cleaned->vertexOrigins, cleaned->vertexOrigins + 6);
  EXPECT_EQ(origins, (std::vector<std::int32_t>{1, 1, 3, 3, 4, 4}));
  EXPECT_EQ(cleaned->triangleOrigins[0], 1);
  EXPECT_EQ(cleaned->vertexMapCount, 6);
  EXPECT_EQ(cleaned->longestEdge, 0);
}

TEST(KitClean, LeavesASoundMeshAsItIs) {
  for (const Mesh& mesh : {bumpyMesh(20, 30, 7), tangledMesh(20, 100, 3), Mesh{}}) {
    const KitMesh cleaned = clean(mesh);
    EXPECT_TRUE(sameMesh(plain(cleaned), mesh));
    for (std::int32_t v = 0; v < mesh.n(); ++v) {
      EXPECT_EQ(cleaned->vertexMap[v], v);
    }
  }
}

TEST(KitClean, EndsWhateverItIsGiven) {
  // Points on a line, on few places, and in one: everything is flat, in every way.
  std::mt19937 random(5);
  for (const int places : {1, 2, 3, 5, 40}) {
    Mesh mesh = tangledMesh(40, 300, unsigned(places));
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
      mesh.vertices[i] = i % 3 == 0 ? double(random() % unsigned(places)) : 0;
    }
    const KitMesh cleaned = clean(mesh);
    EXPECT_EQ(cleaned->triangleCount, 0) << places;
    EXPECT_EQ(cleaned->vertexCount, 0);
  }
}

TEST(KitClean, SaysWhatIsABadArgument) {
  for (const std::int32_t corner : {-1, 5}) {
    Mesh mesh = kCrack;
    mesh.triangles[4] = corner;
    EXPECT_EQ(clean(mesh, QUORKIT_BAD_ARGUMENT), nullptr);
  }
  Mesh mesh = kCrack;
  mesh.vertices[4] = kInfinity;
  EXPECT_EQ(clean(mesh, QUORKIT_BAD_ARGUMENT), nullptr);
  EXPECT_EQ(quorkitClean(0, nullptr, 0, nullptr, nullptr), QUORKIT_BAD_ARGUMENT);
}

}  // namespace
