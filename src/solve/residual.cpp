#include "solve/residual.h"

#include "api/solver_handle.h"

namespace quor {

void quorresidual(const SolverHandle* handle, const double* freeRhs, const double* solverField,
                  double* residualOut) {
  if (handle == nullptr) {
    *residualOut = 1001.0;
    return;
  }
  const auto prescribed = static_cast<Eigen::Index>(handle->prescribedCount);
  const auto free = static_cast<Eigen::Index>(handle->vertexCount) - prescribed;
  if (free == 0) {
    *residualOut = 0.0;
    return;
  }
  const Eigen::Map<const Eigen::VectorXd> xP(solverField, prescribed);
  const Eigen::Map<const Eigen::VectorXd> xF(solverField + prescribed, free);
  const Eigen::VectorXd u = *handle->stiffnessFP * xP;
  const Eigen::VectorXd v = *handle->stiffnessFF * xF;
  double sum = 0.0;
  for (Eigen::Index r = 0; r < free; ++r) {
    const double difference = (v[r] + u[r]) - freeRhs[r];
    sum += difference * difference;
  }
  *residualOut = sum;
}

}  // namespace quor
