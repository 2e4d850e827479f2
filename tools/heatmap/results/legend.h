// What the colours of a result stand for, in a file next to it.
#pragma once

#include "part/surface.h"

#include <filesystem>
#include <optional>
#include <string>

namespace heatmap {

// Words are UTF-8; bytes that are not are written as U+FFFD.
struct Legend {
  std::string title;  // of the result
  std::string field;  // what its values are: "temperature"
  std::string unit;   // of the values; may be empty
  double minimum;     // the values at both ends of the colour ramp
  double maximum;
  // By how much the field may differ from the exact one of the same surface, in its unit.
  std::optional<double> error;
  std::string errorExcept;  // where that does not hold, in words; empty if it holds everywhere
  quor::Vec3 origin;        // of the coordinates in the OBJ file
};

// Writes the file, one JSON object with these members and "quor": 1, the version of the format.
// "error", "errorExcept" and "origin" are left out where they say nothing.
// Throws std::runtime_error if it could not be written whole.
void writeLegend(const Legend& legend, const std::filesystem::path& file);

}  // namespace heatmap
