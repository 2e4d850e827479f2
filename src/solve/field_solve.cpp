#include "solve/field_solve.h"

#include <cstddef>
#include <vector>

namespace quor {
namespace {

using Indices = Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, int>::IndicesType;

/// rhs -= matrix * x with the rows of rhs permuted, column by column in storage order. Stored zeros
/// take part: a NaN spreads through them.
void subtractProduct(const SparseMatrix& matrix, const std::vector<double>& x, const Indices& place,
                     Eigen::VectorXd& rhs) {
  for (Eigen::Index column = 0; column < matrix.outerSize(); ++column) {
    const double factor = x[static_cast<std::size_t>(column)];
    for (SparseMatrix::InnerIterator entry(matrix, column); entry; ++entry) {
      rhs[place[entry.row()]] -= entry.value() * factor;
    }
  }
}

/// Eigen's solve, operation by operation, between the two permutations. After a failed
/// factorization that leaves its result alone, and fields are 0.
void solveInPlace(const Factorization& factor, Eigen::VectorXd& x) {
  if (factor.info() != Eigen::Success) {
    x.setZero();
    return;
  }
  factor.matrixL().solveInPlace(x);
  x.array() *= factor.diagonal().array().inverse();
  factor.matrixU().solveInPlace(x);
}

}  // namespace

void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut) {
  const std::size_t prescribed = handle.prescribedCount;
  const std::int32_t* const callerIndex = handle.solverToCaller.data();
  const std::int32_t* const freeCallerIndex = callerIndex + prescribed;
  const auto free = static_cast<Eigen::Index>(handle.vertexCount - prescribed);

  std::vector<double> values(prescribed);
  for (std::size_t k = 0; k < prescribed; ++k) {
    values[k] = prescribedValues[callerIndex[k]];
  }
  // The free vertices in the order of elimination, so that the factor's two permutations need no
  // passes of their own: first their right-hand side, then their field.
  const Indices& place = handle.factorFF->permutationP().indices();
  Eigen::VectorXd x = Eigen::VectorXd::Zero(free);
  if (sourceValues != nullptr) {
    for (Eigen::Index r = 0; r < free; ++r) {
      x[place[r]] = -sourceValues[freeCallerIndex[r]];
    }
  }
  subtractProduct(*handle.stiffnessFP, values, place, x);
  if (free > 0) {
    solveInPlace(*handle.factorFF, x);
  }
  for (std::size_t k = 0; k < prescribed; ++k) {
    fieldOut[callerIndex[k]] = values[k];
  }
  for (Eigen::Index r = 0; r < free; ++r) {
    fieldOut[freeCallerIndex[r]] = x[place[r]];
  }
}

}  // namespace quor
