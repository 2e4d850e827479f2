#include "text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
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

std::string shortText(double value, int digits) {
  std::array<char, 32> buffer{};
  const int length = std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, value);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string errorText(double error) {
  if (!(error > 0.0) || !std::isfinite(error)) {
    return text(error);
  }
  const double step = std::pow(10.0, std::floor(std::log10(error)) - 1.0);
  constexpr double kRounding = 1e-9;  // of the quotient: 0.3 is 30 steps, not 31
  return shortText(std::ceil(error / step - kRounding) * step, 2);
}

std::string counted(std::int32_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string counts(const Surface& surface) {
  return std::to_string(surface.vertexCount()) + " vertices, " +
         counted(surface.triangleCount(), "triangle");
}

std::string placeText(const Surface& surface, quor::Vec3 point) {
  const quor::Vec3 p = surface.origin + point;
  const int digits = surface.origin == quor::Vec3{0.0, 0.0, 0.0} ? 6 : 12;
  // No minus in front of zero.
  return "(" + shortText(p.x + 0.0, digits) + ", " + shortText(p.y + 0.0, digits) + ", " +
         shortText(p.z + 0.0, digits) + ")";
}

std::string boundsText(const Surface& surface) {
  const auto& [low, high] = boundsOf(surface);
  return placeText(surface, {low[0], low[1], low[2]}) + " to " +
         placeText(surface, {high[0], high[1], high[2]});
}

}  // namespace heatmap
