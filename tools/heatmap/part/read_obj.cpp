// OBJ: vertices ("v x y z") and polygons ("f 1/2/3 ..." with 1-based or, from the end, negative
// numbers). All other statements are left out.

#include "part/part_reader.h"
#include "part/polygon.h"
#include "part/text_scanner.h"
#include "text.h"

#include <string>
#include <string_view>
#include <utility>

namespace heatmap {
namespace {

class ObjStatements {
 public:
  explicit ObjStatements(std::string_view bytes) : bytes_(bytes), text_(bytes) {}

  // Faces may stand before the vertices that they name, so vertices are read first.
  Surface read() {
    for (TextScanner text(bytes_); text.nextLine();) {
      if (text.word() == "v") {
        for (int axis = 0; axis < 3; ++axis) {
          surface_.vertices.push_back(text.number());
        }
      }
    }
    while (text_.nextLine()) {
      const std::string_view statement = text_.word();
      verticesBefore_ += statement == "v" ? 1 : 0;
      if (statement == "f") {
        takeFace();
      }
    }
    return std::move(surface_);
  }

 private:
  void takeFace() {
    corners_.clear();
    for (std::string_view word = text_.word(); !word.empty(); word = text_.word()) {
      if (word == "\\" && text_.nextLine()) {
        continue;  // the statement goes on there
      }
      if (word[0] == '#') {
        break;
      }
      corners_.push_back(cornerOf(word));
    }
    if (corners_.size() < 3) {
      text_.refuse("a face has " + std::to_string(corners_.size()) + " corners");
    }
    appendPolygon(corners_, surface_);
  }

  // Vertex, texture and normal are separated by slashes.
  std::int32_t cornerOf(std::string_view word) const {
    std::int64_t number = 0;
    if (!parseInteger(word.substr(0, word.find('/')), number)) {
      text_.refuse(quoted(std::string(word)) + " is not the number of a vertex");
    }
    const std::int64_t vertex = number < 0 ? verticesBefore_ + number : number - 1;
    if (vertex < 0 || vertex >= surface_.vertexCount()) {
      text_.refuse("a face has vertex " + std::to_string(number) + ", and there are " +
                   std::to_string(number < 0 ? verticesBefore_ : surface_.vertexCount()));
    }
    return static_cast<std::int32_t>(vertex);
  }

  std::string_view bytes_;
  TextScanner text_;
  Surface surface_;
  std::int64_t verticesBefore_ = 0;
  std::vector<std::int32_t> corners_;
};

}  // namespace

PartFile readObj(std::string_view bytes) {
  return {ObjStatements(bytes).read(), false, {}};
}

}  // namespace heatmap
