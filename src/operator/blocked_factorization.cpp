#include "operator/blocked_factorization.h"

#include "operator/elimination_tree.h"
#include "operator/front_tree.h"
#include "operator/minimum_degree.h"
#include "operator/multifrontal.h"
#include "operator/permuted_triangles.h"
#include "operator/supernodes.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace quor {
namespace {

/// Products and sums from which on blocks pay; by measurement, and it hardly matters: up to twice
/// as many either way takes about the same time.
constexpr double kBlocksPay = 4e6;

constexpr std::int64_t kMaxIndex = std::numeric_limits<int>::max();

/// The floating-point operations of the numeric step.
double operations(const Eigen::VectorXi& columnCounts) {
  return columnCounts.cast<double>().array().square().sum();
}

}  // namespace

BlockedFactorization::BlockedFactorization(const SparseMatrix& matrix) {
  m_P = orderByMinimumDegree(matrix, m_Pinv);
  const PermutedTriangles permuted(matrix, m_P, m_Pinv);
  analyze(permuted);
  if (!factorizeBlocks(permuted)) {
    factorize_preordered<true>(permuted.upper);
  }
}

/// Sets the elimination tree and the column counts and makes room for L: the same as Eigen's
/// analysis, which sums the counts in 32 bits, whatever they come to.
void BlockedFactorization::analyze(const PermutedTriangles& matrix) {
  const Eigen::Index n = matrix.upper.cols();
  m_parent = eliminationTree(matrix.upper);
  m_nonZerosPerCol = columnCounts(matrix.lower, m_parent);
  if (m_nonZerosPerCol.cast<std::int64_t>().sum() > kMaxIndex) {
    throw std::length_error("vector");
  }
  m_matrix.resize(n, n);
  int* const columnStart = m_matrix.outerIndexPtr();
  columnStart[0] = 0;
  for (Eigen::Index j = 0; j < n; ++j) {
    columnStart[j + 1] = columnStart[j] + m_nonZerosPerCol[j];
  }
  m_matrix.resizeNonZeros(columnStart[n]);
  this->Eigen::SparseSolverBase<SimplicialLDLT>::m_isInitialized = true;
  m_info = Eigen::Success;
  m_analysisIsOk = true;
}

/// The numeric step by blocks. An entry that is not finite comes to a pivot that is not finite.
/// @return false if Eigen's must do it
bool BlockedFactorization::factorizeBlocks(const PermutedTriangles& matrix) {
  if (operations(m_nonZerosPerCol) < kBlocksPay) {
    return false;
  }
  const Supernodes supernodes(matrix.upper, m_parent, m_nonZerosPerCol);
  const FrontTree tree = groupIntoFronts(supernodes);
  constexpr std::int64_t entrySize = sizeof(double) + sizeof(int);  // in L
  if (workSize(tree) * std::int64_t{sizeof(double)} > m_matrix.nonZeros() * entrySize) {
    return false;
  }
  m_diag.resize(matrix.upper.cols());
  m_factorizationIsOk = factorizeFronts(
      matrix, supernodes, tree, widestVectors(),
      {m_matrix.outerIndexPtr(), m_matrix.innerIndexPtr(), m_matrix.valuePtr(), m_diag.data()});
  return m_factorizationIsOk;
}

}  // namespace quor
