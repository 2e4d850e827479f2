#include "results/page.h"

#include "results/files.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace heatmap {
namespace {

constexpr std::string_view kMark = "<!-- result -->";

std::string readNamed(const std::filesystem::path& file) {
  try {
    return readWhole(file);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error("cannot read " + file.string() + ": " + error.what());
  }
}

// RFC 4648, section 4: any bytes in 64 characters, none of which HTML knows.
std::string base64(const std::string& bytes) {
  static const char* const kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[group >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

std::string escaped(const std::string& attribute) {
  std::string text;
  for (const char c : attribute) {
    text += c == '&' ? "&amp;" : c == '"' ? "&quot;" : c == '<' ? "&lt;" : std::string(1, c);
  }
  return text;
}

std::string elementOf(const std::filesystem::path& file) {
  return R"(<script type="text/plain" data-name=")" + escaped(file.filename().u8string()) +
         R"(">)" + base64(readNamed(file)) + "</script>\n";
}

}  // namespace

std::string readViewer(const std::filesystem::path& file) {
  std::string viewer = readNamed(file);
  if (viewer.find(kMark) == std::string::npos) {
    throw std::runtime_error(file.string() + " is not the viewer's page: install quor again");
  }
  return viewer;
}

void writePage(const std::string& viewer, const std::filesystem::path& directory,
               const std::string& name) {
  std::string elements;
  for (const char* ending : {".obj", ".mtl", ".json"}) {
    elements += elementOf(directory / (name + ending));
  }
  elements += elementOf(directory / "viridis.PNG");
  const std::size_t mark = viewer.find(kMark);
  writeWhole(directory / (name + ".html"),
             viewer.substr(0, mark) + elements + viewer.substr(mark + kMark.size()));
}

}  // namespace heatmap
