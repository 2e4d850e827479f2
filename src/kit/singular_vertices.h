// Where a field bends without limit, and how sharply.
#pragma once

#include "kit/boundary_values.h"
#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// A vertex near which the field behaves as a power of the distance that is at most 1 or little
/// above it: its gradient is not continuous there, and a mesh has to be finer the nearer it is.
struct SingularVertex {
  std::int32_t vertex;
  double exponent;  ///< of the distance, above 0
};

/// The vertices of the input where the surface or what is prescribed makes the field singular. The
/// surface around a vertex is a cone with the sum of its angles. Edges that are prescribed, and the
/// border, cut it into sectors. The field in a sector of the angle w behaves as the distance to the
/// power
///   2 pi / w  in a whole cone without an edge of either kind,
///   pi / w    between two prescribed edges, or between two of the border,
///   pi / 2w   between a prescribed edge and one of the border.
/// (P. Grisvard, Elliptic Problems in Nonsmooth Domains, 1985.) The sharpest sector counts. All
/// other points, midpoints of refinement among them, are regular. Throws std::bad_alloc.
/// @param mesh    of the input: finite, corners different and in range, none degenerate
/// @param values  of the input, not followed yet
/// @return ascending, those with an exponent below kRegular
std::vector<SingularVertex> singularVertices(const MeshView& mesh, const BoundaryValues& values);

constexpr double kRegular = 0.97;  ///< curved surfaces have vertices a little below 1 everywhere

}  // namespace quorkit
