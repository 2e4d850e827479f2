#include "kit/arguments.h"

#include "kit/bad_argument.h"
#include "kit/boundary_values.h"
#include "kit/triangle_shape.h"

#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

namespace quorkit {
namespace {

const std::int32_t* cornersOf(const MeshView& mesh, std::size_t t) {
  return mesh.triangles + 3 * t;
}

[[noreturn]] void refuseVertex(const MeshView& mesh, std::size_t v) {
  const double* const p = mesh.vertices + 3 * v;
  throw BadArgument(QUORKIT_NOT_FINITE, "vertices", toIndex(v),
                    ErrorText() << "vertices: vertex " << toIndex(v) << " is at (" << p[0] << ", "
                                << p[1] << ", " << p[2] << "): give finite coordinates");
}

bool isPointFinite(const double* p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

}  // namespace

void requireNotNull(const void* pointer, const char* argument, bool isNeeded) {
  if (pointer == nullptr && isNeeded) {
    throw BadArgument(QUORKIT_NULL, argument, -1, ErrorText() << argument << " is null");
  }
}

void requireInRange(std::int32_t number, std::int32_t low, std::int32_t high,
                    const char* argument) {
  if (number < low || number > high) {
    ErrorText text;
    text << argument << " is " << number << ": give " << low;
    if (high == std::numeric_limits<std::int32_t>::max()) {
      text << " or more";
    } else {
      text << " .. " << high;
    }
    throw BadArgument(QUORKIT_OUT_OF_RANGE, argument, -1, text);
  }
}

void requireAtLeast(std::int32_t number, std::int32_t low, const char* argument) {
  requireInRange(number, low, std::numeric_limits<std::int32_t>::max(), argument);
}

void requireLength(double length, const char* argument) {
  if (!(length > 0.0) || !std::isfinite(length)) {
    throw BadArgument(
        QUORKIT_OUT_OF_RANGE, argument, -1,
        ErrorText() << argument << " is " << length << ": give a finite number above 0");
  }
}

void requireBetween(double number, double low, double high, const char* argument) {
  if (!(number >= low && number <= high)) {
    ErrorText text;
    text << argument << " is " << number << ": give " << low;
    if (std::isinf(high)) {
      text << " or more";
    } else {
      text << " .. " << high;
    }
    throw BadArgument(QUORKIT_OUT_OF_RANGE, argument, -1, text);
  }
}

void requireInside(double number, double low, double high, const char* argument) {
  if (!(number > low && number < high)) {
    throw BadArgument(QUORKIT_OUT_OF_RANGE, argument, -1,
                      ErrorText() << argument << " is " << number << ": give a number above " << low
                                  << " and below " << high);
  }
}

void requireFinite(double number, const char* argument) {
  if (!std::isfinite(number)) {
    throw BadArgument(QUORKIT_NOT_FINITE, argument, -1,
                      ErrorText() << argument << " is " << number << ": give a finite number");
  }
}

void requireFinite(const double* values, std::size_t count, const char* argument,
                   bool isMissingNan) {
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(values[i]) && !(isMissingNan && std::isnan(values[i]))) {
      throw BadArgument(QUORKIT_NOT_FINITE, argument, toIndex(i),
                        ErrorText() << argument << ": entry " << toIndex(i) << " is " << values[i]
                                    << ": give finite numbers");
    }
  }
}

void requireSizes(const double* sizes, std::size_t count) {
  for (std::size_t v = 0; v < count; ++v) {
    if (!(sizes[v] > 0.0)) {
      throw BadArgument(QUORKIT_OUT_OF_RANGE, "sizes", toIndex(v),
                        ErrorText() << "sizes: entry " << toIndex(v) << " is " << sizes[v]
                                    << ": give numbers above 0");
    }
  }
}

void requireBelow(const std::int32_t* numbers, std::size_t count, std::int32_t end,
                  const char* argument) {
  for (std::size_t i = 0; i < count; ++i) {
    if (numbers[i] >= end) {
      throw BadArgument(QUORKIT_OUT_OF_RANGE, argument, toIndex(i),
                        ErrorText() << argument << ": entry " << toIndex(i) << " is " << numbers[i]
                                    << ": give numbers below " << end);
    }
  }
}

void requireArrays(const MeshView& mesh, std::int32_t fewest, const MeshNames& names) {
  requireAtLeast(mesh.n, fewest, names.n);
  requireAtLeast(mesh.m, fewest, names.m);
  requireNotNull(mesh.vertices, names.vertices, mesh.n > 0);
  requireNotNull(mesh.triangles, "triangles", mesh.m > 0);
}

void requireCornersInRange(const MeshView& mesh) {
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const std::int32_t corner = mesh.triangles[k];
    if (corner < 0 || corner >= mesh.n) {
      const std::int32_t t = toIndex(k / 3);
      throw BadArgument(QUORKIT_OUT_OF_RANGE, "triangles", t,
                        ErrorText() << "triangles: triangle " << t << " has the corner " << corner
                                    << ": give indices from 0 to below " << mesh.n);
    }
  }
}

void requireMesh(const MeshView& mesh) {
  requireArrays(mesh);
  requireCornersInRange(mesh);
}

void requireVerticesFinite(const MeshView& mesh) {
  for (std::size_t v = 0; v < mesh.vertexCount(); ++v) {
    if (!isPointFinite(mesh.vertices + 3 * v)) {
      refuseVertex(mesh, v);
    }
  }
}

void requireUsedVerticesFinite(const MeshView& mesh) {
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const std::size_t corner = toSize(mesh.triangles[k]);
    if (!isPointFinite(mesh.vertices + 3 * corner)) {
      refuseVertex(mesh, corner);
    }
  }
}

void requireCornersDifferent(const MeshView& mesh) {
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const c = cornersOf(mesh, t);
    if (c[0] == c[1] || c[1] == c[2] || c[2] == c[0]) {
      throw BadArgument(QUORKIT_REPEATED_CORNER, "triangles", toIndex(t),
                        ErrorText()
                            << "triangles: triangle " << toIndex(t) << " has the corners " << c[0]
                            << ", " << c[1] << ", " << c[2] << ": drop it with quorkitClean");
    }
  }
}

void requireVerticesUsed(const MeshView& mesh) {
  std::vector<bool> isUsed(mesh.vertexCount());
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    isUsed[toSize(mesh.triangles[k])] = true;
  }
  for (std::size_t v = 0; v < isUsed.size(); ++v) {
    if (!isUsed[v]) {
      throw BadArgument(QUORKIT_UNUSED_VERTEX, "vertices", toIndex(v),
                        ErrorText() << "vertices: no triangle uses vertex " << toIndex(v)
                                    << ": drop it with quorkitClean");
    }
  }
}

void requireNoDegenerateTriangle(const MeshView& mesh) {
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const c = cornersOf(mesh, t);
    if (shapeOf({pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                 pointAt(mesh.vertices, c[2])})
            .isFlat()) {
      throw BadArgument(QUORKIT_DEGENERATE, "triangles", toIndex(t),
                        ErrorText() << "triangles: triangle " << toIndex(t)
                                    << " is degenerate: remove it with quorkitClean");
    }
  }
}

void requireSoundMesh(const MeshView& mesh) {
  requireMesh(mesh);
  requireCornersDifferent(mesh);
  requireVerticesFinite(mesh);
}

void requireProblem(const QuorkitProblem& problem, const MeshView& mesh) {
  requireArrays(mesh, 1);
  requireSoundMesh(mesh);
  requireVerticesUsed(mesh);
  requireNoDegenerateTriangle(mesh);
  requireLength(problem.tolerance, "tolerance");
  requireAtLeast(problem.triangleLimit, 0, "triangleLimit");
  requireAtLeast(problem.edgeCount, 0, "edgeCount");
  requireNotNull(problem.edges, "edges", problem.edgeCount > 0);
  requireNotNull(problem.edgeValues, "edgeValues", problem.edgeCount > 0);
  if (problem.triangleValues != nullptr) {
    requireFinite(problem.triangleValues, mesh.triangleCount(), "triangleValues", true);
  }
  if (problem.vertexValues != nullptr) {
    requireFinite(problem.vertexValues, mesh.vertexCount(), "vertexValues", true);
  }
  if (problem.sources != nullptr) {
    requireFinite(problem.sources, mesh.triangleCount(), "sources");
  }
  requireFinite(problem.edgeValues, toSize(problem.edgeCount), "edgeValues");
  const std::int32_t e = firstNoEdge(mesh, problem.edgeCount, problem.edges);
  if (e >= 0) {
    throw BadArgument(QUORKIT_NO_EDGE, "edges", e,
                      ErrorText() << "edges: no edge of the mesh joins the vertices "
                                  << problem.edges[2 * toSize(e)] << " and "
                                  << problem.edges[2 * toSize(e) + 1] << " of edge " << e);
  }
}

std::string requireBasePath(const char* path) {
  requireNotNull(path, "path");
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
  if (separator + 1 == base.size()) {
    throw BadArgument(QUORKIT_OUT_OF_RANGE, "path", -1,
                      ErrorText() << "path names no file: end it with the name of one");
  }
  return std::string(base);
}

}  // namespace quorkit
