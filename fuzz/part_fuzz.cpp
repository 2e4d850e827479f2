// Any bytes as a mesh file of heatmap: each reader refuses them, or returns a mesh whose corners
// are in range and that comes back from text as it is, to the bit.

#include "part/part_reader.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using heatmap::PartFile;
using heatmap::Surface;

std::string objOf(const Surface& surface) {
  std::string text;
  std::array<char, 32> digits{};
  for (std::size_t k = 0; k < surface.vertices.size(); ++k) {
    text += k % 3 == 0 ? "\nv " : " ";
    text.append(
        digits.data(),
        std::to_chars(digits.data(), digits.data() + digits.size(), surface.vertices[k]).ptr);
  }
  for (std::size_t k = 0; k < surface.triangles.size(); ++k) {
    text += (k % 3 == 0 ? "\nf " : " ") + std::to_string(std::int64_t{surface.triangles[k]} + 1);
  }
  return text;
}

bool isSame(double a, double b) {
  return a == b ? std::signbit(a) == std::signbit(b) : std::isnan(a) && std::isnan(b);
}

void check(const Surface& surface) {
  const Surface again = heatmap::readObj(objOf(surface)).surface;
  if (again.triangles != surface.triangles || again.vertices.size() != surface.vertices.size()) {
    std::abort();
  }
  for (std::size_t k = 0; k < surface.vertices.size(); ++k) {
    if (!isSame(again.vertices[k], surface.vertices[k])) {
      std::abort();
    }
  }
  for (const std::int32_t corner : surface.triangles) {
    if (corner < 0 || corner >= surface.vertexCount()) {
      std::abort();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Reader = PartFile (*)(std::string_view);
  constexpr std::array<Reader, 4> kReaders{heatmap::readStl, heatmap::readObj, heatmap::readPly,
                                           heatmap::readOff};
  if (size == 0) {
    return 0;
  }
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  Surface surface;
  try {
    surface = kReaders[data[0] % kReaders.size()](bytes).surface;
  } catch (const std::runtime_error&) {
    return 0;
  }
  check(surface);
  return 0;
}
