// Several solves with one handle at once.
#pragma once

#include "util/vectors.h"

#include <cstddef>

namespace quor {

struct SolverHandle;

/// Solves for several fields, each with the bits that solveField gives, reading the factor once for
/// eight of them. The arrays hold `columns` times n values, one field after the other, and may be
/// the same. Throws std::bad_alloc; then nothing is written.
/// @param prescribedValues  read at prescribed vertices only
/// @param sourceValues      read at free vertices only; null for none
/// @param width             of the vectors, changes the time only
void solveFields(const SolverHandle& handle, std::size_t columns, const double* prescribedValues,
                 const double* sourceValues, double* fieldsOut,
                 VectorWidth width = widestVectors());

}  // namespace quor
