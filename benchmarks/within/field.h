// Fields on different meshes of one surface, compared.
#pragma once

#include "within/part.h"

#include <vector>

namespace within {

struct Field {
  Part mesh;
  std::vector<double> values;
  double seconds = 0.0;       ///< of processor time, all in all
  double solveSeconds = 0.0;  ///< of it to build and solve
};

/// Where fields are not compared.
struct Exempt {
  std::vector<Point> centers;
  double radius = 0.0;

  bool contains(const Point& p) const;
};

double spanOf(const Field& field);

struct Difference {
  double largest = 0.0;
  double average = 0.0;  ///< over the surface
  Point where{};
};

/// The difference of two fields that are linear in the triangles of their meshes, at the vertices
/// of both, at the midpoints of the field's edges and in the middle of its triangles.
Difference compare(const Field& field, const Field& reference, const Exempt& exempt);

/// The absolute difference of a field from a reference at each of its vertices, 0 where exempt.
Field errorMap(const Field& field, const Field& reference, const Exempt& exempt);

}  // namespace within
