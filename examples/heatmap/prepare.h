// From the tessellation that a CAD host draws to a mesh that a field can be computed on.
#pragma once

#include "mesh.h"
#include "selection.h"

#include <cstdint>
#include <string>
#include <vector>

namespace heatmap {

// Drops flat triangles without opening cracks, and vertices that no triangle uses.
// Returns what went, as a text.
std::string clean(Mesh& mesh);

// How fine the mesh is to be.
struct Edge {
  enum Kind { kDefault, kNone, kLength } kind = kDefault;
  double length = 0.0;  // of kLength
};

// "none", or a length. Throws std::runtime_error for anything else.
Edge parseEdge(const std::string& text);

// A mesh whose long edges are split, and the one that it was made of.
struct Refined {
  Mesh mesh;  // begins with the vertices of `input`
  Mesh input;
  std::vector<std::int32_t> origins;  // for each triangle the input triangle that it is a part of
  std::string description;            // for the reader
};

// Splits all edges longer than the length, and near singular points shorter ones too. Without
// vertices inside its faces a part has a field that is wrong by several per cent; a thirty-second
// part of the diagonal, the default, leaves a few thousandths. Throws std::runtime_error if that
// would make too many triangles.
Refined refine(const Mesh& mesh, const Edge& edge);

// The vertices of the refined mesh that a rule selects. Ends of an axis are faces of the input: all
// vertices of triangles whose three corners the rule selects, and such corners alone; so what is
// selected does not depend on how fine the mesh is. The other rules look at the refined vertices.
std::vector<std::int32_t> select(const Refined& refined, const Rule& rule);

}  // namespace heatmap
