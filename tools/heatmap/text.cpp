#include "text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace heatmap {

std::string text(double value) {
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  static_cast<void>(error);  // 24 characters at most
  return {digits.data(), end};
}

std::string quoted(const std::string& given) {
  constexpr std::size_t kMost = 60;
  std::size_t end = std::min(given.size(), kMost);
  while (end < given.size() && (static_cast<unsigned char>(given[end]) & 0xC0U) == 0x80U) {
    --end;  // not in the middle of a character in UTF-8
  }
  return '"' + given.substr(0, end) + (end < given.size() ? "...\"" : "\"");
}

std::string pointText(const double* point) {
  std::array<char, 64> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), "(%.6g, %.6g, %.6g)", point[0],
                                   point[1], point[2]);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string boundsText(const Bounds& bounds) {
  return pointText(bounds.low.data()) + " to " + pointText(bounds.high.data());
}

}  // namespace heatmap
