// A floor for the time of a weld: it collapses exact duplicates only and cannot weld at all.
#pragma once

#include "soups/welded.h"

#include <cstdint>

namespace bench {

/// One hash table over the points, one over the triangles, both with open addressing.
void hashFloor(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
               const std::int32_t* triangles, Welded& out);

}  // namespace bench
