// A field within an error.
#pragma once

#include "kit/mesh.h"
#include "kit/problem.h"

#include "util/progress.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Why a problem has no answer.
enum class Refusal {
  kNone,
  kIsolatedVertex,  ///< a vertex has a value and no prescribed edge
  kUnprescribed,    ///< a component has no prescribed edge
  kNotSolvable,     ///< the factorization failed, or the field is not finite
};

/// A field with what is known of it.
struct Solution {
  Refusal refusal = Refusal::kNone;
  std::int32_t refusedVertex = -1;
  MeshData mesh;  ///< triangleOrigins lead to the input, vertexOrigins are those of refining
  std::vector<double> field;
  double error = 0.0;      ///< estimated, largest
  double tolerance = 0.0;  ///< that was asked for, in the unit of the field
  std::int32_t rounds = 0;
  bool isReached = false;
  std::vector<std::int32_t> jumps;  ///< vertices where regions of different values meet
  double jumpRadius = 0.0;          ///< around them nothing is promised
};

/// Refines where the error comes from until it is small enough everywhere, or the limit is reached.
/// The first mesh is made whatever the limit.
/// Throws std::bad_alloc, std::length_error for more than a quarter of kMostTriangles, and what an
/// observer of progress throws.
/// @param problem  checked: finite coordinates, corners different and in range, no triangle
///                 degenerate, values and densities finite, a tolerance above 0
Solution solveWithin(const Problem& problem, const quor::Progress& progress);

}  // namespace quorkit
