#include "page.h"

#include "whole_file.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace heatmap {
namespace {

constexpr std::string_view kMark = "<!-- result -->";

std::string readWhole(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(stream)), {});
  if (!stream.is_open() || stream.bad()) {
    throw std::runtime_error("cannot read " + file.string());
  }
  return bytes;
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

void writeFile(std::ostream& page, const std::filesystem::path& file) {
  page << R"(<script type="text/plain" data-name=")" << escaped(file.filename().string()) << R"(">)"
       << base64(readWhole(file)) << "</script>\n";
}

}  // namespace

std::string readViewer(const std::filesystem::path& file) {
  std::string viewer = readWhole(file);
  if (viewer.find(kMark) == std::string::npos) {
    throw std::runtime_error(file.string() + " is not the viewer's page");
  }
  return viewer;
}

void writePage(const std::string& viewer, const std::filesystem::path& directory,
               const std::string& name) {
  const std::size_t mark = viewer.find(kMark);
  writeWhole(directory / (name + ".html"), [&](std::ostream& page) {
    page << std::string_view(viewer).substr(0, mark);
    for (const char* ending : {".obj", ".mtl", ".json"}) {
      writeFile(page, directory / (name + ending));
    }
    writeFile(page, directory / "viridis.PNG");
    page << std::string_view(viewer).substr(mark + kMark.size());
  });
}

}  // namespace heatmap
