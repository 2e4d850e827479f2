// How many digits coordinates need as text.
#pragma once

#include "kit/mesh.h"

namespace quorkit {

/// The significant digits with which the ends of every edge stay apart as text, 6 .. 17. Ends at
/// one place do not count.
/// @param mesh  finite coordinates, corners in range
int positionDigits(const MeshView& mesh);

}  // namespace quorkit
