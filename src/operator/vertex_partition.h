// Splits the vertices into prescribed and free ones and puts the mesh into solver order.
#pragma once

#include <cstdint>
#include <vector>

namespace quor {

/// Two permutations, inverse to each other, and the number of prescribed vertices.
struct VertexPartition {
  std::vector<std::int32_t> callerToSolver;  ///< n
  std::vector<std::int32_t> solverToCaller;  ///< n
  std::uint32_t prescribedCount = 0;
};

/// Vertices tagged 1, 2 or 3 come first, in their order; all others follow in reverse order.
/// @param n     number of vertices, at least 1
/// @param tags  n tags
VertexPartition partitionVertices(std::int32_t n, const std::int32_t* tags);

/// @return 3n coordinates: those of vertex i at callerToSolver[i]
std::vector<double> reorderCoordinates(const double* vertices,
                                       const std::vector<std::int32_t>& callerToSolver);

/// @return 3m corners, every entry replaced by callerToSolver of it
std::vector<std::int32_t> reorderTriangles(std::int32_t m, const std::int32_t* triangles,
                                           const std::vector<std::int32_t>& callerToSolver);

}  // namespace quor
