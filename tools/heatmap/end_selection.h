// What an end of an axis is of a part: its faces there, whatever their size.
#pragma once

#include "selection.h"
#include "surface.h"

#include <vector>

namespace heatmap {

struct EndSelection {
  std::vector<bool> isFace;    // per triangle: all its corners are selected
  std::vector<bool> isVertex;  // corners of these, or ends of edges, or vertices alone
  bool hasFaces = false;
};

bool isEndOfAxis(const Rule& rule);

// The triangles whose three corners a rule for an end of an axis selects; where there are none the
// edges, of which it selects both ends; or else its vertices alone.
// Throws std::runtime_error if the rule selects no vertex.
EndSelection endSelection(const Surface& mesh, const Rule& rule);

}  // namespace heatmap
