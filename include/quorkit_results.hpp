/*
 * quorkit_results.hpp - what the functions of quorkit.hpp return and throw. Include that one.
 */
#ifndef QUORKIT_RESULTS_HPP
#define QUORKIT_RESULTS_HPP

#if __cplusplus < 201703L && (!defined(_MSVC_LANG) || _MSVC_LANG < 201703L)
#error "quorkit_results.hpp needs C++17: compile with -std=c++17 (MSVC: /std:c++17)"
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

/* A vertex has a value, but no edge at it is prescribed: see quorkitSolveWithin. */
class IsolatedVertex : public std::invalid_argument {
 public:
  explicit IsolatedVertex(std::int32_t vertex)
      : std::invalid_argument("quor: vertexValues: vertex " + std::to_string(vertex) +
                              " has a value, but no edge at it is prescribed: prescribe an edge or "
                              "a triangle"),
        vertex_(vertex) {}

  std::int32_t vertex() const { return vertex_; }

 private:
  std::int32_t vertex_;
};

/* Called with the fraction that is done, 0 .. 1, like QuorkitProgress. Returns true to cancel. */
using Progress = std::function<bool(double fraction)>;

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

/// Passes progress on to a function of the caller's, and keeps an exception of it out of C.
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
  QuorkitProgress function() const { return progress ? &Watch::call : nullptr; }
  void require(QuorkitStatus status, const QuorkitError& error) const {
    if (thrown) {
      std::rethrow_exception(thrown);
    }
    if (status != QUORKIT_DONE) {
      fail(error);
    }
  }
};

/// Throws unless there is one per triangle, or none at all.
inline void requireOnePerTriangle(std::size_t size, Span<std::int32_t> triangles,
                                  const char* what) {
  if (size != 0 && size != triangles.size() / 3) {
    throw std::invalid_argument(std::string("quor: there must be one of the ") + what +
                                " per triangle");
  }
}

/// Room for what welding gives at most.
template <class Result>
struct Room {
  Room(Span<double> points, Span<std::int32_t> triangles)
      : pointCount(quor::detail::count(points.size(), 3, "points")),
        triangleCount(detail::triangleCount(triangles)) {
    welded.vertices.resize(points.size());
    welded.triangles.resize(triangles.size());
    welded.pointMap.resize(points.size() / 3);
  }

  /// What welding wrote of it.
  Result used() {
    welded.vertices.resize(3 * static_cast<std::size_t>(vertexCount));
    welded.triangles.resize(3 * static_cast<std::size_t>(keptCount));
    return std::move(welded);
  }

  Result welded;
  std::int32_t pointCount;
  std::int32_t triangleCount;
  std::int32_t vertexCount = 0;
  std::int32_t keptCount = 0;
};

/// A view of an array of the library.
template <class T>
Span<T> view(const T* data, std::int32_t count, std::size_t each = 1) {
  return {data, data != nullptr ? each * static_cast<std::size_t>(count) : 0};
}

/// Where values begin, null where there are none.
template <class T>
const T* dataOf(Span<T> values) {
  return values.size() != 0 ? values.data() : nullptr;
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
    return mesh_ ? detail::view(mesh_->vertices, mesh_->vertexCount, 3) : Span<double>();
  }
  Span<std::int32_t> triangles() const {
    return mesh_ ? detail::view(mesh_->triangles, mesh_->triangleCount, 3) : Span<std::int32_t>();
  }
  Span<std::int32_t> triangleOrigins() const {
    return mesh_ ? detail::view(mesh_->triangleOrigins, mesh_->triangleCount)
                 : Span<std::int32_t>();
  }
  Span<std::int32_t> vertexOrigins() const {
    return mesh_ ? detail::view(mesh_->vertexOrigins, mesh_->vertexCount, 2) : Span<std::int32_t>();
  }
  /* One entry per vertex of the input of `clean`; else empty. */
  Span<std::int32_t> vertexMap() const {
    return mesh_ ? detail::view(mesh_->vertexMap, mesh_->vertexMapCount) : Span<std::int32_t>();
  }
  double longestEdge() const { return mesh_ ? mesh_->longestEdge : 0.0; }
  /* Degenerate triangles that `clean` could not remove without a crack; else 0. */
  std::int32_t degenerateCount() const { return mesh_ ? mesh_->degenerateCount : 0; }

 private:
  struct Free {
    void operator()(const QuorkitMesh* mesh) const { quorkitFreeMesh(mesh); }
  };
  std::unique_ptr<const QuorkitMesh, Free> mesh_;
};

/* The faces and feature edges of a part, owned: moves, does not copy, and is empty after a move. */
class Faces {
 public:
  Faces() = default;
  /* Takes over what quorkitFaces gave, and the number of triangles that it was given. */
  Faces(const QuorkitFaces* faces, std::int32_t triangleCount)
      : faces_(faces), triangleCount_(triangleCount) {}

  std::int32_t faceCount() const { return faces_ ? faces_->faceCount : 0; }
  std::int32_t chainCount() const { return faces_ ? faces_->chainCount : 0; }

  /* Views of the arrays of QuorkitFaces, valid as long as this. */
  Span<std::int32_t> faces() const {
    return faces_ ? detail::view(faces_->faces, triangleCount_) : Span<std::int32_t>();
  }
  Span<std::int32_t> edges() const {
    return faces_ ? detail::view(faces_->edges, faces_->edgeCount, 2) : Span<std::int32_t>();
  }
  Span<std::int32_t> chains() const {
    return faces_ ? detail::view(faces_->chains, faces_->edgeCount) : Span<std::int32_t>();
  }

 private:
  struct Free {
    void operator()(const QuorkitFaces* faces) const { quorkitFreeFaces(faces); }
  };
  std::unique_ptr<const QuorkitFaces, Free> faces_;
  std::int32_t triangleCount_ = 0;
};

/* A field within a tolerance and its mesh, owned: moves, does not copy, is empty after a move. */
class Solution {
 public:
  Solution() = default;
  /* Takes over what quorkitSolveWithin gave. */
  explicit Solution(const QuorkitSolution* solution) : solution_(solution) {}

  /* What QuorkitSolution says; all 0 when empty. */
  QuorkitSolution info() const { return solution_ ? *solution_ : QuorkitSolution{}; }
  double error() const { return info().error; }
  bool isReached() const { return info().isReached != 0; }

  /* Views of its arrays, valid as long as the solution. */
  Span<double> vertices() const { return detail::view(info().vertices, info().vertexCount, 3); }
  Span<std::int32_t> triangles() const {
    return detail::view(info().triangles, info().triangleCount, 3);
  }
  Span<double> field() const { return detail::view(info().field, info().vertexCount); }
  Span<std::int32_t> triangleOrigins() const {
    return detail::view(info().triangleOrigins, info().triangleCount);
  }
  Span<std::int32_t> vertexOrigins() const {
    return detail::view(info().vertexOrigins, info().vertexCount, 2);
  }
  Span<std::int32_t> jumps() const { return detail::view(info().jumps, info().jumpCount); }

 private:
  struct Free {
    void operator()(const QuorkitSolution* solution) const { quorkitFreeSolution(solution); }
  };
  std::unique_ptr<const QuorkitSolution, Free> solution_;
};

}  // namespace quor::kit

#endif
#endif
