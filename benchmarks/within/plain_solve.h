// Fields without an estimate of their error: on a given mesh, on heatmap's default for a length,
// and as a reference.
#pragma once

#include "within/field.h"

#include <vector>

namespace within {

/// As heatmap solves with a given length: all edges up to a 32nd of the diagonal, shorter ones near
/// corners of the surface and of what is prescribed.
Field solveByLength(const Part& part, const Prescription& prescription);

/// All edges up to a length.
Field solveUniformly(const Part& part, const Prescription& prescription, double length);

/// A reference that owes nothing to quorkitSolveWithin: the cotangent weights of the triangles as
/// they are, refined where the gradient changes from triangle to triangle by more than a share of
/// the span, until no edge with more is left or the limit is reached.
/// @param share  of the span; edge length times change of the gradient across it
Field referenceByJumps(const Part& part, const Prescription& prescription, double share,
                       std::size_t triangleLimit, const Exempt& exempt);

}  // namespace within
