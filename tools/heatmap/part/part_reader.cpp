#include "part/part_reader.h"

#include "part/read_other.h"
#include "part/text_scanner.h"
#include "results/files.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace heatmap {
namespace {

namespace fs = std::filesystem;

void requireFile(const fs::path& file) {
  std::error_code ignored;
  if (!fs::exists(file, ignored)) {
    throw std::runtime_error("no such file: give the path of an STL, OBJ, PLY or OFF file");
  }
  if (!fs::is_regular_file(file, ignored)) {
    throw std::runtime_error("it is not a file: give the path of an STL, OBJ, PLY or OFF file");
  }
}

std::string endingOf(const fs::path& file) {
  std::string ending = file.extension().u8string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return ending;
}

bool beginsWith(std::string_view bytes, std::string_view start) {
  return bytes.substr(0, start.size()) == start;
}

// Formats of CAD systems hold curved faces, not triangles.
void refuseCurved(const std::string& ending, std::string_view bytes) {
  constexpr std::array<std::pair<std::string_view, const char*>, 10> kFormats{{
      {".step", "STEP"},
      {".stp", "STEP"},
      {".p21", "STEP"},
      {".iges", "IGES"},
      {".igs", "IGES"},
      {".brep", "BREP"},
      {".brp", "BREP"},
      {".fcstd", "FreeCAD's own format"},
      {".x_t", "Parasolid"},
      {".sat", "ACIS"},
  }};
  const auto* const known = std::find_if(
      kFormats.begin(), kFormats.end(), [&](const auto& format) { return format.first == ending; });
  const char* const name = beginsWith(bytes, "ISO-10303-21") ? "STEP"
                           : known != kFormats.end()         ? known->second
                                                             : nullptr;
  if (name != nullptr) {
    throw std::runtime_error(std::string("it is ") + name +
                             ", which holds curved faces instead of triangles: export STL from "
                             "the CAD system, or run gmsh -2 part.step -o part.stl");
  }
}

PartFile readAny(const fs::path& file) {
  std::string bytes = readWhole(file);
  std::string_view content = bytes;
  if (beginsWith(content, "\xEF\xBB\xBF")) {
    content.remove_prefix(3);  // what some editors put before UTF-8
  }
  const std::string ending = endingOf(file);
  refuseCurved(ending, content);
  if (content.empty()) {
    throw std::runtime_error("the file is empty: export the part again");
  }
  if (beginsWith(content, "ply\n") || beginsWith(content, "ply\r") || ending == ".ply") {
    return readPly(content);
  }
  TextScanner text(content.substr(0, 4096));
  const bool isOff = text.nextLine() && [&] {
    const std::string_view word = text.word();
    return word.size() >= 3 && word.size() <= 7 && word.substr(word.size() - 3) == "OFF";
  }();
  if (isOff || ending == ".off") {
    return readOff(content);
  }
  if (ending == ".obj") {
    return readObj(content);
  }
  if (ending == ".stl" || ending == ".stla" || ending == ".stlb") {
    return readStl(content);
  }
  return readOther(file);
}

void requireTriangles(const Surface& surface) {
  if (surface.triangles.empty()) {
    throw std::runtime_error("it holds " + std::to_string(surface.vertexCount()) +
                             " vertices and no triangle: export the part as a mesh of triangles");
  }
  for (std::size_t k = 0; k < surface.triangles.size(); ++k) {
    const double* const p = surface.vertex(surface.triangles[k]);
    if (!std::all_of(p, p + 3, [](double x) { return std::isfinite(x); })) {
      throw std::runtime_error("triangle " + std::to_string(k / 3 + 1) + " has a corner at " +
                               placeText(surface, surface.point(surface.triangles[k])) +
                               ", which is not finite: export the part again");
    }
  }
}

// Vertices that no triangle uses are no part of the part, wherever they are.
void dropUnusedVertices(Surface& surface) {
  std::vector<std::int32_t> number(toSize(surface.vertexCount()), -1);
  for (const std::int32_t v : surface.triangles) {
    number[toSize(v)] = 0;
  }
  std::int32_t count = 0;
  for (std::int32_t v = 0; v < surface.vertexCount(); ++v) {
    if (number[toSize(v)] == 0) {
      std::copy_n(surface.vertex(v), 3, surface.vertices.data() + 3 * toSize(count));
      number[toSize(v)] = count++;
    }
  }
  surface.vertices.resize(3 * toSize(count));
  for (std::int32_t& v : surface.triangles) {
    v = number[toSize(v)];
  }
}

}  // namespace

PartFile readPart(const fs::path& file) {
  try {
    requireFile(file);
    PartFile part = readAny(file);
    requireTriangles(part.surface);
    dropUnusedVertices(part.surface);
    return part;
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("cannot read " + file.string() + ": " + error.what());
  }
}

}  // namespace heatmap
