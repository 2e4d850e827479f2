// The factorization that a handle keeps.
#pragma once

#include "operator/factor/analysis.h"
#include "operator/factor/permuted_triangles.h"
#include "operator/factor/sparse_matrix.h"
#include "util/progress.h"

#include <Eigen/SparseCholesky>

#include <cstdint>
#include <vector>

namespace quor {

// Factorization writes protected members of SimplicialLDLT, in place of Eigen's own steps: m_P,
// m_Pinv, m_parent, m_nonZerosPerCol, m_matrix, m_diag, m_info, m_isInitialized, m_analysisIsOk,
// m_factorizationIsOk. When Eigen moves, compare its compute, ordering, analyzePattern_preordered,
// factorize_preordered and _solve_impl with what factorization.cpp and solve/ do, its Amd.h with
// quotient_graph.cpp, then widen this and the bound in src/CMakeLists.txt.
static_assert(EIGEN_VERSION_AT_LEAST(3, 4, 0) && !EIGEN_VERSION_AT_LEAST(3, 4, 90),
              "written for the insides of Eigen 3.4");

/// A sparse L D L^T factorization: an Eigen SimplicialLDLT, with Eigen's ordering and Eigen's
/// pattern of L, that is filled faster.
///
/// Eigen's own numeric step computes one entry after the other. Here a large matrix is factorized
/// by the multifrontal method, whose dense blocks compute many at once; the entries of L and D then
/// differ from Eigen's by rounding. Eigen's numeric step is used, and its result is Eigen's to the
/// bit, for
///   - a small matrix, which it factorizes faster;
///   - a matrix with an entry that is not finite, or one that meets a pivot that is zero or not
///     finite: then what exactly comes out depends on the order of operations;
///   - a matrix for which the multifrontal method would need more working memory than L.
class Factorization
    : public Eigen::SimplicialLDLT<SparseMatrix, Eigen::Lower, Eigen::AMDOrdering<int>> {
 public:
  /// Factorizes; info() tells the outcome.
  /// Throws std::length_error("vector") if L would have more than 2^31 - 1 entries, or the ordering
  /// would need more room than that, before anything is computed; and std::bad_alloc.
  /// @param matrix    symmetric, both triangles stored, compressed, rows ascending
  /// @param progress  is reported to during ordering and multifrontal method, and between all steps
  explicit Factorization(const SparseMatrix& matrix, const Progress& progress = {});

  /// D. What vectorD() gives is a copy.
  const Eigen::VectorXd& diagonal() const { return m_diag; }

  /// Whether L and D were computed by blocks, and are not Eigen's to the bit.
  bool isBlocked() const { return !columnGroups_.empty(); }

  /// The columns of L in groups, see groupColumns; none unless isBlocked().
  const std::vector<std::uint8_t>& columnGroups() const { return columnGroups_; }

 private:
  /// Copies the pattern of L's columns, and makes room for its entries.
  void adoptPattern(const Analysis& analysis);
  /// @param matrix    in the caller's order
  /// @param permuted  of it; its upper triangle is released
  void computeEntries(const SparseMatrix& matrix, PermutedTriangles& permuted,
                      const Analysis& analysis, const Progress& progress);

  std::vector<std::uint8_t> columnGroups_;
};

}  // namespace quor
