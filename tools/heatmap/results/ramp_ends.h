// Ends of the colours that the field does not reach.
#pragma once

#include "part/surface.h"

#include <vector>

namespace heatmap {

// Files are coloured from the smallest value to the largest. Adds one triangle that no viewer
// draws, for its three vertices lie on the first one of the mesh, with the values low and high;
// what is there already stays as it is.
void addRampEnds(Surface& mesh, std::vector<double>& field, double low, double high);

}  // namespace heatmap
