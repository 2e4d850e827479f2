// The exported functions about meshes, files and labels: each checks its arguments and makes one
// call, guarded. Those about fields are in quorkit_fields.cpp.
#include "quorkit.h"

#include "kit/areas.h"
#include "kit/arguments.h"
#include "kit/check.h"
#include "kit/clean.h"
#include "kit/colours.h"
#include "kit/exception_guard.h"
#include "kit/faces.h"
#include "kit/flip.h"
#include "kit/measure.h"
#include "kit/mesh.h"
#include "kit/obj_file.h"
#include "kit/owned_results.h"
#include "kit/refine.h"
#include "kit/refine_to.h"
#include "kit/triangle_origins.h"
#include "util/integer_on_sphere.h"
#include "weld/weld.h"

#include <cmath>
#include <memory>
#include <vector>

namespace {

using namespace quorkit;

/// The outputs of a weld, and its tolerance.
struct Weld {
  double* vertices;
  std::int32_t* triangles;
  std::int32_t* pointMap;
  std::int32_t* vertexCount;
  std::int32_t* triangleCount;
  double tolerance;

  void require(const MeshView& soup) const {
    requireArrays(soup, 0, {"pointCount", "points", "triangleCount"});
    requireNotNull(vertices, "outVertices", soup.n > 0);
    requireNotNull(triangles, "outTriangles", soup.m > 0);
    requireNotNull(pointMap, "outPointMap", soup.n > 0);
    requireNotNull(vertexCount, "outVertexCount");
    requireNotNull(triangleCount, "outTriangleCount");
    requireBetween(tolerance, 0.0, kInfinity, "tolerance");
    requireCornersInRange(soup);
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

/// Calls an operation that checks its arguments and makes a mesh, and hands the mesh out.
template <typename Operation>
QuorkitStatus makeMesh(const QuorkitMesh** meshOut, QuorkitError* errorOut,
                       const Operation& operation) {
  return guarded(errorOut, [&] {
    requireNotNull(meshOut, "meshOut");
    *meshOut = nullptr;
    *meshOut = std::make_unique<OwnedMesh>(operation()).release();
  });
}

}  // namespace

const char* quorkitStatusText(QuorkitStatus status) {
  switch (status) {
    case QUORKIT_DONE:
      return "done";
    case QUORKIT_BAD_ARGUMENT:
      return "an argument is not what the function asks for";
    case QUORKIT_OUT_OF_MEMORY:
      return "out of memory";
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

// The weld writes to all of the arrays.  NOLINTBEGIN(readability-non-const-parameter)
QuorkitStatus quorkitWeld(int32_t pointCount, const double* points, int32_t triangleCount,
                          const int32_t* triangles, double* outVertices, int32_t* outTriangles,
                          int32_t* outPointMap, int32_t* outVertexCount, int32_t* outTriangleCount,
                          double tolerance, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const Weld weld = {outVertices,    outTriangles,     outPointMap,
                       outVertexCount, outTriangleCount, tolerance};
    const MeshView soup = {pointCount, points, triangleCount, triangles};
    weld.require(soup);
    weld.make(soup);
  });
}

QuorkitStatus quorkitWeldOrigins(int32_t pointCount, const double* points, int32_t triangleCount,
                                 const int32_t* triangles, double* outVertices,
                                 int32_t* outTriangles, int32_t* outPointMap,
                                 int32_t* outTriangleOrigins, int32_t* outVertexCount,
                                 int32_t* outTriangleCount, double tolerance,
                                 QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const Weld weld = {outVertices,    outTriangles,     outPointMap,
                       outVertexCount, outTriangleCount, tolerance};
    const MeshView soup = {pointCount, points, triangleCount, triangles};
    requireNotNull(outTriangleOrigins, "outTriangleOrigins", triangleCount > 0);
    weld.require(soup);
    *outVertexCount = 0;
    *outTriangleCount = 0;
    std::vector<std::int32_t> copy;  // of what is written over
    if (outTriangles == triangles) {
      copy.assign(triangles, triangles + 3 * soup.triangleCount());
    }
    weld.make(soup);
    triangleOrigins(copy.empty() ? triangles : copy.data(), outPointMap, *outTriangleCount,
                    outTriangles, outTriangleOrigins);
  });
}
// NOLINTEND(readability-non-const-parameter)

QuorkitStatus quorkitCheck(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const int32_t* tags, QuorkitReport* reportOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireArrays(mesh);
    requireNotNull(reportOut, "reportOut");
    *reportOut = check(mesh, {tags, nullptr, nullptr});
  });
}

QuorkitStatus quorkitCheckRegions(int32_t n, const double* vertices, int32_t m,
                                  const int32_t* triangles, const int32_t* regions,
                                  const double* values, QuorkitReport* reportOut,
                                  QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireArrays(mesh);
    requireNotNull(regions, "regions", n > 0);
    requireNotNull(reportOut, "reportOut");
    *reportOut = check(mesh, {nullptr, regions, values});
  });
}

void quorkitFreeMesh(const QuorkitMesh* mesh) {
  delete static_cast<const OwnedMesh*>(mesh);
}

QuorkitStatus quorkitClean(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const QuorkitMesh** meshOut, QuorkitError* errorOut) {
  return makeMesh(meshOut, errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireMesh(mesh);
    requireUsedVerticesFinite(mesh);
    return clean(mesh);
  });
}

QuorkitStatus quorkitRefine(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                            double longestEdge, const QuorkitMesh** meshOut,
                            QuorkitError* errorOut) {
  return makeMesh(meshOut, errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireLength(longestEdge, "longestEdge");
    requireSoundMesh(mesh);
    return refine(mesh, {longestEdge});
  });
}

QuorkitStatus quorkitRefineGraded(int32_t n, const double* vertices, int32_t m,
                                  const int32_t* triangles, double longestEdge, const double* sizes,
                                  const QuorkitMesh** meshOut, QuorkitError* errorOut) {
  return makeMesh(meshOut, errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireLength(longestEdge, "longestEdge");
    requireSoundMesh(mesh);
    requireNotNull(sizes, "sizes", n > 0);
    requireSizes(sizes, mesh.vertexCount());
    return refine(mesh, {longestEdge, sizes});
  });
}

QuorkitStatus quorkitRefineTo(int32_t n, const double* vertices, int32_t m,
                              const int32_t* triangles, int32_t triangleCount,
                              const QuorkitMesh** meshOut, QuorkitError* errorOut) {
  return makeMesh(meshOut, errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireInRange(triangleCount, 1, kMostTriangles, "triangleCount");
    requireSoundMesh(mesh);
    return refineTo(mesh, triangleCount);
  });
}

QuorkitStatus quorkitFaces(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           double angle, const QuorkitFaces** facesOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireNotNull(facesOut, "facesOut");
    *facesOut = nullptr;
    const MeshView mesh = {n, vertices, m, triangles};
    requireInside(angle, 0.0, 90.0, "angle");
    requireSoundMesh(mesh);
    constexpr double kUsual = 30.0;
    constexpr double kUsualCosine = 0.86602540378443865;  // the same everywhere
    constexpr double kDegree = 0.017453292519943295;
    const double cosine = angle == kUsual ? kUsualCosine : std::cos(kDegree * angle);
    *facesOut = std::make_unique<OwnedFaces>(findFaces(mesh, cosine)).release();
  });
}

void quorkitFreeFaces(const QuorkitFaces* faces) {
  delete static_cast<const OwnedFaces*>(faces);
}

QuorkitStatus quorkitFlip(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                          const int32_t* faces, const QuorkitMesh** meshOut,
                          QuorkitError* errorOut) {
  return makeMesh(meshOut, errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireSoundMesh(mesh);
    return flip(mesh, faces);
  });
}

QuorkitStatus quorkitAreas(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           double* areasOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireMesh(mesh);
    requireNotNull(areasOut, "areasOut", n > 0);
    areas(mesh, areasOut);
  });
}

QuorkitStatus quorkitColours(int32_t n, const double* field, double low, double high,
                             uint8_t* rgbaOut, QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireAtLeast(n, 0, "n");
    requireNotNull(field, "field", n > 0);
    requireNotNull(rgbaOut, "rgbaOut", n > 0);
    requireFinite(low, "low");
    requireFinite(high, "high");
    colours(toSize(n), field, low, high, rgbaOut);
  });
}

QuorkitStatus quorkitWrite(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                           const double* field, const char* path, const char* ramp, double margin,
                           QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    const MeshView mesh = {n, vertices, m, triangles};
    requireAtLeast(n, 1, "n");
    requireMesh(mesh);
    requireVerticesFinite(mesh);
    requireNotNull(field, "field");
    requireFinite(field, mesh.vertexCount(), "field");
    requireBetween(margin, 0.0, 1.0, "margin");
    writeObj(mesh, field, {requireBasePath(path), ramp}, margin);
  });
}

QuorkitStatus quorkitEncodeToSphere(int32_t value, float* xOut, float* yOut, float* zOut,
                                    QuorkitError* errorOut) {
  return guarded(errorOut, [&] {
    requireInRange(value, -1, 65534, "value");
    requireNotNull(xOut, "xOut");
    requireNotNull(yOut, "yOut");
    requireNotNull(zOut, "zOut");
    const quor::SpherePoint point = quor::encodeIntegerToSphere(value);
    *xOut = point.x;
    *yOut = point.y;
    *zOut = point.z;
  });
}

int32_t quorkitDecodeFromSphere(float x, float y, float z) {
  return quor::decodeIntegerFromSphere({x, y, z});
}
