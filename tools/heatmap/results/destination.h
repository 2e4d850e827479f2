// Where the results go.
#pragma once

#include <filesystem>
#include <string>

namespace heatmap {

struct Destination {
  std::filesystem::path directory;
  std::string name;            // of the files, without extension
  std::filesystem::path ramp;  // the image to copy beside them
  bool hasPage;                // whether there is a page as well
};

// Looks, before any work is done, whether the results can be written: makes nothing that stays.
// Throws std::runtime_error if the name is no file name, the ramp cannot be read or is no PNG
// image, the directory can neither be made nor written to, or a directory or the part itself is in
// the place of a result.
void requireUsable(const Destination& destination, const std::filesystem::path& part);

}  // namespace heatmap
