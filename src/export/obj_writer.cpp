#include "export/obj_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <locale>
#include <new>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace quor {
namespace {

// Every line is flushed, and one with a long text is inserted as one string, line feed included,
// since a stream writes long strings at once: so each line reaches the file in one write, and a
// reader that follows the growing file sees whole lines.

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

/// Makes the locale ready for numbers. A stream does that when the first one is inserted, but keeps
/// to itself that memory ran out and drops the number.
void prepareNumbers(std::ofstream& file) {
  class : public std::streambuf {
  } nowhere;
  std::use_facet<std::num_put<char>>(file.getloc()).put(&nowhere, file, ' ', 0L);
}

void writePositions(std::ofstream& file, const std::vector<double>& vertices,
                    std::size_t vertexCount) {
  for (std::size_t k = 0; k < vertexCount; ++k) {
    const double* p = vertices.data() + 3 * k;
    file << "v " << p[0] << " " << p[1] << " " << p[2] << std::endl;
  }
}

void writeTextureCoordinates(std::ofstream& file, const double* field, std::size_t vertexCount) {
  const std::vector<double> values(field, field + vertexCount);
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  const double lo = *low;
  const double s = 1.0 / (*high - lo);
  for (const double value : values) {
    const double u = (lo - value) * s + 1.0;
    file << "vt " << u << " 0.5" << std::endl;
  }
}

void writeFaces(std::ofstream& file, const std::vector<std::int32_t>& triangles) {
  const auto length = static_cast<std::int32_t>(triangles.size());
  for (std::int32_t t = 0; t + 2 < length; t += 3) {
    file << "f";
    for (std::int32_t corner = t; corner < t + 3; ++corner) {
      const auto number = std::int64_t{triangles[static_cast<std::size_t>(corner)]} + 1;
      file << " " << number << "/" << number;
    }
    file << std::endl;
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
  file << std::string("mtllib ") + baseName + ".mtl\n" << std::flush;
  file << "usemtl Heat" << std::endl;

  const auto length = static_cast<std::int32_t>(vertices.size());
  if (length < 3) {
    throw std::length_error("vector");
  }
  const std::size_t vertexCount = static_cast<std::size_t>(length) / 3;
  prepareNumbers(file);
  writePositions(file, vertices, vertexCount);
  writeTextureCoordinates(file, field, vertexCount);
  writeFaces(file, triangles);
  file.close();

  if (openFile(file, baseName, ".mtl")) {
    writeMaterial(file);
  }
}

}  // namespace quor
