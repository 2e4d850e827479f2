#include "solve/field_solve.h"

#include "api/solver_handle.h"
#include "operator/factor/work_array.h"
#include "solve/substitution.h"
#include "util/index.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <functional>

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
void subtractProduct(const SparseMatrix& matrix, const double* x, const Indices& place,
                     double* rhs) {
  for (Eigen::Index column = 0; column < matrix.outerSize(); ++column) {
    const double factor = x[column];
    for (SparseMatrix::InnerIterator entry(matrix, column); entry; ++entry) {
      rhs[place[entry.row()]] -= entry.value() * factor;
    }
  }
}

/// What a factorization that failed leaves alone is 0, here the field.
void solveInPlace(const Factorization& factor, Eigen::Map<Eigen::VectorXd> x) {
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
  const WorkArray values(static_cast<std::ptrdiff_t>(handle.prescribedCount));
  const WorkArray x(static_cast<std::ptrdiff_t>(handle.vertexCount - handle.prescribedCount));
  solveField(handle, prescribedValues, sourceValues, fieldOut, {values.data(), x.data()});
}

void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut, const SolveRoom& room) {
  const std::size_t prescribed = toSize(handle.prescribedCount);
  const std::int32_t* const callerIndex = handle.solverToCaller.data();
  const std::int32_t* const freeCallerIndex = callerIndex + prescribed;
  const std::size_t free = toSize(handle.vertexCount) - prescribed;
  assert(handle.solverToCaller.size() == handle.vertexCount && prescribed <= handle.vertexCount);
  assert(handle.stiffnessFP->rows() == static_cast<Eigen::Index>(free) &&
         handle.stiffnessFP->cols() == static_cast<Eigen::Index>(prescribed));
  double* const values = room.prescribed;
  double* const x = room.free;

  for (std::size_t k = 0; k < prescribed; ++k) {
    values[k] = prescribedValues[callerIndex[k]];
  }
  // The free vertices in the order of elimination, so that the factor's two permutations need no
  // passes of their own: first their right-hand side, then their field.
  const Indices& place = handle.factorFF->permutationP().indices();
  if (sourceValues != nullptr) {
    copyPlaces(free, sourceValues, freeCallerIndex, x, place.data(), std::negate<>());
  } else {
    std::fill_n(x, free, 0.0);
  }
  subtractProduct(*handle.stiffnessFP, values, place, x);
  if (free > 0) {
    solveInPlace(*handle.factorFF, {x, static_cast<Eigen::Index>(free)});
  }
  for (std::size_t k = 0; k < prescribed; ++k) {
    fieldOut[callerIndex[k]] = values[k];
  }
  copyPlaces(free, x, place.data(), fieldOut, freeCallerIndex, [](double value) { return value; });
}

}  // namespace quor
