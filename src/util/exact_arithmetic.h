// What exact and reproducible results rest on, checked where they are computed: every operation is
// done as it is written, and rounded once, to the type of its operands.
//
// Products and sums must not be contracted to fused ones either, which round once where two
// roundings are meant. No macro tells whether a compiler does that: -ffp-contract=off, set for all
// targets in cmake/QuorTargets.cmake, forbids it, and the test `fingerprint` would notice.
#pragma once

#include <cfloat>
#include <limits>

#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) || \
    defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) || defined(_M_FP_FAST)
#error "quor needs arithmetic as it is written: compile without -ffast-math and its parts"
#endif

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "quor needs IEEE 754 numbers");
static_assert(FLT_EVAL_METHOD == 0,
              "quor needs every operation rounded to its type: on 32-bit x86 use -mfpmath=sse");
