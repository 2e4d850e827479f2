#include "operator/factor/column_groups.h"

#include <cstddef>

namespace quor {

std::vector<std::uint8_t> groupColumns(const Eigen::VectorXi& parent,
                                       const Eigen::VectorXi& columnCounts) {
  // Below its first row, j+1, column j has at most the pattern of that column, so that it is enough
  // to count.
  const auto isNested = [&](int j) {
    return parent[j] == j + 1 && columnCounts[j] == columnCounts[j + 1] + 1;
  };
  const auto n = static_cast<int>(parent.size());
  std::vector<std::uint8_t> sizes;
  sizes.reserve(static_cast<std::size_t>(n));
  for (int first = 0, size = 1; first < n; first += size) {
    size = 1;
    while (size < kMostGroupedColumns && isNested(first + size - 1)) {
      ++size;
    }
    sizes.push_back(static_cast<std::uint8_t>(size));
  }
  return {sizes.begin(), sizes.end()};  // as long as it has to be: the handle keeps it
}

}  // namespace quor
