// What is wrong, or should be known, about the regions of a part.
#pragma once

#include "regions/region.h"
#include "stages.h"

namespace heatmap {

// Throws std::runtime_error, which says where and what to do, if a connected component has no
// prescribed value: its field would be anything.
void requirePrescribedComponents(const Regions& regions);

// Degenerate triangles that cleaning had to leave: throws std::runtime_error if an error is to be
// estimated, which such triangles do not allow, and warns otherwise.
void checkDegenerate(const Surface& surface, bool isErrorEstimated, Stages& stages);

// Warns of components with a single value, whose field is constant, and of components that touch
// without a common vertex, so that no heat passes between them.
void warnOfComponents(const Regions& regions, Stages& stages);

}  // namespace heatmap
