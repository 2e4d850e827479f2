// Mesh and field as an OBJ file, its material and its ramp, whole or not at all.
#pragma once

#include "kit/mesh.h"

#include <string>

namespace quorkit {

/// Where an OBJ file goes.
struct ObjPlace {
  std::string path;            ///< UTF-8, without ".obj"
  const char* ramp = nullptr;  ///< path of the image to copy, or null
};

/// Writes the files. See quorkitWrite.
/// Throws FileError, after which no part of a file is left, and std::bad_alloc.
/// @param mesh    finite coordinates, corners in range, at least one vertex
/// @param field   n finite values
/// @param margin  share of the field's range that its ends keep from those of the ramp, 0 .. 1
void writeObj(const MeshView& mesh, const double* field, const ObjPlace& place, double margin);

}  // namespace quorkit
