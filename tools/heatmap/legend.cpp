#include "legend.h"

#include "text.h"
#include "whole_file.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ostream>
#include <string_view>

namespace heatmap {
namespace {

// How many bytes of a UTF-8 text, which begins with one that is not ASCII, are its first character;
// 0 if they are none (RFC 3629: the shortest form, no surrogates, 0x10FFFF at most).
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const std::size_t length = byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
  std::uint32_t code = byte(0) & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) {
      return 0;
    }
    code = code << 6U | (byte(i) & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> shortest{0, 0, 0x80, 0x800, 0x10000};
  const bool isCharacter = byte(0) >= 0xC0 && byte(0) < 0xF8 && code >= shortest[length] &&
                           code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  return isCharacter ? length : 0;
}

// A JSON string (RFC 8259).
std::string jsonString(std::string_view text) {
  std::string json = "\"";
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    const std::size_t length = c < 0x80 ? 1 : characterLength(text.substr(i));
    if (length == 0) {
      json += '?';
    } else if (c < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      json += escape.data();
    } else {
      json += c == '"' || c == '\\' ? "\\" : "";
      json += text.substr(i, length);
    }
    i += length == 0 ? 1 : length;
  }
  return json + '"';
}

}  // namespace

void writeLegend(const Legend& legend, const std::filesystem::path& file) {
  writeWhole(file, [&legend](std::ostream& stream) {
    stream << "{\"quor\": 1,\n \"title\": " << jsonString(legend.title)
           << ",\n \"unit\": " << jsonString(legend.unit)
           << ",\n \"minimum\": " << text(legend.minimum)
           << ",\n \"maximum\": " << text(legend.maximum)
           << ",\n \"field\": " << jsonString(legend.field) << "}\n";
  });
}

}  // namespace heatmap
