// From the tessellation that a CAD host draws to a mesh that a field can be computed on.
#pragma once

#include "selection.h"
#include "surface.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace heatmap {

// Drops flat triangles without opening cracks, and vertices that no triangle uses.
// Returns what went, as a text.
std::string clean(Surface& mesh);

// How fine the mesh is to be.
struct Edge {
  enum Kind { kDefault, kNone, kLength } kind = kDefault;
  double length = 0.0;  // of kLength
};

// "none", or a length. Throws std::runtime_error for anything else.
Edge parseEdge(const std::string& text);

// A mesh whose long edges are split, and the one that it was made of.
struct Refined {
  Surface mesh;  // begins with the vertices of `input`
  Surface input;
  std::vector<std::int32_t> origins;  // for each triangle the input triangle that it is a part of
  // For each vertex the input edge that it lies on, by its ends: twice itself if it is one of the
  // input's; kInside twice if it lies inside a triangle.
  std::vector<std::array<std::int32_t, 2>> edges;
  double length = 0.0;  // that no edge is longer than; 0 if none was split

  static constexpr std::int32_t kInside = -1;
};

// Splits all edges longer than the length. Without vertices inside its faces a part has a field
// that is wrong by several per cent; a thirty-second part of the diagonal, the default, leaves a
// few thousandths. Throws std::runtime_error if that would make too many triangles.
Refined refine(const Surface& mesh, const Edge& edge);

// Splits edges near singular points further, those of the surface and those of what the rules
// select. Throws likewise.
void refineNearSingularPoints(Refined& refined, const std::vector<Rule>& rules);

// The vertices of the refined mesh that a rule selects. Ends of an axis are faces of the input, the
// triangles whose three corners the rule selects; where there are none its edges, of which the rule
// selects both ends; or else its vertices alone. So what is selected does not depend on how fine
// the mesh is. The other rules look at the refined vertices.
std::vector<std::int32_t> select(const Refined& refined, const Rule& rule);

// What refining came to.
std::string describe(const Refined& refined, const Edge& edge);

}  // namespace heatmap
