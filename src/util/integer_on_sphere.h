// A 16-bit label as a point of the unit sphere.
#pragma once

#include <cstdint>

namespace quor {

/// A point of single precision.
struct SpherePoint {
  float x, y, z;
};

/// The two bytes of the label become x and y in [-0.5, 0.5], and z > 0 completes the unit length.
/// @param value  -1 .. 65534; -1 is carried as the pattern 65535
SpherePoint encodeIntegerToSphere(std::int32_t value);

/// The label of a point or of its mirror image through the origin.
/// @return -1 .. 65534 for any point, also for one that is not on the sphere
std::int32_t decodeIntegerFromSphere(SpherePoint point);

}  // namespace quor
