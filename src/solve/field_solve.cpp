#include "solve/field_solve.h"

#include "api/solver_handle.h"
#include "solve/substitution.h"
#include "util/index.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace quor {
namespace {

using Indices = Eigen::PermutationMatrix<Eigen::Dynamic, Eigen::Dynamic, int>::IndicesType;

/// to[toPlace(i)] = operation(from[fromPlace(i)]) for all i below count. Eight are read before any
/// of them is written: a processor does not like to read past a write whose address it does not
/// know yet.
template <typename Operation>
void copyPlaces(std::size_t count, const double* from, const std::int32_t* fromPlace, double* to,
                const std::int32_t* toPlace, const Operation& operation) {
  constexpr std::size_t kAtOnce = 8;
  std::array<double, kAtOnce> values;
  for (std::size_t begin = 0; begin < count; begin += kAtOnce) {
    const std::size_t some = std::min(kAtOnce, count - begin);
    for (std::size_t k = 0; k < some; ++k) {
      values[k] = operation(from[fromPlace[begin + k]]);
    }
    for (std::size_t k = 0; k < some; ++k) {
      to[toPlace[begin + k]] = values[k];
    }
  }
}

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

/// What a factorization that failed leaves alone is 0, here the field.
void solveInPlace(const Factorization& factor, Eigen::VectorXd& x) {
  if (factor.info() != Eigen::Success) {
    x.setZero();
  } else if (factor.isBlocked()) {
    substitute(factor, x.data());
  } else {  // Eigen's solve, operation by operation
    factor.matrixL().solveInPlace(x);
    x.array() *= factor.diagonal().array().inverse();
    factor.matrixU().solveInPlace(x);
  }
}

}  // namespace

void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut) {
  const std::size_t prescribed = toSize(handle.prescribedCount);
  const std::int32_t* const callerIndex = handle.solverToCaller.data();
  const std::int32_t* const freeCallerIndex = callerIndex + prescribed;
  const std::size_t free = toSize(handle.vertexCount) - prescribed;

  std::vector<double> values(prescribed);
  for (std::size_t k = 0; k < prescribed; ++k) {
    values[k] = prescribedValues[callerIndex[k]];
  }
  // The free vertices in the order of elimination, so that the factor's two permutations need no
  // passes of their own: first their right-hand side, then their field.
  const Indices& place = handle.factorFF->permutationP().indices();
  Eigen::VectorXd x = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(free));
  if (sourceValues != nullptr) {
    copyPlaces(free, sourceValues, freeCallerIndex, x.data(), place.data(), std::negate<>());
  }
  subtractProduct(*handle.stiffnessFP, values, place, x);
  if (free > 0) {
    solveInPlace(*handle.factorFF, x);
  }
  for (std::size_t k = 0; k < prescribed; ++k) {
    fieldOut[callerIndex[k]] = values[k];
  }
  copyPlaces(free, x.data(), place.data(), fieldOut, freeCallerIndex,
             [](double value) { return value; });
}

}  // namespace quor
