// One HTML page with a result and the viewer in it, which opens from the disk.
#pragma once

#include <filesystem>
#include <string>

namespace heatmap {

// The viewer, a page with a mark where a result goes.
// Throws std::runtime_error if the file cannot be read or has no such mark.
std::string readViewer(const std::filesystem::path& file);

// Writes directory/name.html: the viewer with name.obj, name.mtl, name.json and the colour ramp,
// all read from the directory. Throws std::runtime_error if one of them cannot be read or the page
// cannot be written whole.
void writePage(const std::string& viewer, const std::filesystem::path& directory,
               const std::string& name);

}  // namespace heatmap
