#include "export/obj_writer.h"

#include "export/line_writer.h"
#include "export/obj_lines.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quor {
namespace {

/// @return whether the file is open; if not, that has been reported
bool openFile(std::ofstream& file, const std::string& baseName, const char* extension) {
  const std::string name = baseName + extension;
  errno = 0;
  file.open(name, std::ios::binary);  // a line ends in one byte everywhere
  if (!file.is_open()) {
    if (errno == ENOMEM) {
      throw std::bad_alloc();
    }
    std::cerr << "couldn't open file " + baseName + " for writing." << std::endl;
  }
  return file.is_open();
}

void writeField(LineWriter& lines, const double* field, std::size_t n) {
  const std::vector<double> values(field, field + n);
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  const double lo = *low;
  const double s = 1.0 / (*high - lo);
  writeTextureCoordinates(lines, values.data(), n,
                          [lo, s](double value) { return (lo - value) * s + 1.0; });
}

void writeMaterial(std::ofstream& file) {
  std::string_view rest = kMaterial;
  while (!rest.empty()) {
    const std::size_t length = rest.find('\n');
    file << rest.substr(0, length) << std::endl;
    rest.remove_prefix(length + 1);
  }
}

}  // namespace

void writeObjAndMtl(const std::vector<double>& vertices, const std::vector<std::int32_t>& triangles,
                    const double* field, const char* baseName) {
  std::ofstream file;
  if (!openFile(file, baseName, ".obj")) {
    return;
  }
  // One long text, line feed included: a stream writes it at once.
  file << std::string("mtllib ") + baseName + ".mtl\n" << std::flush;
  file << "usemtl Heat" << std::endl;

  const auto length = static_cast<std::int32_t>(vertices.size());
  if (length < 3) {
    throw std::length_error("vector");
  }
  const std::size_t vertexCount = static_cast<std::size_t>(length) / 3;
  LineWriter lines(file);
  writePositions(lines, vertices.data(), vertexCount);
  writeField(lines, field, vertexCount);
  writeFaces(lines, triangles.data(), triangles.size() / 3);
  file.close();

  if (openFile(file, baseName, ".mtl")) {
    writeMaterial(file);
  }
}

}  // namespace quor
