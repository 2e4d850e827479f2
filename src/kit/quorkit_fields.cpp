// The exported functions about fields: each checks its arguments and makes one call, guarded.
#include "api/solver_handle.h"
#include "kit/arguments.h"
#include "kit/exception_guard.h"
#include "kit/flow.h"
#include "kit/gradients.h"
#include "kit/mesh.h"
#include "kit/owned_results.h"
#include "kit/progress_reporter.h"
#include "kit/refine.h"
#include "kit/solve_within.h"
#include "operator/construct_tagged.h"
#include "quorkit.h"
#include "solve/field_solve.h"
#include "solve/fields_solve.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

struct QuorkitSolver {
  std::unique_ptr<const quor::SolverHandle> handle;
};

using namespace quorkit;

QuorkitStatus quorkitConstruct(int32_t n, const double* vertices, int32_t m,
                               const int32_t* triangles, const int32_t* tags,
                               QuorkitProgress progress, void* context, QuorkitSolver** solverOut,
                               QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(solverOut, "solverOut");
    *solverOut = nullptr;
    const MeshView mesh = {n, vertices, m, triangles};
    requireArrays(mesh, 1);
    requireNotNull(tags, "tags");
    quor::requireSizesFit(n, m);
    requireCornersInRange(mesh);
    auto solver = std::make_unique<QuorkitSolver>();
    ProgressReporter reporter(progress, context);
    reporter.begin();
    quor::Construction made =
        quor::constructTagged(n, vertices, m, triangles, tags, reporter.whole());
    if (made.handle == nullptr) {
      requireCornersDifferent(mesh);
      requireVerticesUsed(mesh);
      throw std::logic_error("refused without a fault");
    }
    solver->handle = std::move(made.handle);
    reporter.end();
    *solverOut = solver.release();
  });
}

QuorkitStatus quorkitSolverInfo(const QuorkitSolver* solver, QuorkitSolverInfo* infoOut,
                                QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(solver, "solver");
    requireNotNull(infoOut, "infoOut");
    const quor::SolverHandle& handle = *solver->handle;
    infoOut->vertexCount = toIndex(handle.vertexCount);
    infoOut->triangleCount = toIndex(handle.triangles->size() / 3);
    infoOut->prescribedCount = toIndex(handle.prescribedCount);
    infoOut->factorization = static_cast<std::uint32_t>(handle.factorFF->info());
    infoOut->vertices = handle.vertices->data();
    infoOut->triangles = handle.triangles->data();
    infoOut->order = handle.solverToCaller.data();
  });
}

QuorkitStatus quorkitSolve(const QuorkitSolver* solver, const double* prescribedValues,
                           const double* sourceValues, double* fieldOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(solver, "solver");
    requireNotNull(prescribedValues, "prescribedValues");
    requireNotNull(fieldOut, "fieldOut");
    quor::solveField(*solver->handle, prescribedValues, sourceValues, fieldOut);
  });
}

QuorkitStatus quorkitSolveMany(const QuorkitSolver* solver, int32_t columnCount,
                               const double* prescribedValues, const double* sourceValues,
                               double* fieldsOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(solver, "solver");
    requireAtLeast(columnCount, 0, "columnCount");
    requireNotNull(prescribedValues, "prescribedValues", columnCount > 0);
    requireNotNull(fieldsOut, "fieldsOut", columnCount > 0);
    quor::solveFields(*solver->handle, toSize(columnCount), prescribedValues, sourceValues,
                      fieldsOut);
  });
}

QuorkitStatus quorkitSolveWithin(const QuorkitProblem* problem, QuorkitProgress progress,
                                 void* context, const QuorkitSolution** solutionOut,
                                 QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(solutionOut, "solutionOut");
    *solutionOut = nullptr;
    requireNotNull(problem, "problem");
    constexpr std::int32_t kUsualLimit = 4000000;
    Problem checked;
    checked.mesh = {problem->n, problem->vertices, problem->m, problem->triangles};
    requireProblem(*problem, checked.mesh);
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
        problem->triangleLimit == 0 ? kUsualLimit : problem->triangleLimit, kMostTriangles);
    ProgressReporter reporter(progress, context);
    reporter.begin();
    auto solution = std::make_unique<OwnedSolution>(solveWithin(checked, reporter.whole()));
    reporter.end();
    *solutionOut = solution.release();
  });
}

void quorkitFreeSolution(const QuorkitSolution* solution) {
  delete static_cast<const OwnedSolution*>(solution);
}

void quorkitFreeSolver(QuorkitSolver* solver) {
  delete solver;
}

QuorkitStatus quorkitFlow(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                          const double* field, const int32_t* regions, int32_t regionCount,
                          double* flowsOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireMesh(mesh);
    requireNotNull(field, "field", n > 0);
    requireNotNull(regions, "regions", n > 0);
    requireAtLeast(regionCount, 0, "regionCount");
    requireNotNull(flowsOut, "flowsOut", regionCount > 0);
    requireBelow(regions, mesh.vertexCount(), regionCount, "regions");
    flows(mesh, field, regions, regionCount, flowsOut);
  });
}

QuorkitStatus quorkitGradients(int32_t n, const double* vertices, int32_t m,
                               const int32_t* triangles, const double* field, double* gradientsOut,
                               QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireMesh(mesh);
    requireNotNull(field, "field", m > 0);
    requireNotNull(gradientsOut, "gradientsOut", m > 0);
    gradients(mesh, field, gradientsOut);
  });
}
