// Reads a part from a mesh file.
#pragma once

#include "part/surface.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace heatmap {

struct PartFile {
  Surface surface;
  // The file holds coordinates as floats of 24 bits, about seven decimal digits.
  bool isSinglePrecision = false;
  std::vector<std::string> warnings;  // of a file that can be read all the same
};

// Reads STL, OBJ, PLY or OFF, told from the content and then from the ending of the name; other
// formats where assimp is built in. Coordinates in text keep the precision of a double. Polygons
// are cut into triangles; points and lines are left out. Throws std::runtime_error, which says what
// is wrong with the file and what to do.
PartFile readPart(const std::filesystem::path& file);

// What the four readers share: the whole file in memory, text or not. They throw std::runtime_error
// with what is wrong and where, without the name of the file.
PartFile readStl(std::string_view bytes);
PartFile readObj(std::string_view bytes);
PartFile readPly(std::string_view bytes);
PartFile readOff(std::string_view bytes);

}  // namespace heatmap
