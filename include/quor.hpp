/*
 * quor.hpp - the C++ wrapper of quor.h: the same eleven functions with vectors, a solver that frees
 * itself, and exceptions. C++17, header only; link the same library.
 *
 *   const quor::Welded mesh = quor::weld(points, triangles, 1e-6);
 *   const std::vector<std::int32_t> tags = ...;           // one per vertex: 1, 2, 3 are prescribed
 *   const quor::Solver solver(mesh.vertices, mesh.triangles, tags);
 *   const std::vector<double> field = solver.solve(values);
 *   solver.writeObj(quor::toSolverOrder(field, tags), "plate");
 *
 * What the functions compute, and their orders, limits and threads, is told in quor.h and holds
 * here word for word; the const members of a Solver are the calls that may overlap. This header
 * adds
 *
 *   sizes     Every span is checked: std::invalid_argument when its length is not what the others
 *             ask for or not a multiple of three, std::length_error when it holds more than
 *             2,147,483,647 vertices or triangles.
 *   corners   weld and the solver look at every corner index: std::out_of_range outside the mesh.
 *   status    quor::Error with the status code, or the code itself (Solver::make).
 *   sense     Solver refuses what has no field: std::invalid_argument for a coordinate that is not
 *             finite, quor::Unprescribed for a component without a prescribed vertex, quor::Error
 *             for a singular matrix. Solver::make accepts all three.
 *
 * and passes std::bad_alloc and std::length_error of the library on, to be caught as quor.h tells.
 *
 * To work without the copies into new vectors call the C functions with Solver::handle().
 */
#ifndef QUOR_HPP
#define QUOR_HPP

#if __cplusplus < 201703L && (!defined(_MSVC_LANG) || _MSVC_LANG < 201703L)
#error "quor.hpp needs C++17: compile with -std=c++17 (MSVC: /std:c++17), or take quor.h"
#else

#include "quor.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace quor {

/*
 * A view of `size()` values to be read, owned by somebody else: of a std::vector, a std::array, a
 * C array, whatever else has data() and size() over exactly this type, or a pointer and a count.
 * Functions take it by value and use it during the call only.
 */
template <class T>
class Span {
 public:
  Span() = default;
  Span(const T* data, std::size_t size) : data_(data), size_(size) {}

  template <class Range, class Pointer = decltype(std::data(std::declval<const Range&>())),
            class = std::enable_if_t<std::is_same_v<Pointer, const T*> > >
  Span(const Range& range)
      : data_(std::data(range)), size_(std::size(range)) {}  // NOLINT: implicit

  const T* data() const { return data_; }
  std::size_t size() const { return size_; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }

 private:
  const T* data_ = nullptr;
  std::size_t size_ = 0;
};

/* No solver for this mesh: the status is not 0, or the factorization failed (info), or the mesh has
   no field (Unprescribed). */
class Error : public std::runtime_error {
 public:
  Error(QuorStatusCode status, std::uint32_t info, const char* text)
      : std::runtime_error(text), status_(status), info_(info) {}

  QuorStatusCode status() const { return status_; } /* one of the status codes of quor.h */
  std::uint32_t info() const { return info_; }      /* one of the QUOR_INFO_ numbers */

 private:
  QuorStatusCode status_;
  std::uint32_t info_;
};

/* No solver for this mesh: a component of it has no prescribed vertex, so it has no field. */
class Unprescribed : public Error {
 public:
  explicit Unprescribed(std::int32_t vertex,
                        const std::string& remedy = "tag one of its vertices 1, 2 or 3")
      : Error(QUOR_SUCCESS, QUOR_INFO_NUMERICAL_ISSUE,
              ("quor: nothing is prescribed on the component of vertex " + std::to_string(vertex) +
               ": " + remedy)
                  .c_str()),
        vertex_(vertex) {}

  std::int32_t vertex() const { return vertex_; } /* the lowest one of the component */

 private:
  std::int32_t vertex_;
};

/* What quorWeld writes. The vectors keep the capacity of the input: shrink_to_fit if that matters.
 */
struct Welded {
  std::vector<double> vertices;        /* three coordinates each */
  std::vector<std::int32_t> triangles; /* three vertex indices each */
  std::vector<std::int32_t> pointMap;  /* one entry per point: the vertex that it became */
};

namespace detail {

/// How many groups of `each` values there are.
inline std::int32_t count(std::size_t size, std::size_t each, const char* what) {
  if (size % each != 0) {
    throw std::invalid_argument(std::string("quor: the length of ") + what +
                                " is not a multiple of three");
  }
  if (size / each > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw std::length_error(std::string("quor: too many ") + what);
  }
  return static_cast<std::int32_t>(size / each);
}

inline void requireOnePerVertex(std::size_t size, std::size_t vertexCount, const char* what) {
  if (size != vertexCount) {
    throw std::invalid_argument(std::string("quor: there must be one of the ") + what +
                                " per vertex");
  }
}

inline void requireCorners(Span<std::int32_t> triangles, std::int32_t vertexCount) {
  for (std::size_t k = 0; k < triangles.size(); ++k) {
    if (triangles[k] < 0 || triangles[k] >= vertexCount) {
      throw std::out_of_range("quor: triangles: triangle " + std::to_string(k / 3) +
                              " has the corner " + std::to_string(triangles[k]) + " in a mesh of " +
                              std::to_string(vertexCount) + " vertices");
    }
  }
}

/// Which vertices triangles connect: a forest whose roots stand for the components.
class Components {
 public:
  explicit Components(std::size_t vertexCount) : parents_(vertexCount) {
    for (std::size_t v = 0; v < vertexCount; ++v) {
      parents_[v] = v;
    }
  }

  std::size_t rootOf(std::size_t v) {
    while (parents_[v] != v) {
      v = parents_[v] = parents_[parents_[v]];
    }
    return v;
  }
  void join(std::size_t v, std::size_t w) {
    const std::size_t a = rootOf(v);
    const std::size_t b = rootOf(w);
    parents_[a > b ? a : b] = a > b ? b : a;  // so a root is the lowest vertex of its component
  }

 private:
  std::vector<std::size_t> parents_;
};

/// Throws unless all coordinates are finite and every component has a prescribed vertex. Triangles
/// with a corner outside the mesh and vertices of no triangle are not looked at.
inline void requireSolvable(Span<double> vertices, Span<std::int32_t> triangles,
                            Span<std::int32_t> tags) {
  for (std::size_t k = 0; k < vertices.size(); ++k) {
    if (!std::isfinite(vertices[k])) {
      throw std::invalid_argument("quor: vertices: a coordinate of vertex " +
                                  std::to_string(k / 3) + " is not finite");
    }
  }
  Components components(tags.size());
  std::vector<bool> isUsed(tags.size());
  for (std::size_t k = 0; k + 2 < triangles.size(); k += 3) {
    const auto a = static_cast<std::size_t>(triangles[k]);  // a negative one becomes a large one
    const auto b = static_cast<std::size_t>(triangles[k + 1]);
    const auto c = static_cast<std::size_t>(triangles[k + 2]);
    if (a < tags.size() && b < tags.size() && c < tags.size()) {
      components.join(a, b);
      components.join(a, c);
      isUsed[a] = isUsed[b] = isUsed[c] = true;
    }
  }
  std::vector<bool> isPrescribed(tags.size());
  for (std::size_t v = 0; v < tags.size(); ++v) {
    if (tags[v] >= 1 && tags[v] <= 3) {
      isPrescribed[components.rootOf(v)] = true;
    }
  }
  for (std::size_t v = 0; v < tags.size(); ++v) {
    if (isUsed[v] && components.rootOf(v) == v && !isPrescribed[v]) {
      throw Unprescribed(static_cast<std::int32_t>(v));
    }
  }
}

/// Opens a file for writing and leaves it as it is.
inline void requireWritable(const std::string& file) {
  errno = 0;
  if (!std::ofstream(file, std::ios::app)) {
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), "quor: " + file);
  }
}

inline const char* textOf(QuorStatusCode status) {
  switch (status) {
    case QUOR_NO_VERTEX:
      return "quor: no vertex";
    case QUOR_REPEATED_CORNER:
      return "quor: a triangle has two equal corner indices";
    case QUOR_UNUSED_VERTEX:
      return "quor: no triangle, or a vertex that no triangle uses";
    case QUOR_NULL_ARRAY:
      return "quor: an array is null";
    default:
      return "quor: no factorization, a pivot was exactly zero";
  }
}

inline void requireFactorized(QuorStatusCode status, std::uint32_t info) {
  if (status != QUOR_SUCCESS || info != QUOR_INFO_SUCCESS) {
    throw Error(status, info, textOf(status));
  }
}

}  // namespace detail

/*
 * quorWeld. Throws std::invalid_argument when the tolerance is negative or NaN.
 *
 *   points     three coordinates per point
 *   triangles  three point indices per triangle
 *   tolerance  absolute distance
 */
inline Welded weld(Span<double> points, Span<std::int32_t> triangles, double tolerance) {
  const std::int32_t pointCount = detail::count(points.size(), 3, "points");
  const std::int32_t triangleCount = detail::count(triangles.size(), 3, "triangles");
  detail::requireCorners(triangles, pointCount);
  Welded welded;
  welded.vertices.resize(points.size());
  welded.triangles.resize(triangles.size());
  welded.pointMap.resize(points.size() / 3);
  std::int32_t vertexCount = 0;
  std::int32_t keptCount = 0;
  if (quorWeld(pointCount, points.data(), triangleCount, triangles.data(), welded.vertices.data(),
               welded.triangles.data(), welded.pointMap.data(), &vertexCount, &keptCount,
               tolerance) != 0) {
    throw std::invalid_argument("quor: the tolerance is negative or not a number");
  }
  welded.vertices.resize(3 * static_cast<std::size_t>(vertexCount));
  welded.triangles.resize(3 * static_cast<std::size_t>(keptCount));
  return welded;
}

/* A solver handle, owned: moves, does not copy, and is empty after a move. */
class Solver {
 public:
  /* An empty solver: no vertices, info() says QUOR_INFO_NULL_HANDLE. */
  Solver() = default;

  /*
   * quorctorTagged and quorinfo in one: throws unless the mesh has a field and has been accepted
   * and factorized. See "sense" above.
   *
   *   vertices   three coordinates per vertex
   *   triangles  three vertex indices per triangle
   *   tags       one per vertex; 1, 2 and 3 are prescribed
   */
  Solver(Span<double> vertices, Span<std::int32_t> triangles, Span<std::int32_t> tags) {
    detail::requireOnePerVertex(tags.size(), vertices.size() / 3, "tags");
    detail::requireSolvable(vertices, triangles, tags);
    QuorStatusCode status = QUOR_SUCCESS;
    *this = make(vertices, triangles, tags, status);
    detail::requireFactorized(status, info());
  }

  /*
   * Accepts whatever quorctorTagged accepts: writes the status, and returns an empty solver unless
   * that is QUOR_SUCCESS. As in C, ask info() whether the factorization succeeded.
   */
  static Solver make(Span<double> vertices, Span<std::int32_t> triangles, Span<std::int32_t> tags,
                     QuorStatusCode& status) {
    const std::int32_t n = detail::count(vertices.size(), 3, "vertices");
    const std::int32_t m = detail::count(triangles.size(), 3, "triangles");
    detail::requireOnePerVertex(tags.size(), vertices.size() / 3, "tags");
    detail::requireCorners(triangles, n);
    Solver solver;
    void* handle = nullptr;
    quorctorTagged(n, vertices.data(), m, triangles.data(), tags.data(), &solver.prescribedCount_,
                   &status, &handle);
    solver.handle_.reset(handle);
    solver.triangleCount_ = triangles.size() / 3;
    return solver;
  }

  /* Whether there is a solver, factorized or not. */
  explicit operator bool() const { return handle_ != nullptr; }

  /* What the C functions take; null when empty. Stays owned: never pass it to quorfree. */
  const void* handle() const { return handle_.get(); }

  /* quorinfo. */
  std::uint32_t info() const { return quorinfo(handle()); }

  std::size_t vertexCount() const { return vertices().size() / 3; }
  std::size_t prescribedCount() const { return handle_ ? prescribedCount_ : 0; }

  /* quorsolveTagged, quorsolvePTagged: one value per vertex in and out, in the caller's order. */
  std::vector<double> solve(Span<double> prescribedValues) const {
    detail::requireOnePerVertex(prescribedValues.size(), vertexCount(), "prescribed values");
    std::vector<double> field(prescribedValues.size());
    QuorStatusCode status =
        QUOR_SUCCESS;  // there is no other: an empty solver takes and gives nothing
    quorsolveTagged(handle(), prescribedValues.data(), field.data(), &status);
    return field;
  }
  std::vector<double> solve(Span<double> prescribedValues, Span<double> sourceValues) const {
    detail::requireOnePerVertex(prescribedValues.size(), vertexCount(), "prescribed values");
    detail::requireOnePerVertex(sourceValues.size(), vertexCount(), "source values");
    std::vector<double> field(prescribedValues.size());
    QuorStatusCode status = QUOR_SUCCESS;
    quorsolvePTagged(handle(), prescribedValues.data(), sourceValues.data(), field.data(), &status);
    return field;
  }

  /* quoverts, quotris: views of the stored mesh in solver order, valid as long as the handle. */
  Span<double> vertices() const {
    const double* data = nullptr;
    const auto n = static_cast<std::size_t>(quoverts(handle(), &data));
    return {data, 3 * n};
  }
  Span<std::int32_t> triangles() const {
    const std::int32_t* data = nullptr;
    quotris(handle(), &data);
    return {data, handle_ ? 3 * triangleCount_ : 0};
  }

  /*
   * wobj: writes baseName + ".obj" and ".mtl". The field is in SOLVER order: see toSolverOrder. An
   * empty solver writes nothing. Throws std::system_error when a file cannot be opened; a disk that
   * runs full is not noticed.
   */
  void writeObj(Span<double> fieldInSolverOrder, const std::string& baseName) const {
    detail::requireOnePerVertex(fieldInSolverOrder.size(), vertexCount(), "field values");
    if (handle_) {
      detail::requireWritable(baseName + ".obj");  // the library would only print a line
      detail::requireWritable(baseName + ".mtl");
      wobj(handle(), fieldInSolverOrder.data(), baseName.c_str());
    }
  }

 private:
  struct Free {
    void operator()(void* handle) const { quorfree(handle); }
  };
  std::unique_ptr<void, Free> handle_;
  std::size_t triangleCount_ = 0;
  std::uint32_t prescribedCount_ = 0;
};

/*
 * Values in the caller's order, one per vertex, put into solver order: those of prescribed vertices
 * first, then the free ones reversed. `tags` are those that the solver was made with.
 */
inline std::vector<double> toSolverOrder(Span<double> values, Span<std::int32_t> tags) {
  detail::requireOnePerVertex(values.size(), tags.size(), "values");
  std::vector<double> ordered(values.size());
  std::size_t prescribed = 0;
  std::size_t next = values.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const bool isPrescribed = tags[i] >= 1 && tags[i] <= 3;
    ordered[isPrescribed ? prescribed++ : --next] = values[i];
  }
  return ordered;
}

/* encode_integer_to_sphere. Throws std::out_of_range unless the value is in -1 .. 65534. */
inline std::array<float, 3> sphereFromInteger(std::int32_t value) {
  std::array<float, 3> point{};
  auto& [x, y, z] = point;
  if (encode_integer_to_sphere(value, &x, &y, &z) != 0) {
    throw std::out_of_range("quor: only -1 .. 65534 can be put on the sphere");
  }
  return point;
}

/* decode_integer_from_sphere. */
inline std::int32_t integerFromSphere(const std::array<float, 3>& point) {
  return decode_integer_from_sphere(point[0], point[1], point[2]);
}

}  // namespace quor

#endif
#endif
