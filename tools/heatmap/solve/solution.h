// The field between the regions of a part.
#pragma once

#include "part/surface.h"
#include "regions/region.h"
#include "stages.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace heatmap {

// A mesh with one value per vertex.
struct Solution {
  Surface mesh;
  std::vector<double> field;
  // By how much the field may differ from the exact one of the same surface; nothing if that was
  // not estimated.
  std::optional<double> error;
  std::string errorExcept;  // where that does not hold, in words; empty if it holds everywhere
};

// Splits edges down to a length, shorter near the corners at which a field bends most, and solves.
// Shows each step. Throws Interrupted on Ctrl-C, and std::runtime_error if that would make too many
// triangles or the mesh is too bad to solve on.
//
//   length  nothing to solve on the triangles as they are
Solution solveOnEdges(const Regions& regions, std::optional<double> length, Stages& stages);

// How far the written field may be from the exact one, and what writing alone may take of that; in
// the unit of the field.
struct Allowance {
  double tolerance = 0.0;
  double textError = 0.0;
};

// Refines until the field is within the tolerance of the exact one, by the kit's estimate. Shows
// each step, and warns where that is not promised or not reached. Throws likewise.
//
//   allowance      its tolerance is above its textError, which the solution's error includes
//   triangleLimit  1 or more; the mesh has no more triangles than that, or than four for each of
//   the part
Solution solveWithin(const Regions& regions, const Allowance& allowance, std::int32_t triangleLimit,
                     Stages& stages);

}  // namespace heatmap
