// Columns of L that a substitution takes together.
#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace quor {

/// More columns than this would share their rows, but not find registers enough.
constexpr int kMostGroupedColumns = 8;

/// Groups columns that follow each other with nested patterns: that of each but the last is its
/// successor and the successor's pattern.
/// @param parent        the elimination tree
/// @param columnCounts  entries of each column of L below the diagonal
/// @return the number of columns of each group, 1 to kMostGroupedColumns, in their order
std::vector<std::uint8_t> groupColumns(const Eigen::VectorXi& parent,
                                       const Eigen::VectorXi& columnCounts);

}  // namespace quor
