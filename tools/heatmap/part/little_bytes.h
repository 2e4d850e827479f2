// Numbers in binary files, on machines of either byte order.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace heatmap {

// Up to eight bytes as an unsigned integer, the lowest byte first.
inline std::uint64_t littleUnsigned(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    value = value << 8U | static_cast<unsigned char>(bytes[i]);
  }
  return value;
}

// Four bytes as a float of IEEE 754, eight as a double; the lowest byte first.
inline float littleFloat(std::string_view bytes) {
  const auto bits = static_cast<std::uint32_t>(littleUnsigned(bytes));
  float value = 0.0F;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}
inline double littleDouble(std::string_view bytes) {
  const std::uint64_t bits = littleUnsigned(bytes);
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

}  // namespace heatmap
