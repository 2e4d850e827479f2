#include "operator/stiffness_assembly.h"

#include "operator/element_stiffness.h"
#include "operator/stiffness_column.h"
#include "operator/vertex_triangles.h"
#include "util/index.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace quor {
namespace {

/// Appends columns to a matrix, without their first rows.
class ColumnAppender {
 public:
  /// @param firstRow  of a column that is kept: row 0 of the matrix
  /// @param expected  entries; should there be more, some are copied
  ColumnAppender(SparseMatrix& matrix, std::int32_t firstRow, std::int64_t expected)
      : matrix_(matrix), firstRow_(firstRow) {
    matrix_.data().reserve(static_cast<Eigen::Index>(expected));
  }

  void append(const StiffnessColumn& column) {
    const StiffnessColumn::Entry* const first =
        std::lower_bound(column.begin(), column.end(), firstRow_,
                         [](const auto& entry, std::int32_t row) { return entry.row < row; });
    assert(columns_ < matrix_.cols());
    std::ptrdiff_t next = entries_;
    entries_ += column.end() - first;
    matrix_.data().resize(entries_, 0.5);  // makes room for half as many more, if it has to
    for (const auto* entry = first; entry != column.end(); ++entry) {
      matrix_.innerIndexPtr()[next] = entry->row - firstRow_;
      matrix_.valuePtr()[next++] = entry->sum;
    }
    matrix_.outerIndexPtr()[++columns_] = toIndex(entries_);
  }

  /// Gives back what room is left, if it is much.
  void finish() {
    assert(columns_ == matrix_.cols() && entries_ == matrix_.outerIndexPtr()[columns_]);
    if (matrix_.data().allocatedSize() / 16 > entries_ / 15) {
      matrix_.data().squeeze();
    }
  }

 private:
  SparseMatrix& matrix_;
  std::int32_t firstRow_;
  std::ptrdiff_t columns_ = 0;
  std::ptrdiff_t entries_ = 0;
};

}  // namespace

StiffnessBlocks assembleStiffness(std::int32_t n, std::int32_t prescribed,
                                  const std::vector<double>& vertices,
                                  const std::vector<std::int32_t>& triangles,
                                  const Progress& progress) {
  assert(0 <= prescribed && prescribed <= n && vertices.size() == 3 * toSize(n));
  assert(triangles.size() % 3 == 0 && triangles.size() / 3 <= std::size_t{0x7FFFFFFF} / 9);
  const VertexTriangles mesh(n, triangles);
  const std::size_t m = triangles.size() / 3;
  // A vector would write zeros into them first.  NOLINTNEXTLINE(modernize-avoid-c-arrays)
  const std::unique_ptr<ElementStiffness[]> elements(new ElementStiffness[m]);
  elementStiffnesses(vertices.data(), triangles.data(), m, elements.get());
  const ElementStiffness* const element = elements.get();
  constexpr double kElements = 0.4;  // of the time
  progress.report(kElements);
  const Progress columns = progress.part(kElements, 1.0);
  StiffnessColumn column(n);
  const auto block = [&](std::int32_t first, std::int32_t last, std::int64_t expected) {
    auto matrix = std::make_shared<SparseMatrix>(n - prescribed, last - first);
    ColumnAppender appender(*matrix, prescribed, expected);
    constexpr std::int32_t kBetweenReports = 4096;
    for (std::int32_t vertex = first; vertex < last;) {
      const std::int32_t end = progress ? vertex + std::min(last - vertex, kBetweenReports) : last;
      for (; vertex < end; ++vertex) {
        column.compute(vertex, mesh.around(vertex), triangles.data(), element);
        appender.append(column);
      }
      columns.report(static_cast<double>(end) / n);
    }
    appender.finish();
    return matrix;
  };
  // Where every edge has two triangles there are 3m/2, and a border adds few.
  const auto expected = std::int64_t{n} + static_cast<std::int64_t>(triangles.size()) + n / 32;
  return {block(0, prescribed, 0), block(prescribed, n, expected)};
}

}  // namespace quor
