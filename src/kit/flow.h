// What flows through regions of prescribed values.
#pragma once

#include "kit/mesh.h"

#include <cstdint>

namespace quorkit {

/// The sum over each region of the entries of K u, with K the stiffness matrix of the solver and u
/// the field: what the region feeds into the surface.
/// @param mesh         corners in range
/// @param field        n values
/// @param regions      n numbers below regionCount; negative ones are in no region
/// @param flowsOut     receives regionCount flows
void flows(const MeshView& mesh, const double* field, const std::int32_t* regions,
           std::int32_t regionCount, double* flowsOut);

}  // namespace quorkit
