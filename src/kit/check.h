// What is wrong with a mesh.
#pragma once

#include "kit/mesh.h"
#include "quorkit.h"

#include <cstdint>

namespace quorkit {

/// Looks at any mesh, corners out of range and numbers that are not finite included. See
/// quorkitCheck for what is counted.
/// Throws std::bad_alloc.
/// @param tags  n tags, or null
QuorkitReport check(const MeshView& mesh, const std::int32_t* tags);

}  // namespace quorkit
