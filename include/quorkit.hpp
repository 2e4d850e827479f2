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

#include "quor.hpp"
#include "quorkit.h"

#include <exception>
#include <functional>
#include <new>

namespace quor::kit {

/* QUORKIT_BAD_ARGUMENT: an argument that the library refused. See QuorkitError. */
class BadArgument : public std::invalid_argument {
 public:
  explicit BadArgument(const QuorkitError& error)
      : std::invalid_argument(std::string("quor: ") + error.text),
        argument_(error.argument),
        reason_(error.reason),
        index_(error.index) {}

  const char* argument() const { return argument_; } /* its name in quorkit.h               */
  std::int32_t reason() const { return reason_; }    /* QUORKIT_NULL or one that follows it */
  std::int32_t index() const { return index_; }      /* of the entry, or -1                 */

 private:
  const char* argument_;
  std::int32_t reason_;
  std::int32_t index_;
};

/* QUORKIT_FILE, QUORKIT_CANCELLED or QUORKIT_INTERNAL. */
class Error : public std::runtime_error {
 public:
  explicit Error(const QuorkitError& error)
      : std::runtime_error(std::string("quor: ") + error.text),
        status_(error.status),
        system_(error.system) {}

  QuorkitStatus status() const { return status_; }
  std::int32_t system() const { return system_; } /* of QUORKIT_FILE: errno; 0 if unknown */

 private:
  QuorkitStatus status_;
  std::int32_t system_;
};

namespace detail {

[[noreturn]] inline void fail(const QuorkitError& error) {
  switch (error.status) {
    case QUORKIT_BAD_ARGUMENT:
      throw BadArgument(error);
    case QUORKIT_OUT_OF_MEMORY:
      throw std::bad_alloc();
    case QUORKIT_TOO_LARGE:
      throw std::length_error(std::string("quor: ") + error.text);
    default:
      throw Error(error);
  }
}

/// Calls a function of the library and throws what its status means.
template <class Function, class... Arguments>
void call(Function* function, Arguments... arguments) {
  QuorkitError error;
  if (function(arguments..., &error) != QUORKIT_DONE) {
    fail(error);
  }
}

inline std::int32_t vertexCount(Span<double> vertices) {
  return quor::detail::count(vertices.size(), 3, "vertices");
}

inline std::int32_t triangleCount(Span<std::int32_t> triangles) {
  return quor::detail::count(triangles.size(), 3, "triangles");
}

}  // namespace detail

/* A mesh of the library's, owned: moves, does not copy, and is empty after a move. */
class Mesh {
 public:
  Mesh() = default;
  /* Takes over what quorkitClean or a like function gave, null for an empty mesh. */
  explicit Mesh(const QuorkitMesh* mesh) : mesh_(mesh) {}

  /* Views of the arrays of QuorkitMesh, valid as long as the mesh. */
  Span<double> vertices() const {
    return mesh_ ? Span<double>(mesh_->vertices, 3 * vertexCount()) : Span<double>();
  }
  Span<std::int32_t> triangles() const {
    return mesh_ ? Span<std::int32_t>(mesh_->triangles, 3 * triangleCount()) : Span<std::int32_t>();
  }
  Span<std::int32_t> triangleOrigins() const {
    return mesh_ ? Span<std::int32_t>(mesh_->triangleOrigins, triangleCount())
                 : Span<std::int32_t>();
  }
  Span<std::int32_t> vertexOrigins() const {
    return mesh_ ? Span<std::int32_t>(mesh_->vertexOrigins, 2 * vertexCount())
                 : Span<std::int32_t>();
  }
  /* One entry per vertex of the input of `clean`; empty after `refine`. */
  Span<std::int32_t> vertexMap() const {
    return mesh_ && mesh_->vertexMap != nullptr
               ? Span<std::int32_t>(mesh_->vertexMap,
                                    static_cast<std::size_t>(mesh_->vertexMapCount))
               : Span<std::int32_t>();
  }
  double longestEdge() const { return mesh_ ? mesh_->longestEdge : 0.0; }

 private:
  std::size_t vertexCount() const { return static_cast<std::size_t>(mesh_->vertexCount); }
  std::size_t triangleCount() const { return static_cast<std::size_t>(mesh_->triangleCount); }

  struct Free {
    void operator()(const QuorkitMesh* mesh) const { quorkitFreeMesh(mesh); }
  };
  std::unique_ptr<const QuorkitMesh, Free> mesh_;
};

/* quorkitWeld. */
inline Welded weld(Span<double> points, Span<std::int32_t> triangles, double tolerance) {
  const std::int32_t pointCount = quor::detail::count(points.size(), 3, "points");
  const std::int32_t triangleCount = detail::triangleCount(triangles);
  Welded welded;
  welded.vertices.resize(points.size());
  welded.triangles.resize(triangles.size());
  welded.pointMap.resize(points.size() / 3);
  std::int32_t vertices = 0;
  std::int32_t kept = 0;
  detail::call(quorkitWeld, pointCount, points.data(), triangleCount, triangles.data(),
               welded.vertices.data(), welded.triangles.data(), welded.pointMap.data(), &vertices,
               &kept, tolerance);
  welded.vertices.resize(3 * static_cast<std::size_t>(vertices));
  welded.triangles.resize(3 * static_cast<std::size_t>(kept));
  return welded;
}

/* What weldWithOrigins gives: a welded mesh, and the input triangle that each triangle was. */
struct WeldedWithOrigins : Welded {
  std::vector<std::int32_t> triangleOrigins;
};

/* quorkitWeldOrigins. */
inline WeldedWithOrigins weldWithOrigins(Span<double> points, Span<std::int32_t> triangles,
                                         double tolerance) {
  const std::int32_t pointCount = quor::detail::count(points.size(), 3, "points");
  const std::int32_t triangleCount = detail::triangleCount(triangles);
  WeldedWithOrigins welded;
  welded.vertices.resize(points.size());
  welded.triangles.resize(triangles.size());
  welded.pointMap.resize(points.size() / 3);
  welded.triangleOrigins.resize(triangles.size() / 3);
  std::int32_t vertices = 0;
  std::int32_t kept = 0;
  detail::call(quorkitWeldOrigins, pointCount, points.data(), triangleCount, triangles.data(),
               welded.vertices.data(), welded.triangles.data(), welded.pointMap.data(),
               welded.triangleOrigins.data(), &vertices, &kept, tolerance);
  welded.vertices.resize(3 * static_cast<std::size_t>(vertices));
  welded.triangles.resize(3 * static_cast<std::size_t>(kept));
  welded.triangleOrigins.resize(static_cast<std::size_t>(kept));
  return welded;
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
               tags.size() != 0 ? tags.data() : nullptr, &report);
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
               triangles.data(), regions.data(), values.size() != 0 ? values.data() : nullptr,
               &report);
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

/* A solver, owned: moves, does not copy, and is empty after a move. */
class Solver {
 public:
  /* Called with the fraction that is done, 0 .. 1, like QuorkitProgress. Returns true to cancel. */
  using Progress = std::function<bool(double fraction)>;

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
    Watch watch{progress, nullptr};
    QuorkitSolver* made = nullptr;
    QuorkitError error;
    const QuorkitStatus status = quorkitConstruct(
        detail::vertexCount(vertices), vertices.data(), detail::triangleCount(triangles),
        triangles.data(), tags.data(), progress ? &Watch::call : nullptr, &watch, &made, &error);
    Solver solver;
    solver.solver_.reset(made);
    if (watch.thrown) {
      std::rethrow_exception(watch.thrown);
    }
    if (status != QUORKIT_DONE) {
      detail::fail(error);
    }
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
                   prescribedValues.data(),
                   sourceValues.size() != 0 ? sourceValues.data() : nullptr, fields.data());
    }
    return fields;
  }

 private:
  struct Free {
    void operator()(QuorkitSolver* solver) const { quorkitFreeSolver(solver); }
  };
  struct Watch {
    const Progress& progress;
    std::exception_ptr thrown;
    static std::int32_t call(double fraction, void* context) {
      auto* const watch = static_cast<Watch*>(context);
      try {
        return watch->progress(fraction) ? 1 : 0;
      } catch (...) {
        watch->thrown = std::current_exception();
        return 1;
      }
    }
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
