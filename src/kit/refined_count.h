// How many triangles refining makes.
#pragma once

#include "kit/division.h"
#include "kit/mesh.h"

#include <cstdint>

namespace quorkit {

/// Counts them one by one: exact.
/// @param lengths  finite, above 0
/// @param most     from here on the count does not matter: any number above it is returned
std::int64_t countRefined(const MeshView& mesh, const EdgeLengths& lengths, std::int64_t most);

/// How many there are at least, found from areas and sides in one look at each triangle: on well
/// shaped triangles a half to a quarter of what comes out. Sizes are left out. Where the square of
/// a few steps of rounding has no place in a double, it is what there would be if it had.
/// @param longest  finite, above 0
double leastRefined(const MeshView& mesh, double longest);

/// About how many there are, with rounding left out. A triangle whose three sides are all to be
/// split becomes four of half its size, so of each triangle only one of the smallest similar ones
/// is divided.
/// @param longest  finite, above 0
/// @param most     as above
double estimateRefined(const MeshView& mesh, double longest, double most);

}  // namespace quorkit
