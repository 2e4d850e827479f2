// Splits triangles until no edge is longer than a length.
//
// The subdivision is the "red-green" one of adaptive meshes without the "green" ones being undone:
// R. E. Bank, A. H. Sherman, A. Weiser, Refinement algorithms and data structures for regular local
// mesh refinement, Scientific Computing (1983).
#pragma once

#include "kit/division.h"
#include "kit/mesh.h"

#include <cstdint>
#include <optional>

namespace quorkit {

/// The most triangles that a solver can be made of, and so the most that refining makes.
constexpr std::int32_t kMostTriangles = 238609294;

/// Splits every edge longer than the length at its midpoint, until none is left. Whether an edge is
/// split, and where, depends on its ends alone and is the same either way round, so that every
/// triangle can be divided on its own, by depth, and meets its neighbours; only the numbers of the
/// midpoints are looked up in a table of edges.
/// Throws std::length_error before anything is made if there would be more than kMostTriangles
/// triangles, or if n and the number of new triangles is more than 2^31 - 1; and std::bad_alloc.
/// @param mesh     finite coordinates, different corners in range
/// @param lengths  finite, above 0
MeshData refine(const MeshView& mesh, const EdgeLengths& lengths);

/// The same without a look ahead.
/// Throws std::bad_alloc.
/// @param most  triangles, kMostTriangles or less
/// @return nothing if they would be more
std::optional<MeshData> refineUnlessMore(const MeshView& mesh, const EdgeLengths& lengths,
                                         std::int64_t most);

}  // namespace quorkit
