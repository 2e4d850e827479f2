// Reads a mesh file.
#pragma once

#include "surface.h"

#include <filesystem>

namespace heatmap {

// Reads STL, OBJ, PLY, OFF and what else the reader knows as a soup: every triangle owns its three
// points. Polygons are cut into triangles, points and lines left out.
// Throws std::runtime_error saying what is wrong with the file.
Surface readSoup(const std::filesystem::path& file);

}  // namespace heatmap
