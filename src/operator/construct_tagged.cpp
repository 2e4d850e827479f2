#include "operator/construct_tagged.h"

#include "api/solver_handle.h"
#include "operator/stiffness_assembly.h"
#include "operator/vertex_partition.h"

#include <cassert>
#include <limits>
#include <stdexcept>
#include <utility>

namespace quor {

/// 3n is counted in 32 bits without sign, and the 9m contributions of the assembly in 32 bits with
/// sign.
void requireSizesFit(std::int32_t n, std::int32_t m) {
  constexpr auto maxVertices = std::numeric_limits<std::uint32_t>::max() / 3;
  constexpr auto maxTriangles = std::numeric_limits<std::int32_t>::max() / 9;
  if (static_cast<std::uint32_t>(n) > maxVertices || m > maxTriangles) {
    throw std::length_error("vector");
  }
}

Construction constructTagged(std::int32_t n, const double* vertices, std::int32_t m,
                             const std::int32_t* triangles, const std::int32_t* tags,
                             const Progress& progress) {
  requireSizesFit(n, m);
  VertexPartition partition = partitionVertices(n, tags);
  Construction result;
  result.prescribedCount = partition.prescribedCount;
  quogeommallocsur(n, partition.prescribedCount,
                   reorderCoordinates(vertices, partition.callerToSolver),
                   reorderTriangles(m, triangles, partition.callerToSolver), &result.fault,
                   &result.handle, progress);
  assert((result.handle == nullptr) == (result.fault != MeshFault::none));
  if (result.handle) {
    result.handle->callerToSolver = std::move(partition.callerToSolver);
    result.handle->solverToCaller = std::move(partition.solverToCaller);
    result.handle->tags.assign(tags, tags + n);
  }
  return result;
}

void quogeommallocsur(std::int32_t n, std::uint32_t prescribedCount,
                      std::vector<double> coordinates, std::vector<std::int32_t> triangles,
                      MeshFault* faultOut, std::unique_ptr<SolverHandle>* handleOut,
                      const Progress& progress) {
  assert(n >= 0 && prescribedCount <= static_cast<std::uint32_t>(n));
  assert(coordinates.size() == 3 * static_cast<std::size_t>(n) && triangles.size() % 3 == 0);
  auto handle = std::make_unique<SolverHandle>();
  handle->prescribedCount = prescribedCount;
  handle->vertexCount = static_cast<std::uint64_t>(n);
  handle->vertices = std::make_shared<const std::vector<double>>(std::move(coordinates));
  handle->triangles = std::make_shared<const std::vector<std::int32_t>>(std::move(triangles));

  *faultOut = checkMesh(n, *handle->triangles);
  if (*faultOut != MeshFault::none) {
    handleOut->reset();
    return;
  }
  constexpr double kAssembly = 0.15;  // of the time, of a mesh that takes long
  StiffnessBlocks stiffness =
      assembleStiffness(n, static_cast<std::int32_t>(prescribedCount), *handle->vertices,
                        *handle->triangles, progress.part(0.0, kAssembly));
  handle->stiffnessFP = std::move(stiffness.FP);
  handle->stiffnessFF = std::move(stiffness.FF);
  handle->factorFF =
      std::make_shared<const Factorization>(*handle->stiffnessFF, progress.part(kAssembly, 1.0));
  *handleOut = std::move(handle);
}

}  // namespace quor
