#include "solve/field_solve.h"

#include <cstddef>
#include <vector>

namespace quor {
namespace {

/// rhs -= matrix * x, column by column in storage order. Stored zeros take part: a NaN spreads
/// through them.
void subtractProduct(const SparseMatrix& matrix, const double* x, Eigen::VectorXd& rhs) {
  for (Eigen::Index column = 0; column < matrix.outerSize(); ++column) {
    for (SparseMatrix::InnerIterator entry(matrix, column); entry; ++entry) {
      rhs[entry.row()] -= entry.value() * x[column];
    }
  }
}

}  // namespace

void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut) {
  const std::size_t n = handle.vertexCount;
  const std::size_t prescribed = handle.prescribedCount;
  const auto callerIndex = [&handle](std::size_t solverIndex) {
    return static_cast<std::size_t>(handle.solverToCaller[solverIndex]);
  };

  std::vector<double> field(n);  // solver order
  for (std::size_t k = 0; k < prescribed; ++k) {
    field[k] = prescribedValues[callerIndex(k)];
  }
  if (n > prescribed) {
    const auto free = static_cast<Eigen::Index>(n - prescribed);
    Eigen::VectorXd rhs = Eigen::VectorXd::Zero(free);
    if (sourceValues != nullptr) {
      for (Eigen::Index r = 0; r < free; ++r) {
        rhs[r] = -sourceValues[callerIndex(prescribed + static_cast<std::size_t>(r))];
      }
    }
    subtractProduct(*handle.stiffnessFP, field.data(), rhs);
    // Straight into the zeroed tail: after a failed factorization Eigen writes nothing.
    Eigen::Map<Eigen::VectorXd> freeField(field.data() + prescribed, free);
    freeField = handle.factorFF->solve(rhs);
  }
  for (std::size_t k = 0; k < n; ++k) {
    fieldOut[callerIndex(k)] = field[k];
  }
}

}  // namespace quor
