// What the colours of a result stand for, in a file beside it.
#pragma once

#include <filesystem>
#include <string>

namespace heatmap {

// Words are UTF-8; bytes that are not are written as U+FFFD.
struct Legend {
  std::string title;  // of the result
  std::string field;  // what its values are: "temperature"
  std::string unit;   // of the values; may be empty
  double minimum;     // the values at both ends of the colour ramp
  double maximum;
};

// Writes the file, one JSON object with these members and "quor": 1, the version of the
// format. Throws std::runtime_error if it could not be written whole.
void writeLegend(const Legend& legend, const std::filesystem::path& file);

}  // namespace heatmap
