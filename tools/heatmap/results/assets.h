// The files that come with the program.
#pragma once

#include <filesystem>
#include <string>

namespace heatmap {

// Where the viewer's page or the colour ramp is: in share/quor next to the directory of the
// installed program, or else in the sources that it was built from.
std::filesystem::path assetPath(const std::string& name);

}  // namespace heatmap
