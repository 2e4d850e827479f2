// What kind of surface a face is.
#pragma once

#include "part/geometry.h"
#include "part/surface.h"

#include <cstdint>
#include <vector>

namespace heatmap {

enum class FaceKind { kPlane, kCylinder, kCone, kSphere, kCurved };

struct FaceShape {
  FaceKind kind;
  double area;
  Vec3 center;     // the mean of its points; of a curved face not on it
  Vec3 direction;  // of length 1: the axis of cylinders and cones, of others the mean normal; or 0
  double radius;   // of cylinders and spheres, else 0
};

// Fits the shapes in this order to the corners and normals of triangles, of which there is at least
// one and which have an area. A shape is taken if it is within a thousandth of its size.
FaceShape shapeOf(const Surface& surface, const std::vector<std::int32_t>& triangles);

const char* nameOf(FaceKind kind);

}  // namespace heatmap
