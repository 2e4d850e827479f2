// Removes degenerate triangles, one step at a time.
#pragma once

#include "kit/mesh.h"

#include <cstdint>
#include <vector>

namespace quorkit {

struct CleanedTriangles {
  std::vector<std::int32_t> triangles;  ///< three input vertices each
  std::vector<std::int32_t> origins;    ///< per triangle the input triangle that it is part of
  std::vector<std::int32_t> becameOf;   ///< per input vertex the one that it became, or itself
  std::int32_t degenerateCount = 0;     ///< triangles that are degenerate still
};

/// Takes one of two steps at a degenerate triangle, whichever changes no other triangle that has an
/// area but for rounding:
///   - The ends of its shortest side become one vertex, the lower one, if they are at one place
///   beside
///     its longest side. All triangles with both of them vanish.
///   - Its middle corner lies on its longest side: every triangle across that side is split there,
///   and
///     the degenerate one vanishes. With nothing across, it just vanishes.
/// A step is taken only if every triangle that it changes keeps its normal within 60 degrees and
/// its area, unless that one is degenerate itself. An edge never loses one of two triangles, but
/// where the border ran along the longest side: then it runs through the middle corner, which lies
/// on it.
///
/// Why it ends: let L be the list of the longest sides of all degenerate triangles, longest first.
/// The first step makes vertices fewer. The second one takes the longest side of its triangle out
/// of L, and is taken only if all degenerate triangles that it makes have a shorter one, so L
/// becomes smaller in the order of such lists. There are finitely many vertices and sides, so
/// neither can go on for ever. For the time that it takes there is a bound as well: the number of
/// triangles looked at. Throws std::bad_alloc.
/// @param mesh        corners in range; finite where used
/// @param degenerate  the triangles to remove, ascending; those with equal corners among them
CleanedTriangles removeDegenerate(const MeshView& mesh,
                                  const std::vector<std::int32_t>& degenerate);

}  // namespace quorkit
