#include "operator/factor/permuted_triangles.h"

#include <cassert>

namespace quor {
namespace {

/// The entries of one triangle so far.
struct Entries {
  /// Makes room in the matrix.
  Entries(SparseMatrix& matrix, Eigen::Index entries) : room(entries) {
    matrix.resizeNonZeros(room);
    rows = matrix.innerIndexPtr();
    values = matrix.valuePtr();
  }

  /// Writes an entry over one that was not kept. Nothing to predict, which half of the time would
  /// go wrong.
  void put(int row, double value, bool keep) {
    assert(count < room);
    rows[count] = row;
    values[count] = value;
    count += keep ? 1 : 0;
  }

  Eigen::Index room;
  int* rows;
  double* values;
  int count = 0;
};

}  // namespace

PermutedTriangles::PermutedTriangles(const SparseMatrix& matrix, const Permutation& permutation,
                                     const Permutation& inverse)
    : upper(matrix.rows(), matrix.cols()), lower(matrix.rows(), matrix.cols()) {
  const auto n = static_cast<int>(matrix.cols());
  const Eigen::Index room = (matrix.nonZeros() + n) / 2 + 1;  // one for what is not kept
  Entries above(upper, room);
  Entries below(lower, room);
  const int* const newIndex = permutation.indices().data();
  const int* const oldIndex = inverse.indices().data();
  const int* const starts = matrix.outerIndexPtr();
  const int* const rows = matrix.innerIndexPtr();
  const double* const values = matrix.valuePtr();
  for (int column = 0; column < n; ++column) {
    const int old = oldIndex[column];
    for (int k = starts[old]; k < starts[old + 1]; ++k) {
      const int row = newIndex[rows[k]];
      above.put(row, values[k], row <= column);
      below.put(row, values[k], row > column);
    }
    upper.outerIndexPtr()[column + 1] = above.count;
    lower.outerIndexPtr()[column + 1] = below.count;
  }
  upper.resizeNonZeros(above.count);
  lower.resizeNonZeros(below.count);
}

}  // namespace quor
