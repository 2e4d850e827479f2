#include "operator/factor/factorization.h"

#include "operator/factor/column_groups.h"
#include "operator/factor/minimum_degree.h"
#include "operator/factor/multifrontal.h"
#include "util/vectors.h"

#include <cmath>

namespace quor {

namespace {

/// The share of the steps before the numeric one, as far as it can be told before them: on surfaces
/// ordering and analysis take time in proportion to the rows, the numeric step to their power of
/// 1.5; by measurement they take the same for 150,000.
double shareBeforeNumeric(Eigen::Index rows) {
  return 1.0 / (1.0 + std::sqrt(static_cast<double>(rows) / 150000.0));
}

}  // namespace

Factorization::Factorization(const SparseMatrix& matrix, const Progress& progress) {
  constexpr double kOrdering = 0.8;  // of the steps before the numeric one
  const double before = shareBeforeNumeric(matrix.cols());
  m_P = orderByMinimumDegree(matrix, m_Pinv, progress.part(0.0, kOrdering * before));
  PermutedTriangles permuted(matrix, m_P, m_Pinv);
  const Analysis analysis = analyze(permuted);
  adoptPattern(analysis);
  progress.report(before);
  computeEntries(matrix, permuted, analysis, progress.part(before, 1.0));
  progress.report(1.0);
}

void Factorization::adoptPattern(const Analysis& analysis) {
  const Eigen::Index n = analysis.parent.size();
  m_parent = analysis.parent;
  m_nonZerosPerCol = analysis.columnCounts;
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

/// An entry that is not finite comes to a pivot that is not finite, and so to Eigen's numeric step.
void Factorization::computeEntries(const SparseMatrix& matrix, PermutedTriangles& permuted,
                                   const Analysis& analysis, const Progress& progress) {
  m_diag.resize(m_matrix.cols());
  const bool isBlocked =
      analysis.blocksPay &&
      factorizeFronts(
          permuted, analysis.supernodes, analysis.fronts, widestVectors(),
          {m_matrix.outerIndexPtr(), m_matrix.innerIndexPtr(), m_matrix.valuePtr(), m_diag.data()},
          progress);
  m_factorizationIsOk = true;
  if (isBlocked) {
    columnGroups_ = groupColumns(m_parent, analysis.columnCounts);
  } else if (analysis.blocksPay) {  // the upper triangle is gone, to save its memory
    factorize_preordered<true>(PermutedTriangles(matrix, m_P, m_Pinv).upper);
  } else {
    factorize_preordered<true>(permuted.upper);
  }
}

}  // namespace quor
