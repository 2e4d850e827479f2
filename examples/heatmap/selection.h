// Simple rules that select vertices.
#pragma once

#include "mesh.h"

#include <string>
#include <vector>

namespace heatmap {

// Selects vertices by a rule:
//   z+  z-  x+  x-  y+  y-   the outermost 2 % of the extent at that end of an axis
//   z+:0.1                   the outermost 10 %
//   ball:X,Y,Z,R             within R of the point
//   nearest:X,Y,Z            the vertex nearest to the point
// Throws std::runtime_error if the rule is malformed or selects nothing.
std::vector<std::int32_t> select(const Mesh& mesh, const std::string& rule);

}  // namespace heatmap
