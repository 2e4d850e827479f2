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

/// Which way an estimate may err where rounding decides: neither, down, or up.
enum class Estimate { likely, low, high };

/// About how many they are, but for a tenth, found out in much less time. A triangle whose three
/// sides are all to be split becomes four of half its size, so of each triangle only one of the
/// smallest similar ones is divided. They are similar but for rounding: of sides as long as
/// `longest` some may be split and others not.
/// @param longest  finite, above 0
/// @param most     likewise
double estimateRefined(const MeshView& mesh, double longest, Estimate kind, double most);

}  // namespace quorkit
