#include "operator/stiffness_assembly.h"

#include "operator/element_stiffness.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quor {
namespace {

using Triplet = Eigen::Triplet<double, int>;

/// The nine entries of one element. The order is fixed: it decides the order in which
/// contributions are summed, and so the bits of the result.
std::array<Triplet, 9> tripletsOf(std::int32_t a, std::int32_t b, std::int32_t c,
                                  const ElementStiffness& element) {
  return {Triplet(a, b, element.ab), Triplet(b, a, element.ab), Triplet(b, c, element.bc),
          Triplet(c, b, element.bc), Triplet(a, c, element.ac), Triplet(c, a, element.ac),
          Triplet(a, a, element.aa), Triplet(b, b, element.bb), Triplet(c, c, element.cc)};
}

}  // namespace

SparseMatrix assembleStiffness(std::int32_t n, const std::vector<double>& vertices,
                               const std::vector<std::int32_t>& triangles) {
  std::vector<Triplet> triplets;
  triplets.reserve(3 * triangles.size());
  const auto position = [&](std::int32_t vertex) {
    return vertices.data() + 3 * static_cast<std::size_t>(vertex);
  };
  for (std::size_t t = 0; t < triangles.size(); t += 3) {
    const std::int32_t a = triangles[t];
    const std::int32_t b = triangles[t + 1];
    const std::int32_t c = triangles[t + 2];
    const std::array<Triplet, 9> nine =
        tripletsOf(a, b, c, elementStiffness(position(a), position(b), position(c)));
    triplets.insert(triplets.end(), nine.begin(), nine.end());
  }
  SparseMatrix stiffness(n, n);
  stiffness.setFromTriplets(triplets.begin(), triplets.end());
  return stiffness;
}

std::shared_ptr<const SparseMatrix> copyBlock(const SparseMatrix& matrix, Eigen::Index firstRow,
                                              Eigen::Index firstColumn, Eigen::Index columns) {
  const int* const starts = matrix.outerIndexPtr() + firstColumn;
  const int* const indices = matrix.innerIndexPtr();
  const auto shift = static_cast<int>(firstRow);
  const auto block = std::make_shared<SparseMatrix>(matrix.rows() - firstRow, columns);
  int* const blockStarts = block->outerIndexPtr();
  for (Eigen::Index j = 0; j < columns; ++j) {
    const int* const end = indices + starts[j + 1];
    const auto count = end - std::lower_bound(indices + starts[j], end, shift);
    blockStarts[j + 1] = blockStarts[j] + static_cast<int>(count);
  }
  block->resizeNonZeros(blockStarts[columns]);
  for (Eigen::Index j = 0; j < columns; ++j) {
    const int count = blockStarts[j + 1] - blockStarts[j];
    const int from = starts[j + 1] - count;
    std::copy_n(matrix.valuePtr() + from, count, block->valuePtr() + blockStarts[j]);
    std::transform(indices + from, indices + from + count, block->innerIndexPtr() + blockStarts[j],
                   [shift](int index) { return index - shift; });
  }
  return block;
}

}  // namespace quor
