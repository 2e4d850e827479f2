// The repeatable half of the solver.
#pragma once

namespace quor {

struct SolverHandle;

/// Solves for the field that takes the given values at the prescribed vertices. With K the
/// stiffness matrix, F the free and P the prescribed vertices: K_FF x_F = -s_F - K_FP x_P.
/// All reads of the arrays come before the first write, so they may be the same. Nothing is
/// written when an allocation fails. If the factorization failed, x_F is 0.
/// @param handle            with a complete permutation
/// @param prescribedValues  n values in caller order, read at prescribed vertices only
/// @param sourceValues      n values in caller order, read at free vertices only; null for none
/// @param fieldOut          receives n values in caller order
void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut);

/// Where a solve works.
struct SolveRoom {
  double* prescribed;  ///< a number per prescribed vertex
  double* free;        ///< a number per free vertex
};

/// The same without an allocation.
void solveField(const SolverHandle& handle, const double* prescribedValues,
                const double* sourceValues, double* fieldOut, const SolveRoom& room);

}  // namespace quor
