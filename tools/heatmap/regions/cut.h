// Cuts the border of a body into a surface.
#pragma once

#include "part/change.h"
#include "part/surface.h"
#include "regions/body.h"

namespace heatmap {

struct Cut {
  Change change;
  Selection inside;           // triangles inside the body, or, where there are none, edges
  std::int32_t touches = -1;  // a vertex that is inside, or -1
};

// Splits the triangles that a body's border crosses, so that what lies inside is made of whole
// triangles, or, inside a body without thickness, of whole edges. The surface stays where it is.
//
// Flat borders are exact but for `tolerance`: vertices nearer than that count as inside. Along a
// round one edges are split first, until straight cuts are within 1/2000 of the radius: the region
// does not depend on how the surface was divided into triangles.
//
// Takes a radius of 25 tolerances at least. Throws std::length_error if that would make too many
// triangles.
Cut cutOut(const Body& body, double tolerance, Surface& surface);

}  // namespace heatmap
