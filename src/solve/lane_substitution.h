// The two substitutions of a solve, for eight right-hand sides at once.
#pragma once

#include "operator/factor/factorization.h"
#include "util/vectors.h"

namespace quor {

/// How many right-hand sides are substituted at once: each entry of L is read once for all of them.
constexpr int kLanes = 8;

/// Solves L D L^T x = b in place for each lane, with the bits of the single solve: that of
/// `substitute` if the factor was computed by blocks, else Eigen's.
/// @param factor  successful
/// @param width   changes the time only
/// @param x       kLanes times as many numbers as rows: entry i of lane k is x[kLanes * i + k].
///                b, and receives the solutions; in the order of elimination
void substituteLanes(const Factorization& factor, VectorWidth width, double* x);

}  // namespace quor
