// What becomes of triangles and edges when a surface is refined or cut.
#pragma once

#include "part/surface.h"

#include <vector>

namespace heatmap {

// From one surface to the next, which has the vertices of the first one, with their numbers, and
// more. Each further vertex lies on an edge of two vertices below it.
struct Change {
  std::vector<std::int32_t> triangleOrigins;  // per triangle, the one that it is a part of
  std::vector<Edge> vertexOrigins;            // per vertex, the ends of that edge; itself twice
};

// Nothing changes yet.
Change noChange(const Surface& surface);

// Makes a change go on to what `next` leads to.
void append(const Change& next, Change& change);

// Part of a surface: whole triangles, and edges, which may belong to none of these.
struct Selection {
  std::vector<std::int32_t> triangles;  // ascending
  std::vector<Edge> edges;              // ascending

  bool isEmpty() const { return triangles.empty() && edges.empty(); }
};

// The vertices of a part, ascending, each once.
std::vector<std::int32_t> verticesOf(const Surface& surface, const Selection& selection);

// The same part of the surface after the change.
void follow(const Change& change, Selection& selection);

}  // namespace heatmap
