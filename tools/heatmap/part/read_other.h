// Formats that are left to assimp.
#pragma once

#include "part/part_reader.h"

namespace heatmap {

// Reads 3MF, glTF and what else assimp knows, its coordinates as floats. Where heatmap was built
// without assimp it reads none.
// Throws std::runtime_error, which says what is wrong with the file.
PartFile readOther(const std::filesystem::path& file);

}  // namespace heatmap
