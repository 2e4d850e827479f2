// Mesh and field as Wavefront OBJ and MTL.
#pragma once

#include <cstdint>
#include <vector>

namespace quor {

/// Writes baseName + ".obj" and baseName + ".mtl"; the field becomes the first texture coordinate,
/// its smallest value 1, its largest 0. A file that cannot be opened is reported on standard error.
/// Throws std::length_error("vector") after the two header lines if the length of `vertices`, as a
/// signed 32-bit number, is below 3.
/// @param vertices   3n coordinates
/// @param triangles  3m corners, 0-based
/// @param field      n values
/// @param baseName   path without extension, repeated verbatim in the OBJ's mtllib line
void writeObjAndMtl(const std::vector<double>& vertices, const std::vector<std::int32_t>& triangles,
                    const double* field, const char* baseName);

}  // namespace quor
