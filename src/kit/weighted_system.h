// The equations of a field on a weighted graph of vertices.
#pragma once

#include "kit/intrinsic_delaunay.h"

#include "api/solver_handle.h"
#include "util/progress.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Solves for fields with given values at some vertices, on edges with weights. Written once, then
/// read only.
class WeightedSystem {
 public:
  /// Assembles and factorizes. Throws what quor::Factorization throws.
  /// @param edges    vertices below values.size()
  /// @param values   per vertex its prescribed value, or NaN where it is free
  WeightedSystem(const std::vector<WeightedEdge>& edges, const std::vector<double>& values,
                 const quor::Progress& progress);

  /// Whether the factorization succeeded: else the field is meaningless.
  bool isRegular() const;

  /// @param values   per vertex, read where it is prescribed
  /// @param sources  per vertex, read where it is free, or empty; a positive one lowers the field
  std::vector<double> solve(const std::vector<double>& values,
                            const std::vector<double>& sources) const;

 private:
  quor::SolverHandle handle_;
};

}  // namespace quorkit
