#include "operator/factor/minimum_degree.h"

#include "operator/factor/quotient_graph.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace quor {
namespace {

/// Counted as Eigen counts its working memory, in 32 bits: the lists, and eight numbers per row.
void requireMemoryFits(const SparseMatrix& matrix) {
  constexpr std::int64_t limit = std::numeric_limits<int>::max();
  if (QuotientGraph::room(matrix) > limit || 8 * (matrix.cols() + 1) > limit) {
    throw std::length_error("vector");
  }
}

}  // namespace

Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse,
                                 const Progress& progress) {
  requireMemoryFits(matrix);
  QuotientGraph graph(matrix);
  graph.eliminateAll(progress);
  inverse.resize(matrix.cols());
  graph.postorder(inverse.indices().data());
  return inverse.inverse();
}

}  // namespace quor
