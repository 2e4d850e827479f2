#include "operator/vertex_partition.h"

#include <cassert>
#include <cstddef>

namespace quor {
namespace {

bool isPrescribed(std::int32_t tag) {
  return tag >= 1 && tag <= 3;
}

}  // namespace

VertexPartition partitionVertices(std::int32_t n, const std::int32_t* tags) {
  VertexPartition partition;
  partition.callerToSolver.resize(static_cast<std::size_t>(n));
  partition.solverToCaller.resize(static_cast<std::size_t>(n));
  std::int32_t prescribed = 0;
  for (std::int32_t i = 0; i < n; ++i) {
    // A free vertex has `prescribed` vertices and n-1-i yet unseen ones before it.
    const std::int32_t k = isPrescribed(tags[i]) ? prescribed++ : prescribed + (n - 1 - i);
    assert(0 <= k && k < n);
    partition.callerToSolver[static_cast<std::size_t>(i)] = k;
    partition.solverToCaller[static_cast<std::size_t>(k)] = i;
  }
  partition.prescribedCount = static_cast<std::uint32_t>(prescribed);
  return partition;
}

std::vector<double> reorderCoordinates(const double* vertices,
                                       const std::vector<std::int32_t>& callerToSolver) {
  std::vector<double> reordered(3 * callerToSolver.size());
  for (std::size_t i = 0; i < callerToSolver.size(); ++i) {
    const auto k = static_cast<std::size_t>(callerToSolver[i]);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      reordered[3 * k + axis] = vertices[3 * i + axis];
    }
  }
  return reordered;
}

std::vector<std::int32_t> reorderTriangles(std::int32_t m, const std::int32_t* triangles,
                                           const std::vector<std::int32_t>& callerToSolver) {
  std::vector<std::int32_t> reordered(3 * static_cast<std::size_t>(m));
  for (std::size_t corner = 0; corner < reordered.size(); ++corner) {
    reordered[corner] = callerToSolver[static_cast<std::size_t>(triangles[corner])];
  }
  return reordered;
}

}  // namespace quor
