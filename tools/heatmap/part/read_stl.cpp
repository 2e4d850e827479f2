// STL, both kinds: 80 bytes of anything, a 32-bit count, and 50 bytes per triangle, or text with
// the coordinates of each corner behind the word "vertex". Every triangle owns its three points.

#include "part/little_bytes.h"
#include "part/part_reader.h"
#include "part/text_scanner.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace heatmap {
namespace {

constexpr std::size_t kHead = 84;
constexpr std::size_t kTriangle = 50;  // a normal and three corners in floats, and two bytes

// Binary files may begin with "solid", too; what follows then is no text.
bool isText(std::string_view bytes) {
  TextScanner text(bytes.substr(0, 1U << 16U));
  if (!text.nextLine() || !isWord(text.word(), "solid")) {
    return false;
  }
  text.nextLine();
  const std::string_view second = text.word();
  return bytes.size() < kHead || isWord(second, "facet") || isWord(second, "endsolid");
}

bool isBinary(std::string_view bytes) {
  return bytes.size() >= kHead &&
         bytes.size() == kHead + kTriangle * littleUnsigned(bytes.substr(80, 4));
}

[[noreturn]] void refuseCutOff(std::uint64_t announced, std::uint64_t held, std::size_t bytes) {
  throw std::runtime_error("it announces " + std::to_string(announced) + " triangles and holds " +
                           std::to_string(held) + " (" + std::to_string(bytes) +
                           " bytes): the file is cut off or damaged; export it again");
}

void append(const double* corners, Surface& surface) {
  for (int k = 0; k < 3; ++k) {
    surface.triangles.push_back(surface.vertexCount() + k);
  }
  surface.vertices.insert(surface.vertices.end(), corners, corners + 9);
}

PartFile readBinary(std::string_view bytes) {
  const std::uint64_t announced = littleUnsigned(bytes.substr(80, 4));
  const std::uint64_t held = (bytes.size() - kHead) / kTriangle;
  if (held < announced) {
    refuseCutOff(announced, held, bytes.size());
  }
  PartFile part;
  part.isSinglePrecision = true;
  part.surface.vertices.reserve(9 * announced);
  for (std::uint64_t t = 0; t < announced; ++t) {
    std::array<double, 9> corners{};
    for (std::size_t k = 0; k < corners.size(); ++k) {
      corners[k] = double{littleFloat(bytes.substr(kHead + kTriangle * t + 12 + 4 * k, 4))};
    }
    append(corners.data(), part.surface);
  }
  if (bytes.size() != kHead + kTriangle * announced) {
    part.warnings.push_back("it announces " + std::to_string(announced) + " triangles and has " +
                            std::to_string(bytes.size() - kHead - kTriangle * announced) +
                            " bytes behind them, which were ignored");
  }
  return part;
}

// The facets of a text, one after the other.
class TextFacets {
 public:
  explicit TextFacets(std::string_view bytes) : text_(bytes) {}

  Surface read() {
    while (text_.nextLine()) {
      // Most files have one statement per line; a second one on it is found as well.
      for (std::string_view word = text_.word(); !word.empty(); word = text_.word()) {
        if (isWord(word, "solid") || isWord(word, "endsolid")) {
          isEnded_ = isWord(word, "endsolid");
          break;  // a name follows
        }
        take(word);
      }
    }
    if (begun_ != ended_ || !isEnded_) {
      throw std::runtime_error("it begins " + std::to_string(begun_) + " facets and ends " +
                               std::to_string(ended_) + (isEnded_ ? "" : ", without \"endsolid\"") +
                               ": the file is cut off or damaged; export it again");
    }
    return std::move(surface_);
  }

 private:
  void take(std::string_view word) {
    if (isWord(word, "facet")) {
      ++begun_;
      count_ = 0;
    } else if (isWord(word, "vertex")) {
      if (count_ == 3) {
        text_.refuse("a facet has more than three corners: export the part again as triangles");
      }
      takeCorner();
    } else if (isWord(word, "endfacet")) {
      if (count_ != 3) {
        text_.refuse("a facet has " + std::to_string(count_) + " corners instead of three");
      }
      ++ended_;
      append(corners_.data(), surface_);
    }
  }

  // In a file that is cut off, the last line may end anywhere.
  void takeCorner() {
    try {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        corners_[3 * count_ + axis] = text_.number();
      }
      ++count_;
    } catch (const std::runtime_error&) {
      if (!text_.rest().empty()) {
        throw;
      }
    }
  }

  TextScanner text_;
  Surface surface_;
  std::array<double, 9> corners_{};
  std::size_t count_ = 0;  // of the corners of this facet
  std::uint64_t begun_ = 0;
  std::uint64_t ended_ = 0;
  bool isEnded_ = false;
};

}  // namespace

PartFile readStl(std::string_view bytes) {
  if (!isBinary(bytes) && isText(bytes)) {
    return {TextFacets(bytes).read(), false, {}};
  }
  if (bytes.size() < kHead) {
    throw std::runtime_error("it has " + std::to_string(bytes.size()) +
                             " bytes, too few for an STL file: export it again");
  }
  return readBinary(bytes);
}

}  // namespace heatmap
