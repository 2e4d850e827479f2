// The faces of a part as a table for people.
#pragma once

#include "part/surface.h"
#include "regions/faces.h"

#include <string>

namespace heatmap {

// One line per face: number, kind, area, center, and normal or axis, with the radius if it has one.
std::string listOf(const Surface& part, const Faces& faces);

}  // namespace heatmap
