// Writes what viewers show.
#pragma once

#include "destination.h"
#include "legend.h"
#include "surface.h"

#include <vector>

namespace heatmap {

// Writes the mesh, its material, the ramp, and the legend, in this order, in the destination's
// directory, which is made. Throws std::runtime_error if any of them could not be written whole.
void writeResults(const Surface& mesh, const std::vector<double>& field, const Legend& legend,
                  const Destination& destination);

}  // namespace heatmap
