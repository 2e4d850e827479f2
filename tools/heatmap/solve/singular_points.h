// Where a field bends most: there it goes like a power below 1 of the distance, which long edges
// cannot follow.
#pragma once

#include "part/surface.h"

#include <vector>

namespace heatmap {

// Vertices with more than a full turn of surface around them, as where a fin meets a plate.
std::vector<Position> cornersOfSurface(const Surface& part);

// Prescribed vertices with more than half a turn of surface around them that is not prescribed:
// corners of what is hot or cold that reach into a face, and ends of edges.
std::vector<Position> cornersOfPrescribed(const Surface& part, const std::vector<bool>& isFace,
                                          const std::vector<bool>& isVertex);

// Sizes for quorkitRefineGraded, one per vertex of the mesh: a sixteenth of the length at the
// points, growing with the distance from them; infinity far away. None at all if no point is near.
std::vector<double> sizesNear(const std::vector<Position>& points, const Surface& mesh,
                              double length);

}  // namespace heatmap
