// L and D as the substitutions read them.
#pragma once

#include "operator/factor/factorization.h"
#include "util/machine.h"

#include <array>
#include <cstdint>
#include <vector>

namespace quor {

/// L and D as they lie in memory.
struct FactorView {
  explicit FactorView(const Factorization& factor)
      : starts(factor.matrixL().nestedExpression().outerIndexPtr()),
        rows(factor.matrixL().nestedExpression().innerIndexPtr()),
        values(factor.matrixL().nestedExpression().valuePtr()),
        diagonal(factor.diagonal().data()),
        columns(static_cast<int>(factor.diagonal().size())),
        groups(factor.columnGroups()) {}

  int count(int j) const { return starts[j + 1] - starts[j]; }

  const int* starts;
  const int* rows;
  const double* values;
  const double* diagonal;
  int columns;
  const std::vector<std::uint8_t>& groups;
};

/// Columns first .. first+kColumns-1, each nested in the next. What they have in common are the
/// rows of the last one.
template <int kColumns>
struct Group {
  QUOR_ALWAYS_INLINE Group(const FactorView& factor, int first)
      : rows(factor.rows + factor.starts[first + kColumns - 1]),
        shared(factor.count(first + kColumns - 1)) {
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      inner.data()[c] = factor.values + factor.starts[first + c];
      values.data()[c] = inner.data()[c] + (kColumns - 1 - c);
    }
  }

  const int* rows;
  int shared;                                    ///< number of rows
  std::array<const double*, kColumns> inner{};   ///< of each column, the entries in later columns
  std::array<const double*, kColumns> values{};  ///< of each column, the entries in the shared rows
};

}  // namespace quor
