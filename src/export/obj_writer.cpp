#include "export/obj_writer.h"

#include "export/line_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>

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

void writePositions(LineWriter& file, const std::vector<double>& vertices,
                    std::size_t vertexCount) {
  for (std::size_t k = 0; k < vertexCount; ++k) {
    const double* p = vertices.data() + 3 * k;
    file << "v " << p[0] << " " << p[1] << " " << p[2];
    file.endLine();
  }
}

void writeTextureCoordinates(LineWriter& file, const double* field, std::size_t vertexCount) {
  const std::vector<double> values(field, field + vertexCount);
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  const double lo = *low;
  const double s = 1.0 / (*high - lo);
  for (const double value : values) {
    const double u = (lo - value) * s + 1.0;
    file << "vt " << u << " 0.5";
    file.endLine();
  }
}

void writeFaces(LineWriter& file, const std::vector<std::int32_t>& triangles) {
  const auto length = static_cast<std::int32_t>(triangles.size());
  for (std::int32_t t = 0; t + 2 < length; t += 3) {
    file << "f";
    for (std::int32_t corner = t; corner < t + 3; ++corner) {
      const auto number = std::int64_t{triangles[static_cast<std::size_t>(corner)]} + 1;
      file << " " << number << "/" << number;
    }
    file.endLine();
  }
}

void writeMaterial(std::ofstream& file) {
  file << "newmtl Heat " << std::endl
       << "Kd 1 1 1             " << std::endl
       << "Ns 96.0784\t\t\t " << std::endl
       << "d 1\t\t\t\t\t " << std::endl
       << "illum 1\t\t\t\t " << std::endl
       << "Ka 0 0 0\t\t\t " << std::endl
       << "Ks 1 1 1\t\t\t " << std::endl
       << "map_Kd viridis.PNG" << std::endl;
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
  writePositions(lines, vertices, vertexCount);
  writeTextureCoordinates(lines, field, vertexCount);
  writeFaces(lines, triangles);
  file.close();

  if (openFile(file, baseName, ".mtl")) {
    writeMaterial(file);
  }
}

}  // namespace quor
