// Several solves with one handle at once.
#pragma once

#include <cstddef>

namespace quor {

struct SolverHandle;

/// Solves for several fields, each with the bits that solveField gives. The arrays hold `columns`
/// times n values, one field after the other, and may be the same. Nothing is written when an
/// allocation fails.
/// @param prescribedValues  read at prescribed vertices only
/// @param sourceValues      read at free vertices only; null for none
void solveFields(const SolverHandle& handle, std::size_t columns, const double* prescribedValues,
                 const double* sourceValues, double* fieldsOut);

}  // namespace quor
