// Meshes that no part looks like, made to take a construction as long as possible.
#pragma once

#include "soups/tagged_mesh.h"

#include <cstdint>

namespace bench {

/// Three triangles at each of n vertices but few, on random pairs of these few, the hubs, of which
/// there are just so many that the ordering does not set them aside: every vertex that it
/// eliminates makes it look through the long lists of some hubs. Vertices lie at random in a cube.
TaggedMesh manyHubs(std::int32_t n);

/// A strip of square cells cut in two, its two ends prescribed: a factor with next to no work.
/// @param width   of the strip, in vertices
/// @param length  in vertices
TaggedMesh strip(std::int32_t width, std::int32_t length);

}  // namespace bench
