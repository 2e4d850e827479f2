// What a field is to be computed for, within what error.
#pragma once

#include "kit/mesh.h"

#include <cstdint>

namespace quorkit {

/// The members are those of QuorkitProblem, checked.
struct Problem {
  MeshView mesh;
  const double* triangleValues = nullptr;  ///< m, NaN where free; or null
  std::int32_t edgeCount = 0;
  const std::int32_t* edges = nullptr;   ///< 2 * edgeCount vertices
  const double* edgeValues = nullptr;    ///< edgeCount
  const double* vertexValues = nullptr;  ///< n, NaN where free; or null
  const double* sources = nullptr;       ///< m densities, or null
  const std::int32_t* faces = nullptr;   ///< m labels, or null
  double tolerance = 0.0;
  bool isShareOfSpan = false;
  std::int32_t triangleLimit = 0;
};

}  // namespace quorkit
