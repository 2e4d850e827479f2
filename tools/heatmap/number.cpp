#include "number.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <system_error>

namespace heatmap {

std::optional<double> parseNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
    text.remove_prefix(1);
  }
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
    return std::nullopt;
  }
  // Too large or too small for a double: from_chars does not say which.
  return error == std::errc() ? value : std::strtod(std::string(text).c_str(), nullptr);
}

std::optional<double> parseFinite(std::string_view text) {
  const std::optional<double> value = parseNumber(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

}  // namespace heatmap
