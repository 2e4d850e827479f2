// Room for the entries of a sparse matrix.
#pragma once

#include "api/solver_handle.h"
#include "util/large_pages.h"

namespace quor {

/// Makes room for as many entries, in large pages. Column starts stay, entries are lost.
/// Throws std::bad_alloc.
inline void makeRoom(SparseMatrix& matrix, Eigen::Index entries) {
  matrix.resizeNonZeros(entries);
  const auto count = static_cast<std::size_t>(entries);
  preferLargePages(matrix.innerIndexPtr(), count * sizeof(int));
  preferLargePages(matrix.valuePtr(), count * sizeof(double));
}

}  // namespace quor
