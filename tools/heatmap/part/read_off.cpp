// OFF: a word that ends in "OFF", the numbers of vertices, faces and edges, one line per vertex and
// one per face, with how many corners it has in front. Colours and normals behind them are left
// out.

#include "part/part_reader.h"
#include "part/polygon.h"
#include "part/text_scanner.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace heatmap {
namespace {

class OffLines {
 public:
  explicit OffLines(std::string_view bytes) : text_(bytes) {}

  Surface read() {
    takeHead();
    for (std::int64_t v = 0; v < vertexCount_; ++v) {
      requireLine("vertices", v, vertexCount_);
      for (int axis = 0; axis < 3; ++axis) {
        surface_.vertices.push_back(text_.number());
      }
    }
    for (std::int64_t f = 0; f < faceCount_; ++f) {
      requireLine("faces", f, faceCount_);
      takeFace();
    }
    return std::move(surface_);
  }

 private:
  // The counts are on the line of the first word, or on the next one.
  void takeHead() {
    nextLine();
    const std::string_view kind = text_.word();
    if (kind == "4OFF" || kind == "nOFF" || kind == "4nOFF") {
      text_.refuse("OFF in more than three dimensions is not read");
    }
    std::string_view first = text_.word();
    if (first == "BINARY") {
      text_.refuse("binary OFF is not read: export OFF in text, or STL");
    }
    if (first.empty() || first[0] == '#') {
      nextLine();
      first = text_.word();
    }
    if (!parseInteger(first, vertexCount_) || vertexCount_ < 0) {
      text_.refuse("the number of vertices is missing");
    }
    faceCount_ = text_.integer();
    if (std::max(vertexCount_, faceCount_) > kMost || faceCount_ < 0) {
      text_.refuse("the numbers of vertices and faces are not between 0 and 2147483647");
    }
  }

  void takeFace() {
    const std::int64_t count = text_.integer();
    if (count < 0) {
      text_.refuse("a face has " + std::to_string(count) + " corners");
    }
    corners_.clear();
    for (std::int64_t k = 0; k < count; ++k) {
      const std::int64_t vertex = text_.integer();
      if (vertex < 0 || vertex >= vertexCount_) {
        text_.refuse("a face has vertex " + std::to_string(vertex) + ", and there are " +
                     std::to_string(vertexCount_) + ", from 0 on");
      }
      corners_.push_back(static_cast<std::int32_t>(vertex));
    }
    appendPolygon(corners_, surface_);
  }

  // Lines that begin with # are remarks.
  bool nextLine() {
    bool isThere = text_.nextLine();
    while (isThere && text_.isRemark()) {
      isThere = text_.nextLine();
    }
    return isThere;
  }

  void requireLine(const char* what, std::int64_t held, std::int64_t announced) {
    if (!nextLine()) {
      throw std::runtime_error("it announces " + std::to_string(announced) + " " + what +
                               " and holds " + std::to_string(held) +
                               ": the file is cut off or damaged; export it again");
    }
  }

  static constexpr std::int64_t kMost = 2147483647;

  TextScanner text_;
  Surface surface_;
  std::vector<std::int32_t> corners_;
  std::int64_t vertexCount_ = 0;
  std::int64_t faceCount_ = 0;
};

}  // namespace

PartFile readOff(std::string_view bytes) {
  return {OffLines(bytes).read(), false, {}};
}

}  // namespace heatmap
