// Lengths and areas of any finite points, where squares leave the range of double too.
#pragma once

#include "util/vec3.h"

#include <limits>

namespace quorkit {

using quor::pointAt;
using quor::Vec3;

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The largest size of a coordinate.
double largestComponent(Vec3 v);

/// v times 2^exponent: exact, unless a coordinate leaves the range of normal doubles.
Vec3 scaled(Vec3 v, int exponent);

/// The distance of two points; infinite only if it has no place in a double. The same bits either
/// way round.
double distance(Vec3 p, Vec3 q);

/// Twice the area of a triangle; infinite only if it has no place in a double, and 0 only if it is
/// below the smallest double. Not finite where a coordinate is not.
double doubledArea(Vec3 a, Vec3 b, Vec3 c);

}  // namespace quorkit
