#include "operator/minimum_degree.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace quor {
namespace {

/// The ordering counts its working memory in indices: the entries and a fifth more, two numbers per
/// row, and eight per row once more.
void requireMemoryFits(const SparseMatrix& matrix) {
  constexpr std::int64_t limit = std::numeric_limits<int>::max();
  const std::int64_t n = matrix.cols();
  const std::int64_t entries = matrix.nonZeros();
  if (entries + entries / 5 + 2 * n > limit || 8 * (n + 1) > limit) {
    throw std::length_error("vector");
  }
}

}  // namespace

Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse) {
  requireMemoryFits(matrix);
  Eigen::SparseMatrix<char> pattern(matrix.rows(), matrix.cols());
  pattern.resizeNonZeros(matrix.nonZeros());
  std::copy_n(matrix.outerIndexPtr(), matrix.cols() + 1, pattern.outerIndexPtr());
  std::copy_n(matrix.innerIndexPtr(), matrix.nonZeros(), pattern.innerIndexPtr());
  pattern.coeffs().setZero();
  Eigen::internal::minimum_degree_ordering(pattern, inverse);
  return inverse.inverse();
}

}  // namespace quor
