// The exported functions: each checks its arguments, calls one operation and reports.
#include "quor.h"

#include "api/solver_handle.h"
#include "export/obj_writer.h"
#include "operator/construct_tagged.h"
#include "operator/mesh_check.h"
#include "solve/field_solve.h"
#include "util/integer_on_sphere.h"
#include "weld/weld.h"

#include <cassert>
#include <cstddef>

namespace {

static_assert(static_cast<StatusCode>(quor::MeshFault::none) == QUOR_SUCCESS);
static_assert(static_cast<StatusCode>(quor::MeshFault::repeatedCorner) == QUOR_REPEATED_CORNER);
static_assert(static_cast<StatusCode>(quor::MeshFault::unusedVertex) == QUOR_UNUSED_VERTEX);

const quor::SolverHandle* solver(const void* handle) {
  return static_cast<const quor::SolverHandle*>(handle);
}

void solve(const void* handle, const double* prescribedValues, const double* sourceValues,
           double* fieldOut, StatusCode* statusOut) {
  if (handle == nullptr) {
    *statusOut = QUOR_NULL_HANDLE;
    return;
  }
  if (solver(handle)->solverToCaller.empty()) {
    *statusOut = QUOR_EMPTY_HANDLE;
    return;
  }
  quor::solveField(*solver(handle), prescribedValues, sourceValues, fieldOut);
  *statusOut = QUOR_SUCCESS;
}

}  // namespace

int32_t quorWeld(int32_t pointCount, const double* points, int32_t triangleCount,
                 const int32_t* triangles, double* outVertices, int32_t* outTriangles,
                 int32_t* outPointMap, int32_t* outVertexCount, int32_t* outTriangleCount,
                 double tolerance) {
  if (pointCount < 0 || triangleCount < 0 || !(tolerance >= 0.0)) {
    return 1;
  }
  if (outVertexCount != nullptr) {
    *outVertexCount = 0;
  }
  if (outTriangleCount != nullptr) {
    *outTriangleCount = 0;
  }
  if (pointCount == 0) {
    return 0;
  }
  // From here on the count pointers must not be null, as documented.
  const quor::WeldedCounts counts =
      quor::weldMesh(pointCount, points, triangleCount, triangles, tolerance, outVertices,
                     outTriangles, outPointMap);
  // NOLINTBEGIN(clang-analyzer-core.NullDereference)
  *outVertexCount = counts.vertices;
  *outTriangleCount = counts.triangles;
  // NOLINTEND(clang-analyzer-core.NullDereference)
  return 0;
}

uint32_t quorctorTagged(int32_t n, const double* vertices, int32_t m, const int32_t* triangles,
                        const int32_t* tags, uint32_t* prescribedOut, StatusCode* statusOut,
                        void** handleOut) {
  constexpr uint32_t result = 1;  // on success and on failure alike
  *handleOut = nullptr;
  if (prescribedOut != nullptr) {
    *prescribedOut = 0;
  }
  if (n < 1) {
    *statusOut = QUOR_NO_VERTEX;
    return result;
  }
  if (m < 1) {
    *statusOut = QUOR_UNUSED_VERTEX;
    return result;
  }
  if (vertices == nullptr || triangles == nullptr || tags == nullptr) {
    *statusOut = QUOR_NULL_ARRAY;
    return result;
  }
  quor::Construction construction = quor::constructTagged(n, vertices, m, triangles, tags);
  if (prescribedOut != nullptr) {
    *prescribedOut = construction.prescribedCount;
  }
  assert((construction.handle != nullptr) == (construction.fault == quor::MeshFault::none));
  *handleOut = construction.handle.release();
  *statusOut = static_cast<StatusCode>(construction.fault);
  return result;
}

uint32_t quorinfo(const void* handle) {
  if (handle == nullptr) {
    return QUOR_INFO_NULL_HANDLE;
  }
  return static_cast<uint32_t>(solver(handle)->factorFF->info());
}

void quorsolveTagged(const void* handle, const double* prescribedValues, double* fieldOut,
                     StatusCode* statusOut) {
  solve(handle, prescribedValues, nullptr, fieldOut, statusOut);
}

void quorsolvePTagged(const void* handle, const double* prescribedValues,
                      const double* sourceValues, double* fieldOut, StatusCode* statusOut) {
  solve(handle, prescribedValues, sourceValues, fieldOut, statusOut);
}

uint64_t quoverts(const void* handle, const double** verticesOut) {
  if (handle == nullptr) {
    return 0;
  }
  *verticesOut = solver(handle)->vertices->data();
  return solver(handle)->vertices->size() / 3;
}

uint64_t quotris(const void* handle, const int32_t** trianglesOut) {
  if (handle == nullptr) {
    return 0;
  }
  *trianglesOut = solver(handle)->triangles->data();
  return solver(handle)->vertices->size() / 3;
}

void wobj(const void* handle, const double* field, const char* baseName) {
  if (handle == nullptr) {
    return;
  }
  quor::writeObjAndMtl(*solver(handle)->vertices, *solver(handle)->triangles, field, baseName);
}

void quorfree(void* handle) {
  delete static_cast<quor::SolverHandle*>(handle);
}

int32_t encode_integer_to_sphere(int32_t value, float* xOut, float* yOut, float* zOut) {
  if (xOut == nullptr || yOut == nullptr || zOut == nullptr) {
    return -1;
  }
  if (value < -1 || value > 65534) {
    *xOut = *yOut = *zOut = 0.0F;
    return -1;
  }
  const quor::SpherePoint point = quor::encodeIntegerToSphere(value);
  *xOut = point.x;
  *yOut = point.y;
  *zOut = point.z;
  return 0;
}

int32_t decode_integer_from_sphere(float x, float y, float z) {
  return quor::decodeIntegerFromSphere({x, y, z});
}
