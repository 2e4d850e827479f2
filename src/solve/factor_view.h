// L and D as the substitutions read them.
#pragma once

#include "operator/factor/factorization.h"

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

}  // namespace quor
