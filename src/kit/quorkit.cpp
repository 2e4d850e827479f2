// The exported functions: each checks its arguments and makes one call, guarded.
#include "quorkit.h"

#include "api/solver_handle.h"
#include "kit/areas.h"
#include "kit/boundary_values.h"
#include "kit/check.h"
#include "kit/clean.h"
#include "kit/colours.h"
#include "kit/exception_guard.h"
#include "kit/faces.h"
#include "kit/flip.h"
#include "kit/flow.h"
#include "kit/gradients.h"
#include "kit/mesh.h"
#include "kit/obj_file.h"
#include "kit/progress_reporter.h"
#include "kit/refine.h"
#include "kit/refine_to.h"
#include "kit/solve_within.h"
#include "kit/triangle_origins.h"
#include "kit/triangle_shape.h"
#include "operator/construct_tagged.h"
#include "solve/field_solve.h"
#include "solve/fields_solve.h"
#include "util/integer_on_sphere.h"
#include "weld/weld.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct QuorkitSolver {
  std::unique_ptr<const quor::SolverHandle> handle;
};

namespace {

using quorkit::guarded;
using quorkit::MeshView;
using quorkit::toIndex;
using quorkit::toSize;

/// A mesh as it is handed out, with what it points to.
struct OwnedMesh : QuorkitMesh {
  explicit OwnedMesh(quorkit::MeshData&& mesh) : QuorkitMesh(), data(std::move(mesh)) {
    vertexCount = toIndex(data.vertices.size() / 3);
    triangleCount = toIndex(data.triangles.size() / 3);
    vertices = data.vertices.data();
    triangles = data.triangles.data();
    triangleOrigins = data.triangleOrigins.data();
    vertexOrigins = data.vertexOrigins.data();
    vertexMap = data.vertexMap.empty() ? nullptr : data.vertexMap.data();
    vertexMapCount = toIndex(data.vertexMap.size());
    longestEdge = data.longestEdge;
    degenerateCount = data.degenerateCount;
  }
  quorkit::MeshData data;
};

/// Faces as they are handed out, with what they point to.
struct OwnedFaces : QuorkitFaces {
  explicit OwnedFaces(quorkit::Faces&& found) : QuorkitFaces(), data(std::move(found)) {
    faceCount = data.faceCount;
    chainCount = data.chainCount;
    edgeCount = toIndex(data.chainOf.size());
    faces = data.faceOf.data();
    edges = data.edges.data();
    chains = data.chainOf.data();
  }
  quorkit::Faces data;
};

/// A solution as it is handed out, with what it points to.
struct OwnedSolution : QuorkitSolution {
  explicit OwnedSolution(quorkit::Solution&& solution)
      : QuorkitSolution(), data(std::move(solution)) {
    outcome = static_cast<std::int32_t>(data.refusal);
    vertex = data.refusedVertex;
    vertexCount = toIndex(data.field.size());
    triangleCount = toIndex(data.mesh.triangles.size() / 3);
    vertices = data.mesh.vertices.data();
    triangles = data.mesh.triangles.data();
    triangleOrigins = data.mesh.triangleOrigins.data();
    vertexOrigins = data.mesh.vertexOrigins.data();
    field = data.field.data();
    error = data.error;
    tolerance = data.tolerance;
    isReached = data.isReached ? 1 : 0;
    rounds = data.rounds;
    jumpCount = toIndex(data.jumps.size());
    jumps = data.jumps.data();
    jumpRadius = data.jumpRadius;
  }
  quorkit::Solution data;
};
static_assert(static_cast<int>(quorkit::Refusal::kIsolatedVertex) == QUORKIT_ISOLATED_VERTEX &&
              static_cast<int>(quorkit::Refusal::kUnprescribed) == QUORKIT_UNPRESCRIBED &&
              static_cast<int>(quorkit::Refusal::kNotSolvable) == QUORKIT_NOT_SOLVABLE);

bool areArrays(const MeshView& mesh) {
  return mesh.n >= 0 && mesh.m >= 0 && (mesh.vertices != nullptr || mesh.n == 0) &&
         (mesh.triangles != nullptr || mesh.m == 0);
}

bool areCornersInRange(const MeshView& mesh) {
  const std::int32_t* const end = mesh.triangles + 3 * mesh.triangleCount();
  return std::all_of(mesh.triangles, end,
                     [&mesh](std::int32_t corner) { return corner >= 0 && corner < mesh.n; });
}

bool isMesh(const MeshView& mesh) {
  return areArrays(mesh) && areCornersInRange(mesh);
}

bool areFinite(const double* values, std::size_t count) {
  return std::all_of(values, values + count, [](double value) { return std::isfinite(value); });
}

bool areUsedVerticesFinite(const MeshView& mesh) {
  const std::int32_t* const end = mesh.triangles + 3 * mesh.triangleCount();
  return std::all_of(mesh.triangles, end, [&mesh](std::int32_t corner) {
    return areFinite(mesh.vertices + 3 * toSize(corner), 3);
  });
}

bool areCornersDifferent(const MeshView& mesh) {
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const c = mesh.triangles + 3 * t;
    if (c[0] == c[1] || c[1] == c[2] || c[2] == c[0]) {
      return false;
    }
  }
  return true;
}

bool hasNoDegenerateTriangle(const MeshView& mesh) {
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const c = mesh.triangles + 3 * t;
    if (quorkit::shapeOf({quorkit::pointAt(mesh.vertices, c[0]),
                          quorkit::pointAt(mesh.vertices, c[1]),
                          quorkit::pointAt(mesh.vertices, c[2])})
            .isFlat()) {
      return false;
    }
  }
  return true;
}

bool canBeRefined(const MeshView& mesh) {
  return isMesh(mesh) && areCornersDifferent(mesh) &&
         areFinite(mesh.vertices, 3 * mesh.vertexCount());
}

/// The outputs of a weld, and its tolerance.
struct Weld {
  double* vertices;
  std::int32_t* triangles;
  std::int32_t* pointMap;
  std::int32_t* vertexCount;
  std::int32_t* triangleCount;
  double tolerance;

  bool canBeMade(const MeshView& soup) const {
    const bool hasCounts = vertexCount != nullptr && triangleCount != nullptr;
    const bool hasVertices = soup.n <= 0 || (vertices != nullptr && pointMap != nullptr);
    const bool hasTriangles = soup.m <= 0 || triangles != nullptr;
    return hasCounts && hasVertices && hasTriangles && tolerance >= 0.0 && isMesh(soup);
  }

  void make(const MeshView& soup) const {
    *vertexCount = 0;
    *triangleCount = 0;
    const quor::WeldedCounts counts = quor::weldMesh(soup.n, soup.vertices, soup.m, soup.triangles,
                                                     tolerance, vertices, triangles, pointMap);
    *vertexCount = counts.vertices;
    *triangleCount = counts.triangles;
  }
};

/// Calls an operation that makes a mesh, unless the arguments are bad, and hands the mesh out.
template <typename Operation>
QuorkitStatus makeMesh(const QuorkitMesh** meshOut, bool isGood, const Operation& operation) {
  if (meshOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  *meshOut = nullptr;
  if (!isGood) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] { *meshOut = std::make_unique<OwnedMesh>(operation()).release(); });
}

/// The path without an ".obj" at its end; empty if it names no file.
std::string_view basePath(const char* path) {
  std::string_view base = path;
  constexpr std::string_view kEnding = ".obj";
  if (base.size() >= kEnding.size() && base.substr(base.size() - kEnding.size()) == kEnding) {
    base.remove_suffix(kEnding.size());
  }
#if defined(_WIN32)
  constexpr const char* kSeparators = "/\\:";
#else
  constexpr const char* kSeparators = "/";
#endif
  const std::size_t separator = base.find_last_of(kSeparators);
  return separator + 1 == base.size() ? std::string_view() : base;
}

}  // namespace

const char* quorkitStatusText(QuorkitStatus status) {
  switch (status) {
    case QUORKIT_DONE:
      return "done";
    case QUORKIT_BAD_ARGUMENT:
      return "an argument is not what the function asks for";
    case QUORKIT_OUT_OF_MEMORY:
      return "memory ran out";
    case QUORKIT_TOO_LARGE:
      return "the result has no place in 32-bit indices";
    case QUORKIT_FILE:
      return "a file cannot be read or written, or the disk is full";
    case QUORKIT_CANCELLED:
      return "cancelled";
    case QUORKIT_INTERNAL:
      return "a fault of the library";
    default:
      return "no status of this library";
  }
}

QuorkitStatus quorkitWeld(int32_t pointCount, const double* points, int32_t triangleCount,
                          const int32_t* triangles, double* outVertices, int32_t* outTriangles,
                          int32_t* outPointMap, int32_t* outVertexCount, int32_t* outTriangleCount,
                          double tolerance) {
  const Weld weld = {outVertices,    outTriangles,     outPointMap,
                     outVertexCount, outTriangleCount, tolerance};
  const MeshView soup = {pointCount, points, triangleCount, triangles};
  return weld.canBeMade(soup) ? guarded([&] { weld.make(soup); }) : QUORKIT_BAD_ARGUMENT;
}

QuorkitStatus quorkitWeldOrigins(int32_t pointCount, const double* points, int32_t triangleCount,
                                 const int32_t* triangles, double* outVertices,
                                 int32_t* outTriangles, int32_t* outPointMap,
                                 int32_t* outTriangleOrigins, int32_t* outVertexCount,
                                 int32_t* outTriangleCount, double tolerance) {
  const Weld weld = {outVertices,    outTriangles,     outPointMap,
                     outVertexCount, outTriangleCount, tolerance};
  const MeshView soup = {pointCount, points, triangleCount, triangles};
  if (!weld.canBeMade(soup) || (outTriangleOrigins == nullptr && triangleCount > 0)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] {
    *outVertexCount = 0;
    *outTriangleCount = 0;
    std::vector<std::int32_t> copy;  // of what is written over
    if (outTriangles == triangles) {
      copy.assign(triangles, triangles + 3 * soup.triangleCount());
    }
    weld.make(soup);
    quorkit::triangleOrigins(copy.empty() ? triangles : copy.data(), outPointMap, *outTriangleCount,
                             outTriangles, outTriangleOrigins);
  });
}

QuorkitStatus quorkitCheck(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const int32_t* tags, QuorkitReport* reportOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  if (reportOut == nullptr || !areArrays(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] { *reportOut = quorkit::check(mesh, {tags, nullptr, nullptr}); });
}

QuorkitStatus quorkitCheckRegions(int32_t n, const double* vertices, int32_t m,
                                  const int32_t* triangles, const int32_t* regions,
                                  const double* values, QuorkitReport* reportOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  if (reportOut == nullptr || (regions == nullptr && n > 0) || !areArrays(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] { *reportOut = quorkit::check(mesh, {nullptr, regions, values}); });
}

void quorkitFreeMesh(const QuorkitMesh* mesh) {
  delete static_cast<const OwnedMesh*>(mesh);
}

QuorkitStatus quorkitClean(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const QuorkitMesh** meshOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  return makeMesh(meshOut, isMesh(mesh) && areUsedVerticesFinite(mesh),
                  [&mesh] { return quorkit::clean(mesh); });
}

QuorkitStatus quorkitRefine(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                            double longestEdge, const QuorkitMesh** meshOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  const bool isLength = std::isfinite(longestEdge) && longestEdge > 0.0;
  return makeMesh(meshOut, isLength && canBeRefined(mesh),
                  [&] { return quorkit::refine(mesh, {longestEdge}); });
}

QuorkitStatus quorkitRefineGraded(int32_t n, const double* vertices, int32_t m,
                                  const int32_t* triangles, double longestEdge, const double* sizes,
                                  const QuorkitMesh** meshOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  const bool isLength = std::isfinite(longestEdge) && longestEdge > 0.0;
  const auto areSizes = [&] {
    return n == 0 || (sizes != nullptr &&
                      std::all_of(sizes, sizes + n, [](double size) { return size > 0.0; }));
  };
  return makeMesh(meshOut, isLength && canBeRefined(mesh) && areSizes(), [&] {
    return quorkit::refine(mesh, {longestEdge, sizes});
  });
}

QuorkitStatus quorkitRefineTo(int32_t n, const double* vertices, int32_t m,
                              const int32_t* triangles, int32_t triangleCount,
                              const QuorkitMesh** meshOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  const bool isNumber = triangleCount >= 1 && triangleCount <= quorkit::kMostTriangles;
  return makeMesh(meshOut, isNumber && canBeRefined(mesh),
                  [&] { return quorkit::refineTo(mesh, triangleCount); });
}

QuorkitStatus quorkitConstruct(int32_t n, const double* vertices, int32_t m,
                               const int32_t* triangles, const int32_t* tags,
                               QuorkitProgress progress, void* context, QuorkitSolver** solverOut) {
  if (solverOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  *solverOut = nullptr;
  const MeshView mesh = {n, vertices, m, triangles};
  if (n < 1 || m < 1 || tags == nullptr || !areArrays(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&]() -> QuorkitStatus {
    quor::requireSizesFit(n, m);
    if (!areCornersInRange(mesh)) {
      return QUORKIT_BAD_ARGUMENT;
    }
    auto solver = std::make_unique<QuorkitSolver>();
    quorkit::ProgressReporter reporter(progress, context);
    reporter.begin();
    quor::Construction made =
        quor::constructTagged(n, vertices, m, triangles, tags, reporter.whole());
    if (made.handle == nullptr) {
      return QUORKIT_BAD_ARGUMENT;
    }
    solver->handle = std::move(made.handle);
    reporter.end();
    *solverOut = solver.release();
    return QUORKIT_DONE;
  });
}

QuorkitStatus quorkitSolverInfo(const QuorkitSolver* solver, QuorkitSolverInfo* infoOut) {
  if (solver == nullptr || infoOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  const quor::SolverHandle& handle = *solver->handle;
  infoOut->vertexCount = toIndex(handle.vertexCount);
  infoOut->triangleCount = toIndex(handle.triangles->size() / 3);
  infoOut->prescribedCount = toIndex(handle.prescribedCount);
  infoOut->factorization = static_cast<std::uint32_t>(handle.factorFF->info());
  infoOut->vertices = handle.vertices->data();
  infoOut->triangles = handle.triangles->data();
  infoOut->order = handle.solverToCaller.data();
  return QUORKIT_DONE;
}

QuorkitStatus quorkitSolve(const QuorkitSolver* solver, const double* prescribedValues,
                           const double* sourceValues, double* fieldOut) {
  if (solver == nullptr || prescribedValues == nullptr || fieldOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded(
      [&] { quor::solveField(*solver->handle, prescribedValues, sourceValues, fieldOut); });
}

QuorkitStatus quorkitSolveMany(const QuorkitSolver* solver, int32_t columnCount,
                               const double* prescribedValues, const double* sourceValues,
                               double* fieldsOut) {
  const bool areThere = prescribedValues != nullptr && fieldsOut != nullptr;
  if (solver == nullptr || columnCount < 0 || (!areThere && columnCount > 0)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] {
    quor::solveFields(*solver->handle, toSize(columnCount), prescribedValues, sourceValues,
                      fieldsOut);
  });
}

/// Finite, or NaN where that means none.
bool areValues(const double* values, std::size_t count, bool mayBeMissing) {
  return values == nullptr || std::all_of(values, values + count, [=](double value) {
           return std::isfinite(value) || (mayBeMissing && std::isnan(value));
         });
}

bool isProblem(const QuorkitProblem& problem, const quorkit::Problem& checked) {
  const MeshView& mesh = checked.mesh;
  if (mesh.n < 1 || mesh.m < 1 || !canBeRefined(mesh) || !hasNoDegenerateTriangle(mesh) ||
      !(problem.tolerance > 0.0) || !std::isfinite(problem.tolerance) ||
      problem.triangleLimit < 0 || problem.edgeCount < 0 ||
      (problem.edgeCount > 0 && (problem.edges == nullptr || problem.edgeValues == nullptr))) {
    return false;
  }
  return areValues(problem.triangleValues, mesh.triangleCount(), true) &&
         areValues(problem.vertexValues, mesh.vertexCount(), true) &&
         areValues(problem.sources, mesh.triangleCount(), false) &&
         (problem.edgeCount == 0 ||
          areValues(problem.edgeValues, toSize(problem.edgeCount), false)) &&
         quorkit::areEdges(checked);
}

QuorkitStatus quorkitSolveWithin(const QuorkitProblem* problem, QuorkitProgress progress,
                                 void* context, const QuorkitSolution** solutionOut) {
  if (solutionOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  *solutionOut = nullptr;
  if (problem == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  constexpr std::int32_t kUsualLimit = 4000000;
  quorkit::Problem checked;
  checked.mesh = {problem->n, problem->vertices, problem->m, problem->triangles};
  checked.triangleValues = problem->triangleValues;
  checked.edgeCount = problem->edgeCount;
  checked.edges = problem->edges;
  checked.edgeValues = problem->edgeValues;
  checked.vertexValues = problem->vertexValues;
  checked.sources = problem->sources;
  checked.faces = problem->faces;
  checked.tolerance = problem->tolerance;
  checked.isShareOfSpan = problem->isShareOfSpan != 0;
  checked.triangleLimit = std::min(
      problem->triangleLimit == 0 ? kUsualLimit : problem->triangleLimit, quorkit::kMostTriangles);
  return guarded([&]() -> QuorkitStatus {
    if (!isProblem(*problem, checked)) {
      return QUORKIT_BAD_ARGUMENT;
    }
    quorkit::ProgressReporter reporter(progress, context);
    reporter.begin();
    auto solution =
        std::make_unique<OwnedSolution>(quorkit::solveWithin(checked, reporter.whole()));
    reporter.end();
    *solutionOut = solution.release();
    return QUORKIT_DONE;
  });
}

void quorkitFreeSolution(const QuorkitSolution* solution) {
  delete static_cast<const OwnedSolution*>(solution);
}

QuorkitStatus quorkitFaces(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           double angle, const QuorkitFaces** facesOut) {
  if (facesOut == nullptr) {
    return QUORKIT_BAD_ARGUMENT;
  }
  *facesOut = nullptr;
  const MeshView mesh = {n, vertices, m, triangles};
  if (!(angle > 0.0 && angle < 90.0) || !canBeRefined(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] {
    constexpr double kUsual = 30.0;
    constexpr double kUsualCosine = 0.86602540378443865;  // the same everywhere
    constexpr double kDegree = 0.017453292519943295;
    const double cosine = angle == kUsual ? kUsualCosine : std::cos(kDegree * angle);
    *facesOut = std::make_unique<OwnedFaces>(quorkit::findFaces(mesh, cosine)).release();
  });
}

void quorkitFreeFaces(const QuorkitFaces* faces) {
  delete static_cast<const OwnedFaces*>(faces);
}

QuorkitStatus quorkitFlip(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                          const int32_t* faces, const QuorkitMesh** meshOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  return makeMesh(meshOut, canBeRefined(mesh), [&] { return quorkit::flip(mesh, faces); });
}

void quorkitFreeSolver(QuorkitSolver* solver) {
  delete solver;
}

QuorkitStatus quorkitAreas(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           double* areasOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  if ((areasOut == nullptr && n > 0) || !isMesh(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  quorkit::areas(mesh, areasOut);
  return QUORKIT_DONE;
}

QuorkitStatus quorkitFlow(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                          const double* field, const int32_t* regions, int32_t regionCount,
                          double* flowsOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  const bool areThere = n == 0 || (field != nullptr && regions != nullptr);
  if (regionCount < 0 || (flowsOut == nullptr && regionCount > 0) || !areThere || !isMesh(mesh) ||
      !std::all_of(regions, regions + n,
                   [regionCount](std::int32_t region) { return region < regionCount; })) {
    return QUORKIT_BAD_ARGUMENT;
  }
  quorkit::flows(mesh, field, regions, regionCount, flowsOut);
  return QUORKIT_DONE;
}

QuorkitStatus quorkitGradients(int32_t n, const double* vertices, int32_t m,
                               const int32_t* triangles, const double* field,
                               double* gradientsOut) {
  const MeshView mesh = {n, vertices, m, triangles};
  const bool areThere = m == 0 || (field != nullptr && gradientsOut != nullptr);
  if (!areThere || !isMesh(mesh)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  quorkit::gradients(mesh, field, gradientsOut);
  return QUORKIT_DONE;
}

QuorkitStatus quorkitColours(int32_t n, const double* field, double low, double high,
                             uint8_t* rgbaOut) {
  const bool areThere = n == 0 || (field != nullptr && rgbaOut != nullptr);
  if (n < 0 || !areThere || !std::isfinite(low) || !std::isfinite(high)) {
    return QUORKIT_BAD_ARGUMENT;
  }
  quorkit::colours(toSize(n), field, low, high, rgbaOut);
  return QUORKIT_DONE;
}

QuorkitStatus quorkitWrite(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const double* field, const char* path, const char* ramp, double margin) {
  const MeshView mesh = {n, vertices, m, triangles};
  if (n < 1 || field == nullptr || path == nullptr || !(margin >= 0.0 && margin <= 1.0) ||
      !isMesh(mesh) || !areFinite(vertices, 3 * mesh.vertexCount()) ||
      !areFinite(field, mesh.vertexCount()) || basePath(path).empty()) {
    return QUORKIT_BAD_ARGUMENT;
  }
  return guarded([&] {
    quorkit::writeObj(mesh, field, {std::string(basePath(path)), ramp}, margin);
  });
}

QuorkitStatus quorkitEncodeToSphere(int32_t value, float* xOut, float* yOut, float* zOut) {
  if (xOut == nullptr || yOut == nullptr || zOut == nullptr || value < -1 || value > 65534) {
    return QUORKIT_BAD_ARGUMENT;
  }
  const quor::SpherePoint point = quor::encodeIntegerToSphere(value);
  *xOut = point.x;
  *yOut = point.y;
  *zOut = point.z;
  return QUORKIT_DONE;
}

int32_t quorkitDecodeFromSphere(float x, float y, float z) {
  return quor::decodeIntegerFromSphere({x, y, z});
}
