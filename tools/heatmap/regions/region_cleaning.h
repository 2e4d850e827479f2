// Degenerate triangles that cutting leaves behind.
#pragma once

#include "part/surface.h"
#include "regions/region.h"

#include <vector>

namespace heatmap {

// Drops triangles of almost no area from a surface with the kit, which splits their neighbours, and
// makes the regions' selections those of the new surface. Does nothing where there are none.
// Throws std::runtime_error in the rare case that an edge that a rule selects is lost.
void cleanRegions(Surface& surface, std::vector<Region>& regions);

}  // namespace heatmap
