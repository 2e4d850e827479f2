/*
 * quorkit.hpp - the C++ wrapper of quorkit.h, in the style of quor.hpp: the same functions with
 * vectors, meshes and solvers that free themselves, and exceptions. C++17, header only; link the
 * library quorkit, and no other.
 *
 *   const quor::Welded soup = quor::kit::weld(points, triangles, 1e-6);
 *   const quor::kit::Mesh clean = quor::kit::clean(soup.vertices, soup.triangles);
 *   const double edge = quor::kit::check(clean.vertices(), clean.triangles()).diagonal / 32;
 *   const quor::kit::Mesh mesh = quor::kit::refine(clean.vertices(), clean.triangles(), edge);
 *   const quor::kit::Solver solver(mesh.vertices(), mesh.triangles(), tags);
 *   const std::vector<double> field = solver.solve(values);
 *   quor::kit::write(mesh.vertices(), mesh.triangles(), field, "parts/plate");
 *
 * or, in place of the last three steps, to a tolerance:
 *
 *   const quor::kit::Problem problem = {...};
 *   const quor::kit::Solution solution = quor::kit::solveWithin(problem);
 *
 * What the functions compute, and their limits and threads, is told in quorkit.h and holds here
 * word for word; the const members of a Solver are the calls that may overlap. A status that is not
 * QUORKIT_DONE becomes an exception with the text of QuorkitError:
 *
 *   QUORKIT_BAD_ARGUMENT   quor::kit::BadArgument, a std::invalid_argument that names the argument
 *   QUORKIT_OUT_OF_MEMORY  std::bad_alloc
 *   QUORKIT_TOO_LARGE      std::length_error, also for spans of more than 2,147,483,647 vertices
 *   all others             quor::kit::Error, with the status
 *
 * Spans whose lengths do not fit together are a std::invalid_argument.
 *
 * They are thrown by this header, in the caller's own program: any compiler's code catches them.
 */
#ifndef QUORKIT_HPP
#define QUORKIT_HPP

#if __cplusplus < 201703L && (!defined(_MSVC_LANG) || _MSVC_LANG < 201703L)
#error "quorkit.hpp needs C++17: compile with -std=c++17 (MSVC: /std:c++17), or take quorkit.h"
#else

#include "quorkit_results.hpp"

namespace quor::kit {

/* quorkitWeld. */
inline Welded weld(Span<double> points, Span<std::int32_t> triangles, double tolerance) {
  detail::Room<Welded> room(points, triangles);
  Welded& welded = room.welded;
  detail::call(quorkitWeld, room.pointCount, points.data(), room.triangleCount, triangles.data(),
               welded.vertices.data(), welded.triangles.data(), welded.pointMap.data(),
               &room.vertexCount, &room.keptCount, tolerance);
  return room.used();
}

/* What weldWithOrigins gives: a welded mesh, and the input triangle that each triangle was. */
struct WeldedWithOrigins : Welded {
  std::vector<std::int32_t> triangleOrigins;
};

/* quorkitWeldOrigins. */
inline WeldedWithOrigins weldWithOrigins(Span<double> points, Span<std::int32_t> triangles,
                                         double tolerance) {
  detail::Room<WeldedWithOrigins> room(points, triangles);
  WeldedWithOrigins& welded = room.welded;
  welded.triangleOrigins.resize(triangles.size() / 3);
  detail::call(quorkitWeldOrigins, room.pointCount, points.data(), room.triangleCount,
               triangles.data(), welded.vertices.data(), welded.triangles.data(),
               welded.pointMap.data(), welded.triangleOrigins.data(), &room.vertexCount,
               &room.keptCount, tolerance);
  welded.triangleOrigins.resize(static_cast<std::size_t>(room.keptCount));
  return room.used();
}

/* quorkitCheck. No tags: what is prescribed is not looked at. */
inline QuorkitReport check(Span<double> vertices, Span<std::int32_t> triangles,
                           Span<std::int32_t> tags = {}) {
  const std::int32_t n = detail::vertexCount(vertices);
  if (tags.size() != 0) {
    quor::detail::requireOnePerVertex(tags.size(), vertices.size() / 3, "tags");
  }
  QuorkitReport report{};
  detail::call(quorkitCheck, n, vertices.data(), detail::triangleCount(triangles), triangles.data(),
               detail::dataOf(tags), &report);
  return report;
}

/* quorkitCheckRegions. No values: any two regions differ. */
inline QuorkitReport checkRegions(Span<double> vertices, Span<std::int32_t> triangles,
                                  Span<std::int32_t> regions, Span<double> values = {}) {
  const std::int32_t n = detail::vertexCount(vertices);
  quor::detail::requireOnePerVertex(regions.size(), vertices.size() / 3, "regions");
  if (values.size() != 0) {
    quor::detail::requireOnePerVertex(values.size(), vertices.size() / 3, "values");
  }
  QuorkitReport report{};
  detail::call(quorkitCheckRegions, n, vertices.data(), detail::triangleCount(triangles),
               triangles.data(), regions.data(), detail::dataOf(values), &report);
  return report;
}

/* quorkitClean. */
inline Mesh clean(Span<double> vertices, Span<std::int32_t> triangles) {
  const QuorkitMesh* mesh = nullptr;
  detail::call(quorkitClean, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), &mesh);
  return Mesh(mesh);
}

/* quorkitRefine. */
inline Mesh refine(Span<double> vertices, Span<std::int32_t> triangles, double longestEdge) {
  const QuorkitMesh* mesh = nullptr;
  detail::call(quorkitRefine, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), longestEdge, &mesh);
  return Mesh(mesh);
}

/* quorkitRefineGraded: one size per vertex. */
inline Mesh refine(Span<double> vertices, Span<std::int32_t> triangles, double longestEdge,
                   Span<double> sizes) {
  quor::detail::requireOnePerVertex(sizes.size(), vertices.size() / 3, "sizes");
  const QuorkitMesh* mesh = nullptr;
  detail::call(quorkitRefineGraded, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), longestEdge, sizes.data(),
               &mesh);
  return Mesh(mesh);
}

/* quorkitRefineTo. */
inline Mesh refineTo(Span<double> vertices, Span<std::int32_t> triangles,
                     std::int32_t triangleCount) {
  const QuorkitMesh* mesh = nullptr;
  detail::call(quorkitRefineTo, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), triangleCount, &mesh);
  return Mesh(mesh);
}

/* quorkitFlip: one face number per triangle. None: all are one face. */
inline Mesh flip(Span<double> vertices, Span<std::int32_t> triangles,
                 Span<std::int32_t> faces = {}) {
  detail::requireOnePerTriangle(faces.size(), triangles, "faces");
  const QuorkitMesh* mesh = nullptr;
  detail::call(quorkitFlip, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), detail::dataOf(faces), &mesh);
  return Mesh(mesh);
}

/* quorkitFaces: the angle is in degrees, above 0 and below 90. */
inline Faces faces(Span<double> vertices, Span<std::int32_t> triangles, double angle = 30) {
  const std::int32_t m = detail::triangleCount(triangles);
  const QuorkitFaces* faces = nullptr;
  detail::call(quorkitFaces, detail::vertexCount(vertices), vertices.data(), m, triangles.data(),
               angle, &faces);
  return {faces, m};
}

/* A solver, owned: moves, does not copy, and is empty after a move. */
class Solver {
 public:
  using Progress = quor::kit::Progress;

  /* An empty solver, which has no vertices. */
  Solver() = default;

  /*
   * quorkitConstruct. Refuses what quor::Solver refuses, by the same exceptions: a coordinate that
   * is not finite, a component without a prescribed vertex, a singular matrix. An exception that
   * leaves `progress` cancels, and then leaves this.
   *
   *   vertices   three coordinates per vertex
   *   triangles  three vertex indices per triangle
   *   tags       one per vertex; 1, 2 and 3 are prescribed
   *   progress   may be empty
   */
  Solver(Span<double> vertices, Span<std::int32_t> triangles, Span<std::int32_t> tags,
         const Progress& progress = {}) {
    quor::detail::requireOnePerVertex(tags.size(), vertices.size() / 3, "tags");
    quor::detail::requireSolvable(vertices, triangles, tags);
    *this = make(vertices, triangles, tags, progress);
    quor::detail::requireFactorized(QUOR_SUCCESS, info().factorization);
  }

  /* The same, and accepts what only quorkitConstruct accepts: ask info() for the factorization. */
  static Solver make(Span<double> vertices, Span<std::int32_t> triangles, Span<std::int32_t> tags,
                     const Progress& progress = {}) {
    quor::detail::requireOnePerVertex(tags.size(), vertices.size() / 3, "tags");
    detail::Watch watch{progress, nullptr};
    QuorkitSolver* made = nullptr;
    QuorkitError error;
    const QuorkitStatus status = quorkitConstruct(
        detail::vertexCount(vertices), vertices.data(), detail::triangleCount(triangles),
        triangles.data(), tags.data(), watch.function(), &watch, &made, &error);
    Solver solver;
    solver.solver_.reset(made);
    watch.require(status, error);
    return solver;
  }

  /* Whether there is a solver, factorized or not. */
  explicit operator bool() const { return solver_ != nullptr; }

  /* quorkitSolverInfo; all 0 when empty. */
  QuorkitSolverInfo info() const {
    QuorkitSolverInfo info{};
    quorkitSolverInfo(solver_.get(), &info);
    return info;
  }

  /* quorkitSolve: one value per vertex in and out, in the caller's order. */
  std::vector<double> solve(Span<double> prescribedValues) const {
    return solveWith(prescribedValues, nullptr);
  }
  std::vector<double> solve(Span<double> prescribedValues, Span<double> sourceValues) const {
    quor::detail::requireOnePerVertex(sourceValues.size(), prescribedValues.size(),
                                      "source values");
    return solveWith(prescribedValues, sourceValues.data());
  }

  /* quorkitSolveMany: column after column, one value per vertex in each. No source: empty. */
  std::vector<double> solveMany(Span<double> prescribedValues,
                                Span<double> sourceValues = {}) const {
    const auto n = static_cast<std::size_t>(info().vertexCount);
    const std::size_t columns = n != 0 ? prescribedValues.size() / n : 0;
    quor::detail::requireOnePerVertex(prescribedValues.size(), columns * n, "prescribed values");
    if (sourceValues.size() != 0) {
      quor::detail::requireOnePerVertex(sourceValues.size(), prescribedValues.size(),
                                        "source values");
    }
    std::vector<double> fields(prescribedValues.size());
    if (solver_) {
      detail::call(quorkitSolveMany, solver_.get(), quor::detail::count(columns, 1, "columns"),
                   prescribedValues.data(), detail::dataOf(sourceValues), fields.data());
    }
    return fields;
  }

 private:
  struct Free {
    void operator()(QuorkitSolver* solver) const { quorkitFreeSolver(solver); }
  };
  std::vector<double> solveWith(Span<double> prescribedValues, const double* sourceValues) const {
    const auto n = static_cast<std::size_t>(info().vertexCount);
    quor::detail::requireOnePerVertex(prescribedValues.size(), n, "prescribed values");
    std::vector<double> field(n);
    if (solver_) {
      detail::call(quorkitSolve, solver_.get(), prescribedValues.data(), sourceValues,
                   field.data());
    }
    return field;
  }

  std::unique_ptr<QuorkitSolver, Free> solver_;
};

/* What solveWithin is asked for: QuorkitProblem with views, whose values must outlive the call. An
   empty view means none. */
struct Problem {
  Span<double> vertices;
  Span<std::int32_t> triangles;
  Span<double> triangleValues; /* one per triangle; NaN: free */
  Span<std::int32_t> edges;    /* two vertices each           */
  Span<double> edgeValues;     /* one per edge                */
  Span<double> vertexValues;   /* one per vertex; NaN: free   */
  Span<double> sources;        /* one density per triangle    */
  Span<std::int32_t> faces;    /* one number per triangle     */
  double tolerance = 0;        /* above 0                     */
  bool isShareOfSpan = false;
  std::int32_t triangleLimit = 0; /* of the result, which has 4m at least; 0: 4,000,000 */
};

namespace detail {

inline QuorkitProblem problemOf(const Problem& problem) {
  const std::size_t n = problem.vertices.size() / 3;
  requireOnePerTriangle(problem.triangleValues.size(), problem.triangles, "triangle values");
  requireOnePerTriangle(problem.sources.size(), problem.triangles, "sources");
  requireOnePerTriangle(problem.faces.size(), problem.triangles, "faces");
  if (problem.vertexValues.size() != 0) {
    quor::detail::requireOnePerVertex(problem.vertexValues.size(), n, "vertex values");
  }
  if (problem.edges.size() % 2 != 0 || problem.edgeValues.size() != problem.edges.size() / 2) {
    throw std::invalid_argument("quor: edges: give two vertices and one of the edge values each");
  }
  QuorkitProblem asked{};
  asked.n = vertexCount(problem.vertices);
  asked.vertices = problem.vertices.data();
  asked.m = triangleCount(problem.triangles);
  asked.triangles = problem.triangles.data();
  asked.triangleValues = dataOf(problem.triangleValues);
  asked.edgeCount = quor::detail::count(problem.edgeValues.size(), 1, "edges");
  asked.edges = dataOf(problem.edges);
  asked.edgeValues = dataOf(problem.edgeValues);
  asked.vertexValues = dataOf(problem.vertexValues);
  asked.sources = dataOf(problem.sources);
  asked.faces = dataOf(problem.faces);
  asked.tolerance = problem.tolerance;
  asked.isShareOfSpan = problem.isShareOfSpan ? 1 : 0;
  asked.triangleLimit = problem.triangleLimit;
  return asked;
}

}  // namespace detail

/*
 * quorkitSolveWithin. Throws where there is no field: IsolatedVertex, and like Solver
 * quor::Unprescribed, or quor::Error for equations without a finite solution. An exception that
 * leaves `progress` cancels, and then leaves this.
 */
inline Solution solveWithin(const Problem& problem, const Progress& progress = {}) {
  detail::Watch watch{progress, nullptr};
  const QuorkitProblem asked = detail::problemOf(problem);
  const QuorkitSolution* made = nullptr;
  QuorkitError error;
  const QuorkitStatus status = quorkitSolveWithin(&asked, watch.function(), &watch, &made, &error);
  Solution solution(made);
  watch.require(status, error);
  switch (solution.info().outcome) {
    case QUORKIT_SOLVED:
      return solution;
    case QUORKIT_ISOLATED_VERTEX:
      throw IsolatedVertex(solution.info().vertex);
    case QUORKIT_UNPRESCRIBED:
      throw Unprescribed(solution.info().vertex, "prescribe a triangle or an edge of it");
    default:
      throw quor::Error(QUOR_SUCCESS, QUOR_INFO_NUMERICAL_ISSUE,
                        "quor: the equations have no finite solution: clean the mesh");
  }
}

/* quorkitAreas: one per vertex. */
inline std::vector<double> areas(Span<double> vertices, Span<std::int32_t> triangles) {
  std::vector<double> areas(vertices.size() / 3);
  detail::call(quorkitAreas, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), areas.data());
  return areas;
}

/*
 * quorkitFlow.
 *
 *   regions  one region number per vertex; negative: none
 *   regionCount  of the flows that are returned
 */
inline std::vector<double> flow(Span<double> vertices, Span<std::int32_t> triangles,
                                Span<double> field, Span<std::int32_t> regions,
                                std::int32_t regionCount) {
  quor::detail::requireOnePerVertex(field.size(), vertices.size() / 3, "field values");
  quor::detail::requireOnePerVertex(regions.size(), vertices.size() / 3, "regions");
  std::vector<double> flows(regionCount > 0 ? static_cast<std::size_t>(regionCount) : 0);
  detail::call(quorkitFlow, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), field.data(), regions.data(),
               regionCount, flows.data());
  return flows;
}

/* quorkitGradients: three components per triangle. */
inline std::vector<double> gradients(Span<double> vertices, Span<std::int32_t> triangles,
                                     Span<double> field) {
  quor::detail::requireOnePerVertex(field.size(), vertices.size() / 3, "field values");
  std::vector<double> gradients(triangles.size());
  detail::call(quorkitGradients, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), field.data(), gradients.data());
  return gradients;
}

/* quorkitColours: four bytes per value. */
inline std::vector<std::uint8_t> colours(Span<double> field, double low, double high) {
  std::vector<std::uint8_t> rgba(4 * field.size());
  detail::call(quorkitColours, quor::detail::count(field.size(), 1, "values"), field.data(), low,
               high, rgba.data());
  return rgba;
}

/*
 * quorkitWrite. The default margin is for viewers that repeat textures, and good for all others.
 *
 *   ramp  path of viridis.PNG, to be copied beside the files; empty: no copy
 */
inline void write(Span<double> vertices, Span<std::int32_t> triangles, Span<double> field,
                  const std::string& path, const std::string& ramp = {}, double margin = 0.001) {
  quor::detail::requireOnePerVertex(field.size(), vertices.size() / 3, "field values");
  detail::call(quorkitWrite, detail::vertexCount(vertices), vertices.data(),
               detail::triangleCount(triangles), triangles.data(), field.data(), path.c_str(),
               ramp.empty() ? nullptr : ramp.c_str(), margin);
}

}  // namespace quor::kit

#endif
#endif
