// Simple rules that select vertices.
#pragma once

#include "surface.h"

#include <string>
#include <vector>

namespace heatmap {

// A rule, as parsed from
//   z+  z-  x+  x-  y+  y-   the outermost 2 % of the extent at that end of an axis
//   z+:0.1                   the outermost 10 %
//   ball:X,Y,Z,R             within R of the point
//   nearest:X,Y,Z            the vertex nearest to the point
struct Rule {
  enum Kind { kLowEnd, kHighEnd, kBall, kNearest };
  std::string text;  // as the user wrote it
  Kind kind;
  std::size_t axis;             // of an end
  std::vector<double> numbers;  // the fraction; X, Y, Z, R; X, Y, Z
  bool isChosen = false;        // by this program, because the user gave none
};

// Throws std::runtime_error, which names the rule and what is wrong with it.
Rule parseRule(const std::string& rule);

// The vertices that the rule selects, in ascending order.
// Throws std::runtime_error if there are none, and says where the mesh is.
std::vector<std::int32_t> select(const Surface& mesh, const Rule& rule);

}  // namespace heatmap
