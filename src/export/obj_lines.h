// The lines of an OBJ file and its material, the same wherever they are written to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quor {

/// The material "Heat", with the blanks that readers of the file may compare.
constexpr std::string_view kMaterial =
    "newmtl Heat \nKd 1 1 1             \nNs 96.0784\t\t\t \nd 1\t\t\t\t\t \nillum 1\t\t\t\t \n"
    "Ka 0 0 0\t\t\t \nKs 1 1 1\t\t\t \nmap_Kd viridis.PNG\n";

/// @param lines     takes text, numbers and the ends of lines, as LineWriter does
/// @param vertices  3n coordinates
template <typename Lines>
void writePositions(Lines& lines, const double* vertices, std::size_t n) {
  for (std::size_t v = 0; v < n; ++v) {
    const double* const p = vertices + 3 * v;
    lines << "v " << p[0] << " " << p[1] << " " << p[2];
    lines.endLine();
  }
}

/// @param coordinate  (value) -> the first texture coordinate
template <typename Lines, typename Coordinate>
void writeTextureCoordinates(Lines& lines, const double* field, std::size_t n,
                             const Coordinate& coordinate) {
  for (std::size_t v = 0; v < n; ++v) {
    lines << "vt " << coordinate(field[v]) << " 0.5";
    lines.endLine();
  }
}

/// @param triangles  3m corners, 0-based; those of the file are 1-based
template <typename Lines>
void writeFaces(Lines& lines, const std::int32_t* triangles, std::size_t m) {
  for (std::size_t t = 0; t < m; ++t) {
    lines << "f";
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      const auto number = std::int64_t{triangles[k]} + 1;
      lines << " " << number << "/" << number;
    }
    lines.endLine();
  }
}

}  // namespace quor
