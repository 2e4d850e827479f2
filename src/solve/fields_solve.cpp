#include "solve/fields_solve.h"

#include "api/solver_handle.h"
#include "solve/field_solve.h"

namespace quor {

void solveFields(const SolverHandle& handle, std::size_t columns, const double* prescribedValues,
                 const double* sourceValues, double* fieldsOut) {
  for (std::size_t k = 0; k < columns; ++k) {
    const std::size_t begin = k * handle.vertexCount;
    solveField(handle, prescribedValues + begin,
               sourceValues != nullptr ? sourceValues + begin : nullptr, fieldsOut + begin);
  }
}

}  // namespace quor
