// QuorkitError: which argument, which entry, which file.

#include "support/kit.h"
#include "support/temp_directory.h"

#include <cerrno>
#include <cstring>
#include <functional>

using namespace test;
namespace fs = std::filesystem;

namespace {

const double kPoints[15] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 2, 2, 0};
const double kOneIsNan[12] = {0, 0, 0, 1, kNaN, 0, 0, 1, 0, 1, 1, 0};
const double kOneIsInfinite[4] = {0, 1, 2, kInfinity};
const std::int32_t kTriangles[6] = {0, 1, 2, 2, 1, 3};
const std::int32_t kSecondOutside[6] = {0, 1, 2, 2, 1, 5};
const std::int32_t kSecondRepeats[6] = {0, 1, 2, 2, 1, 2};
const std::int32_t kTags[5] = {1, 0, 0, 0, 0};

QuorkitError errorOf(const std::function<QuorkitStatus(QuorkitError*)>& call) {
  QuorkitError error;
  std::memset(&error, 0x55, sizeof error);
  const QuorkitStatus status = call(&error);
  EXPECT_NE(status, QUORKIT_DONE);
  EXPECT_EQ(error.status, status);
  EXPECT_LT(std::strlen(error.text), sizeof error.text);
  return error;
}

QuorkitStatus buildWith(const double* v, std::int32_t n, const std::int32_t* t, std::int32_t m,
                        QuorkitError* error) {
  QuorkitSolver* solver = nullptr;
  return quorkitConstruct(n, v, m, t, kTags, nullptr, nullptr, &solver, error);
}

QuorkitStatus solveWithin(const std::function<void(QuorkitProblem&)>& change, QuorkitError* error) {
  QuorkitProblem problem{};
  problem.n = 4;
  problem.vertices = kPoints;
  problem.m = 2;
  problem.triangles = kTriangles;
  problem.tolerance = 0.1;
  change(problem);
  const QuorkitSolution* solution = nullptr;
  return quorkitSolveWithin(&problem, nullptr, nullptr, &solution, error);
}

TEST(KitError, NamesTheArgumentAndTheEntry) {
  struct Case {
    std::function<QuorkitStatus(QuorkitError*)> call;
    std::int32_t reason;
    const char* argument;
    std::int32_t index;
    const char* text;
  };
  const KitSolver solver =
      construct({{kPoints, kPoints + 12}, {kTriangles, kTriangles + 6}}, {kTags, kTags + 4});
  double out[15];
  std::int32_t triangles[6];
  std::int32_t map[4];
  std::int32_t origins[2];
  std::int32_t n = 0;
  std::int32_t m = 0;
  float f = 0;
  std::uint8_t rgba[16];
  QuorkitReport report{};
  const QuorkitMesh* mesh = nullptr;
  const QuorkitFaces* faces = nullptr;
  const auto weld = [&](std::int32_t count, const std::int32_t* t, double tolerance,
                        QuorkitError* e) {
    return quorkitWeld(count, kPoints, 2, t, out, triangles, map, &n, &m, tolerance, e);
  };
  using E = QuorkitError*;
  const Case cases[] = {
      {[&](E e) { return weld(-3, kTriangles, 0, e); }, QUORKIT_OUT_OF_RANGE, "pointCount", -1,
       "pointCount is -3: give 0 or more"},
      {[&](E e) { return weld(4, kSecondOutside, 0, e); }, QUORKIT_OUT_OF_RANGE, "triangles", 1,
       "triangles: triangle 1 has the corner 5: give indices from 0 to below 4"},
      {[&](E e) { return weld(4, kTriangles, -1.5, e); }, QUORKIT_OUT_OF_RANGE, "tolerance", -1,
       "tolerance is -1.5: give 0 or more"},
      {[&](E e) {
         return quorkitWeldOrigins(4, kPoints, 2, kTriangles, out, triangles, map, nullptr, &n, &m,
                                   0, e);
       },
       QUORKIT_NULL, "outTriangleOrigins", -1, "outTriangleOrigins is null"},
      {[&](E e) {
         return quorkitWeldOrigins(4, nullptr, 2, kTriangles, out, triangles, map, origins, &n, &m,
                                   0, e);
       },
       QUORKIT_NULL, "points", -1, "points is null"},
      {[&](E e) { return quorkitCheck(4, kPoints, 2, nullptr, kTags, &report, e); }, QUORKIT_NULL,
       "triangles", -1, "triangles is null"},
      {[&](E e) {
         return quorkitCheckRegions(4, kPoints, 2, kTriangles, nullptr, nullptr, &report, e);
       },
       QUORKIT_NULL, "regions", -1, "regions is null"},
      {[&](E e) { return quorkitClean(4, kOneIsNan, 2, kTriangles, &mesh, e); }, QUORKIT_NOT_FINITE,
       "vertices", 1, "vertices: vertex 1 is at (1, nan, 0): give finite coordinates"},
      {[&](E e) { return quorkitClean(4, kPoints, 2, kTriangles, nullptr, e); }, QUORKIT_NULL,
       "meshOut", -1, "meshOut is null"},
      {[&](E e) { return quorkitRefine(4, kPoints, 2, kTriangles, 0, &mesh, e); },
       QUORKIT_OUT_OF_RANGE, "longestEdge", -1, "longestEdge is 0: give a finite number above 0"},
      {[&](E e) { return quorkitRefine(4, kPoints, 2, kSecondRepeats, 1, &mesh, e); },
       QUORKIT_REPEATED_CORNER, "triangles", 1,
       "triangles: triangle 1 has the corners 2, 1, 2: drop it with quorkitClean"},
      {[&](E e) { return quorkitRefineGraded(4, kPoints, 2, kTriangles, 1, kPoints, &mesh, e); },
       QUORKIT_OUT_OF_RANGE, "sizes", 0, "sizes: entry 0 is 0: give numbers above 0"},
      {[&](E e) { return quorkitRefineTo(4, kPoints, 2, kTriangles, 0, &mesh, e); },
       QUORKIT_OUT_OF_RANGE, "triangleCount", -1, "triangleCount is 0: give 1 .. 238609294"},
      {[&](E e) { return buildWith(kPoints, 4, kSecondRepeats, 2, e); }, 23, "triangles", 1,
       "triangles: triangle 1 has the corners 2, 1, 2: drop it with quorkitClean"},
      {[&](E e) { return buildWith(kPoints, 5, kTriangles, 2, e); }, 24, "vertices", 4,
       "vertices: no triangle uses vertex 4: drop it with quorkitClean"},
      {[&](E e) { return buildWith(kPoints, 0, kTriangles, 2, e); }, QUORKIT_OUT_OF_RANGE, "n", -1,
       "n is 0: give 1 or more"},
      {[&](E e) { return quorkitSolverInfo(nullptr, nullptr, e); }, QUORKIT_NULL, "solver", -1,
       "solver is null"},
      {[&](E e) { return quorkitSolve(solver.get(), kPoints, nullptr, nullptr, e); }, QUORKIT_NULL,
       "fieldOut", -1, "fieldOut is null"},
      {[&](E e) { return quorkitSolveMany(solver.get(), -1, kPoints, nullptr, out, e); },
       QUORKIT_OUT_OF_RANGE, "columnCount", -1, "columnCount is -1: give 0 or more"},
      {[&](E e) { return solveWithin([](QuorkitProblem& p) { p.tolerance = kNaN; }, e); },
       QUORKIT_OUT_OF_RANGE, "tolerance", -1, "tolerance is nan: give a finite number above 0"},
      {[&](E e) {
         return solveWithin([](QuorkitProblem& p) { p.vertexValues = kOneIsInfinite; }, e);
       },
       QUORKIT_NOT_FINITE, "vertexValues", 3, "vertexValues: entry 3 is inf: give finite numbers"},
      {[&](E e) {
         return solveWithin(
             [](QuorkitProblem& p) {
               static const std::int32_t edges[4] = {0, 1, 0, 3};
               p.edgeCount = 2;
               p.edges = edges;
               p.edgeValues = kPoints;
             },
             e);
       },
       QUORKIT_NO_EDGE, "edges", 1,
       "edges: no edge of the mesh joins the vertices 0 and 3 of edge 1"},
      {[&](E e) {
         return solveWithin(
             [](QuorkitProblem& p) {
               static const double line[12] = {0, 0, 0, 1, 0, 0, 2, 0, 0, 1, 1, 0};
               p.vertices = line;
             },
             e);
       },
       QUORKIT_DEGENERATE, "triangles", 0,
       "triangles: triangle 0 is degenerate: remove it with quorkitClean"},
      {[&](E e) { return quorkitFaces(4, kPoints, 2, kTriangles, 90, &faces, e); },
       QUORKIT_OUT_OF_RANGE, "angle", -1, "angle is 90: give a number above 0 and below 90"},
      {[&](E e) { return quorkitFlip(4, kOneIsNan, 2, kTriangles, nullptr, &mesh, e); },
       QUORKIT_NOT_FINITE, "vertices", 1, "vertices: vertex 1 is at (1, nan, 0): give finite"},
      {[&](E e) { return quorkitAreas(4, kPoints, -2, kTriangles, out, e); }, QUORKIT_OUT_OF_RANGE,
       "m", -1, "m is -2: give 0 or more"},
      {[&](E e) { return quorkitFlow(4, kPoints, 2, kTriangles, kPoints, kTags, 1, out, e); },
       QUORKIT_OUT_OF_RANGE, "regions", 0, "regions: entry 0 is 1: give numbers below 1"},
      {[&](E e) { return quorkitGradients(4, kPoints, 2, kTriangles, nullptr, out, e); },
       QUORKIT_NULL, "field", -1, "field is null"},
      {[&](E e) { return quorkitColours(4, kPoints, 0, kInfinity, rgba, e); }, QUORKIT_NOT_FINITE,
       "high", -1, "high is inf: give a finite number"},
      {[&](E e) {
         return quorkitWrite(4, kPoints, 2, kTriangles, kOneIsInfinite, "never", nullptr, 0, e);
       },
       QUORKIT_NOT_FINITE, "field", 3, "field: entry 3 is inf: give finite numbers"},
      {[&](E e) {
         return quorkitWrite(4, kPoints, 2, kTriangles, kPoints, "never/", nullptr, 0, e);
       },
       QUORKIT_OUT_OF_RANGE, "path", -1, "path names no file: end it with the name of one"},
      {[&](E e) { return quorkitEncodeToSphere(70000, &f, &f, &f, e); }, QUORKIT_OUT_OF_RANGE,
       "value", -1, "value is 70000: give -1 .. 65534"},
  };
  for (const Case& c : cases) {
    const QuorkitError error = errorOf(c.call);
    EXPECT_EQ(error.status, QUORKIT_BAD_ARGUMENT) << c.text;
    EXPECT_EQ(error.reason, c.reason) << c.text;
    EXPECT_STREQ(error.argument, c.argument) << c.text;
    EXPECT_EQ(error.index, c.index) << c.text;
    EXPECT_EQ(error.system, 0) << c.text;
    EXPECT_EQ(std::string(error.text).rfind(c.text, 0), 0U) << error.text;
    EXPECT_EQ(c.call(nullptr), QUORKIT_BAD_ARGUMENT) << "nobody reads it";
  }
}

TEST(KitError, NamesTheFileAndTheCause) {
  const TempDirectory directory;
  fs::create_directory(directory / "taken.obj");
  std::ofstream(directory / "file") << "no directory";
  const auto write = [](const std::string& path, const char* ramp) {
    return errorOf([&](QuorkitError* error) {
      return quorkitWrite(4, kPoints, 2, kTriangles, kPoints, path.c_str(), ramp, 0, error);
    });
  };
  struct Case {
    std::string path;
    const char* ramp;
    std::string text;
    int system;
  };
  const std::string longName(300, 'x');
  const std::string noRamp = directory / "none.PNG";
  for (const Case& c :
       {Case{directory / "no/such", nullptr, directory / "no/such.obj: no such file or directory",
             ENOENT},
        {directory / "file/part", nullptr,
         directory / "file/part.obj: a part of the path is not a directory", ENOTDIR},
        {directory / longName, nullptr, (directory / longName) + ".obj: the name is too long",
         ENAMETOOLONG},
        {directory / "part", noRamp.c_str(), noRamp + ": no such file or directory", ENOENT}}) {
    const QuorkitError error = write(c.path, c.ramp);
    EXPECT_EQ(error.status, QUORKIT_FILE);
    EXPECT_STREQ(error.argument, "");
    EXPECT_EQ(error.index, -1);
#if !defined(_WIN32)  // errors of other numbers
    EXPECT_EQ(error.system, c.system);
    EXPECT_EQ(error.text, c.text);
#endif
  }
  EXPECT_EQ(
      std::string(write(directory / "taken", nullptr).text).rfind(directory / "taken.obj: ", 0),
      0U);
}

TEST(KitError, KeepsTheEndOfALongPathAndItsCharactersWhole) {
  std::string path = "/none";
  for (int k = 0; k < 300; ++k) {
    path += "/\xc3\xa4";  // two bytes
  }
  for (const char* end : {"", "x"}) {  // the cut falls on both bytes
    const QuorkitError error = errorOf([&](QuorkitError* e) {
      return quorkitWrite(4, kPoints, 2, kTriangles, kPoints, (path + end).c_str(), nullptr, 0, e);
    });
    const std::string text = error.text;
    const std::string shown = path + end + ".obj: no such file or directory";
    ASSERT_EQ(text.rfind("...", 0), 0U);
    EXPECT_GT(text.size(), 400U);
    EXPECT_EQ(text.substr(3), shown.substr(shown.size() - text.size() + 3));
    EXPECT_NE(static_cast<unsigned char>(text[3]) & 0xC0U, 0x80U) << "a cut character";
  }
}

TEST(KitError, SaysWhatElseFailed) {
  const QuorkitMesh* mesh = nullptr;
  const QuorkitError large = errorOf(
      [&](QuorkitError* e) { return quorkitRefine(4, kPoints, 2, kTriangles, 1e-30, &mesh, e); });
  EXPECT_EQ(large.status, QUORKIT_TOO_LARGE);
  EXPECT_STREQ(large.text, quorkitStatusText(QUORKIT_TOO_LARGE));
  const QuorkitError cancelled = errorOf([&](QuorkitError* e) {
    QuorkitSolver* solver = nullptr;
    return quorkitConstruct(
        4, kPoints, 2, kTriangles, kTags, [](double, void*) { return std::int32_t(1); }, nullptr,
        &solver, e);
  });
  EXPECT_EQ(cancelled.status, QUORKIT_CANCELLED);
  EXPECT_STREQ(cancelled.argument, "");
  EXPECT_EQ(cancelled.reason, 0);
}

}  // namespace
