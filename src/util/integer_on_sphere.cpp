#include "util/integer_on_sphere.h"

#include "util/exact_arithmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quor {
namespace {

/// The float nearest to 1/255, bit pattern 0x3B808081.
constexpr float kByteStep = 0x1.010102p-8F;
constexpr std::int32_t kMinusOnePattern = 65535;

float coordinateOfByte(std::int32_t byte) {
  return static_cast<float>(byte) * kByteStep - 0.5F;
}

/// Truncation as x86 processors do it in 64 bits: what has no place there, NaN included, becomes
/// the smallest integer. The conversion of such a value is undefined in C++ and differs between
/// processors, so it is never made.
std::int64_t truncateToInt64(float value) {
  constexpr float limit = 0x1p63F;
  if (!(value >= -limit && value < limit)) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(value);
}

/// Undoes coordinateOfByte and rounds to the nearest byte: the offset is 127.5 + 0.5. Only the low
/// 32 bits count, without sign, limited to 255: a coordinate somewhat out of range gives 255 on
/// either side, one of 2^55 or more gives 0, and so does NaN.
std::int32_t byteOfCoordinate(float coordinate) {
  const float scaled = coordinate * 255.0F + 128.0F;
  const auto low32 = static_cast<std::uint32_t>(truncateToInt64(scaled));
  return static_cast<std::int32_t>(std::min<std::uint32_t>(low32, 255));
}

}  // namespace

SpherePoint encodeIntegerToSphere(std::int32_t value) {
  const std::int32_t pattern = value == -1 ? kMinusOnePattern : value;
  const float x = coordinateOfByte(pattern % 256);
  const float y = coordinateOfByte(pattern / 256);
  const float s = y * y + x * x;
  return {x, y, std::sqrt(1.0F - s)};
}

std::int32_t decodeIntegerFromSphere(SpherePoint point) {
  auto [x, y, z] = point;
  if (z < 0.0F) {
    y = -y;
  }
  if (!(z >= 0.0F)) {  // a NaN z mirrors x alone, deliberately
    x = -x;
  }
  const std::int32_t pattern = byteOfCoordinate(y) * 256 + byteOfCoordinate(x);
  return pattern == kMinusOnePattern ? -1 : pattern;
}

}  // namespace quor
