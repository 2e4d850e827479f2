// Welding by the plain method: a KD-tree, one radius query per point, an ordered set of triples.
#pragma once

#include "soups/welded.h"

#include <cstdint>

namespace bench {

/// Follows the same rule as the library; the tests use it as an oracle for real meshes. All points
/// must be finite: others make a KD-tree lose neighbours.
void plainWeld(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
               const std::int32_t* triangles, double tolerance, Welded& out);

}  // namespace bench
