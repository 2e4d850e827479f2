// Where a field bends most: at vertices around which there is more than a full turn of surface.
#pragma once

#include "mesh.h"

#include <vector>

namespace heatmap {

// Sizes for quorkitRefineGraded, one per vertex of the mesh: a sixteenth of the length at the
// singular points of the part, as where a fin meets a plate, growing with the distance from them;
// infinity far away. None
// at all if there is no singular point. A field is there like a power below 1 of the distance,
// which long edges cannot follow. The part is the mesh or what it was refined from.
std::vector<double> sizesNearSingularPoints(const Mesh& part, const Mesh& mesh, double length);

}  // namespace heatmap
