// How well a field satisfies the free rows.
#pragma once

namespace quor {

struct SolverHandle;

/// Computes |K_FF x_F + K_FP x_P - y|^2: for a field of solveField the round-off of the solve, with
/// y = -source. Everything is in solver order, nothing is permuted. Not exported: an internal
/// check, whose name is fixed as those of the exported functions are.
/// @param handle       null gives the sentinel 1001.0, which no residual of interest reaches
/// @param freeRhs      y, one value per free vertex
/// @param solverField  n values
/// @param residualOut  receives the squared residual; 0.0 without free vertices
void quorresidual(const SolverHandle* handle, const double* freeRhs, const double* solverField,
                  double* residualOut);

}  // namespace quor
