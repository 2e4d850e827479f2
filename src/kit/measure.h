// Lengths and areas of any finite points, where squares leave the range of double too.
#pragma once

#include "util/vec3.h"

namespace quorkit {

using quor::pointAt;
using quor::Vec3;

/// The distance of two points; infinite only if it has no place in a double. The same bits either
/// way round.
double distance(Vec3 p, Vec3 q);

/// Twice the area of a triangle; infinite only if it has no place in a double, and 0 only if it is
/// below the smallest double. Not finite where a coordinate is not.
double doubledArea(Vec3 a, Vec3 b, Vec3 c);

}  // namespace quorkit
