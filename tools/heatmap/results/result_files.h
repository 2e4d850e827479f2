// Writes what viewers show.
#pragma once

#include "part/surface.h"
#include "results/destination.h"
#include "results/legend.h"

#include <vector>

namespace heatmap {

// Writes the mesh, its material, the ramp, and the legend, in this order, in the destination's
// directory, which is made. Throws std::runtime_error if any of them could not be written whole.
void writeResults(const Surface& mesh, const std::vector<double>& field, const Legend& legend,
                  const Destination& destination);

}  // namespace heatmap
