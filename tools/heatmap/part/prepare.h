// From the triangles of a file to a part that rules can look at.
#pragma once

#include "part/part_reader.h"
#include "part/surface.h"
#include "stages.h"

#include <filesystem>
#include <optional>

namespace heatmap {

// Reads a part, moves its coordinates near to zero where they are far away, welds it, and drops
// degenerate triangles, unused vertices and perhaps all components but the largest. Shows each
// step, and warns of details that are lost. Throws std::runtime_error, which says what is wrong
// with the part and what to do.
//
//   tolerance  points that are nearer become one; nothing for a millionth of the diagonal
Surface preparePart(const std::filesystem::path& file, std::optional<double> tolerance,
                    bool keepsLargest, Stages& stages);

}  // namespace heatmap
