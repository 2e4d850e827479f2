// Any three floats and any integer: the code of the sphere against the same rule in doubles, which
// hold every product and every sum exactly enough for one rounding to single precision.

#include "input.h"

#include <quor.h>

namespace {

using fuzz::require;

int byteOf(float coordinate) {
  const auto product = float(double(coordinate) * 255.0);
  const double whole = std::trunc(double(float(double(product) + 128.0)));
  if (!(std::abs(whole) < 0x1p63)) {
    return 0;
  }
  const double low32 = whole - std::floor(whole * 0x1p-32) * 0x1p32;
  return int(std::min(low32, 255.0));
}

int decode(float x, float y, float z) {
  y = z < 0 ? -y : y;
  x = z >= 0 ? x : -x;
  const int pattern = 256 * byteOf(y) + byteOf(x);
  return pattern == 65535 ? -1 : pattern;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  auto x = input.raw<float>();
  auto y = input.raw<float>();
  auto z = input.raw<float>();
  require(decode_integer_from_sphere(x, y, z) == decode(x, y, z));

  const auto value = input.raw<std::int32_t>() >> input.byte() % 32;
  const bool isInRange = value >= -1 && value <= 65534;
  require(encode_integer_to_sphere(value, &x, &y, &z) == (isInRange ? 0 : -1));
  if (isInRange) {
    require(std::abs(double(x) * x + double(y) * y + double(z) * z - 1) < 2e-7);
    require(decode(x, y, z) == value && decode_integer_from_sphere(-x, -y, -z) == value);
  } else {
    require(x == 0 && y == 0 && z == 0);
  }
  return 0;
}
