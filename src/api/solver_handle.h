// The solver handle: the one long-lived object, opaque to callers.
#pragma once

#include "operator/factor/factorization.h"
#include "operator/factor/sparse_matrix.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quor {

/// Everything a solve needs, written once during construction and only read afterwards, so that any
/// number of threads may share it without a lock.
///
/// Solver order: prescribed vertices are 0 .. prescribedCount-1 in caller order, free vertices
/// prescribedCount .. vertexCount-1 in reverse caller order. All members but `tags` and
/// `callerToSolver` are indexed by it. Members are destroyed in reverse order.
struct SolverHandle {
  std::uint64_t prescribedCount = 0;                           ///< nP
  std::uint64_t vertexCount = 0;                               ///< n
  std::shared_ptr<const std::vector<double>> vertices;         ///< 3n: x, y, z per vertex
  std::shared_ptr<const std::vector<std::int32_t>> triangles;  ///< 3m corners, caller's triangles
  std::shared_ptr<const SparseMatrix> stiffnessFP;  ///< (n-nP) x nP: free rows, prescribed columns
  std::shared_ptr<const SparseMatrix> stiffnessFF;  ///< (n-nP) x (n-nP): both triangles stored
  std::shared_ptr<const Factorization> factorFF;    ///< of stiffnessFF
  std::vector<std::int32_t> callerToSolver;         ///< n
  std::vector<std::int32_t> solverToCaller;         ///< n, the inverse
  std::vector<std::int32_t> tags;                   ///< n, the caller's
};

}  // namespace quor
