// The factorization that a handle keeps.
#pragma once

#include "api/solver_handle.h"
#include "operator/permuted_triangles.h"

namespace quor {

/// An Eigen SimplicialLDLT, with Eigen's ordering and Eigen's pattern of L, that is filled faster.
///
/// Eigen's own numeric step computes one entry after the other. Here a large matrix is factorized
/// by the multifrontal method, whose dense blocks compute many at once; the entries of L and D then
/// differ from Eigen's by rounding. Eigen's numeric step is used, and its result is Eigen's to the
/// bit, for
///   - a small matrix, which it factorizes faster;
///   - a matrix with an entry that is not finite, or one that meets a pivot that is zero or not
///     finite: then what exactly comes out depends on the order of operations;
///   - a matrix for which the multifrontal method would need more working memory than L.
class BlockedFactorization : public Factorization {
 public:
  /// Factorizes; info() tells the outcome.
  /// Throws std::length_error("vector") if L would have more than 2^31 - 1 entries, or the ordering
  /// would need more room than that, before anything is computed; and std::bad_alloc.
  /// @param matrix  symmetric, both triangles stored, compressed, rows ascending
  explicit BlockedFactorization(const SparseMatrix& matrix);

 private:
  void analyze(const PermutedTriangles& matrix);
  bool factorizeBlocks(const PermutedTriangles& matrix);
};

}  // namespace quor
