#include "solve/fields_solve.h"

#include "api/solver_handle.h"
#include "operator/factor/work_array.h"
#include "solve/field_solve.h"
#include "solve/lane_substitution.h"
#include "util/index.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quor {
namespace {

constexpr std::size_t kAtOnce = kLanes;
/// So many columns take less time one by one than at once.
constexpr std::size_t kFew = 2;

/// The solves of up to eight columns at once, step by step. In memory the lanes of a vertex are
/// side by side; those without a column repeat the last one.
class LaneSolve {
 public:
  /// @param columns  1 .. kAtOnce
  LaneSolve(const SolverHandle& handle, std::size_t columns, const SolveRoom& room)
      : handle_(handle),
        columns_(columns),
        free_(toSize(handle.vertexCount - handle.prescribedCount)),
        callerIndex_(handle.solverToCaller.data()),
        freeCallerIndex_(callerIndex_ + handle.prescribedCount),
        place_(handle.factorFF->permutationP().indices().data()),
        values_(room.prescribed),
        x_(room.free) {
    assert(1 <= columns && columns <= kAtOnce);
  }

  void gather(const double* prescribedValues, const double* sourceValues) const {
    for (std::size_t k = 0; k < handle_.prescribedCount; ++k) {
      for (std::size_t lane = 0; lane < kAtOnce; ++lane) {
        values_[kAtOnce * k + lane] = *at(prescribedValues, lane, callerIndex_[k]);
      }
    }
    if (sourceValues == nullptr) {
      std::fill_n(x_, kAtOnce * free_, 0.0);
      return;
    }
    for (std::size_t i = 0; i < free_; ++i) {
      for (std::size_t lane = 0; lane < kAtOnce; ++lane) {
        lanesOf(place_[i])[lane] = -*at(sourceValues, lane, freeCallerIndex_[i]);
      }
    }
  }

  void subtractPrescribed() const {
    const SparseMatrix& matrix = *handle_.stiffnessFP;
    for (Eigen::Index column = 0; column < matrix.outerSize(); ++column) {
      std::array<double, kAtOnce> factors;
      std::copy_n(values_ + kLanes * column, kAtOnce, factors.begin());
      for (SparseMatrix::InnerIterator entry(matrix, column); entry; ++entry) {
        double* const rhs = lanesOf(place_[entry.row()]);
        for (std::size_t lane = 0; lane < kAtOnce; ++lane) {
          rhs[lane] -= entry.value() * factors[lane];
        }
      }
    }
  }

  void solve(VectorWidth width) const {
    if (handle_.factorFF->info() == Eigen::Success) {
      substituteLanes(*handle_.factorFF, width, x_);
    } else {
      std::fill_n(x_, kAtOnce * free_, 0.0);
    }
  }

  void scatter(double* fieldsOut) const {
    for (std::size_t k = 0; k < handle_.prescribedCount; ++k) {
      for (std::size_t lane = 0; lane < columns_; ++lane) {
        *at(fieldsOut, lane, callerIndex_[k]) = values_[kAtOnce * k + lane];
      }
    }
    for (std::size_t i = 0; i < free_; ++i) {
      for (std::size_t lane = 0; lane < columns_; ++lane) {
        *at(fieldsOut, lane, freeCallerIndex_[i]) = lanesOf(place_[i])[lane];
      }
    }
  }

 private:
  template <typename Number>
  Number* at(Number* fields, std::size_t lane, std::int32_t vertex) const {
    return fields + std::min(lane, columns_ - 1) * handle_.vertexCount + vertex;
  }
  double* lanesOf(std::ptrdiff_t place) const { return x_ + kLanes * place; }

  const SolverHandle& handle_;
  std::size_t columns_;
  std::size_t free_;
  const std::int32_t* callerIndex_;
  const std::int32_t* freeCallerIndex_;
  const int* place_;
  double* values_;
  double* x_;
};

}  // namespace

void solveFields(const SolverHandle& handle, std::size_t columns, const double* prescribedValues,
                 const double* sourceValues, double* fieldsOut, VectorWidth width) {
  const std::size_t lanes = columns > kFew ? kAtOnce : 1;
  const auto roomFor = [lanes](std::uint64_t vertices) {
    return static_cast<std::ptrdiff_t>(lanes * vertices);
  };
  const WorkArray values(roomFor(handle.prescribedCount));
  const WorkArray x(roomFor(handle.vertexCount - handle.prescribedCount));
  const SolveRoom room = {values.data(), x.data()};
  const auto from = [&handle](auto* fields, std::size_t column) {
    return fields != nullptr ? fields + column * handle.vertexCount : nullptr;
  };
  for (std::size_t column = 0; column < columns;) {
    const double* const prescribed = from(prescribedValues, column);
    const double* const source = from(sourceValues, column);
    double* const fields = from(fieldsOut, column);
    const std::size_t left = columns - column;
    if (left <= kFew) {
      solveField(handle, prescribed, source, fields, room);
      ++column;
    } else {
      const std::size_t some = std::min(left, kAtOnce);
      const LaneSolve block(handle, some, room);
      block.gather(prescribed, source);
      block.subtractPrescribed();
      block.solve(width);
      block.scatter(fields);
      column += some;
    }
  }
}

}  // namespace quor
