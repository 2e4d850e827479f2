// PLY, in text and in binary of both byte orders: coordinates of any type, faces as lists of
// vertices. Other elements and properties are left out.

#include "part/little_bytes.h"
#include "part/part_reader.h"
#include "part/ply_header.h"
#include "part/polygon.h"
#include "part/text_scanner.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace heatmap {
namespace {

// The numbers behind the head, one after the other. A missing one throws EndOfNumbers.
struct EndOfNumbers {};

class TextNumbers {
 public:
  explicit TextNumbers(std::string_view data) : text_(data) {}

  double next(PlyType /*type*/) {
    while (!text_.hasWord()) {
      if (!text_.nextLine()) {
        throw EndOfNumbers();
      }
    }
    return text_.number();
  }

 private:
  TextScanner text_;
};

class BinaryNumbers {
 public:
  BinaryNumbers(std::string_view data, bool isBigEndian) : data_(data), isBigEndian_(isBigEndian) {}

  double next(PlyType type) {
    const std::size_t size = byteCount(type);
    if (data_.size() < size) {
      throw EndOfNumbers();
    }
    std::array<char, 8> bytes{};
    data_.copy(bytes.data(), size);
    data_.remove_prefix(size);
    if (isBigEndian_) {
      std::reverse(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    }
    return valueOf({bytes.data(), size}, type);
  }

 private:
  static double valueOf(std::string_view bytes, PlyType type) {
    const auto bits = static_cast<std::uint32_t>(littleUnsigned(bytes));
    switch (type) {
      case PlyType::kInt8:
        return static_cast<std::int8_t>(bits);
      case PlyType::kInt16:
        return static_cast<std::int16_t>(bits);
      case PlyType::kInt32:
        return static_cast<std::int32_t>(bits);
      case PlyType::kFloat:
        return double{littleFloat(bytes)};
      case PlyType::kDouble:
        return littleDouble(bytes);
      default:
        return bits;
    }
  }

  std::string_view data_;
  bool isBigEndian_;
};

template <typename Numbers>
class PlyElements {
 public:
  PlyElements(const PlyHeader& header, Numbers numbers)
      : header_(header), numbers_(std::move(numbers)) {}

  Surface read() {
    for (const PlyElement& element : header_.elements) {
      const std::int64_t count = element.properties.empty() ? 0 : element.count;
      for (std::int64_t i = 0; i < count; ++i) {
        try {
          take(element);
        } catch (const EndOfNumbers&) {
          throw std::runtime_error("it announces " + std::to_string(count) + " of " +
                                   quoted(element.name) + " and holds " + std::to_string(i) +
                                   ": the file is cut off or damaged; export it again");
        }
      }
    }
    return std::move(surface_);
  }

 private:
  void take(const PlyElement& element) {
    Position position{NAN, NAN, NAN};
    corners_.clear();
    for (const PlyProperty& property : element.properties) {
      if (property.isList) {
        takeList(property);
      } else {
        const double value = numbers_.next(property.type);
        const std::size_t axis = std::string_view("xyz").find(property.name);
        if (property.name.size() == 1 && axis != std::string_view::npos) {
          position[axis] = value;
        }
      }
    }
    if (element.name == "vertex") {
      surface_.vertices.insert(surface_.vertices.end(), position.begin(), position.end());
    } else if (element.name == "face") {
      appendPolygon(corners_, surface_);
    }
  }

  void takeList(const PlyProperty& property) {
    const bool areCorners = property.name == "vertex_indices" || property.name == "vertex_index";
    const double given = numbers_.next(property.countType);
    if (!(given >= 0.0 && given <= kMost && given == std::floor(given))) {
      throw std::runtime_error("a list has " + heatmap::text(given) +
                               " entries: the file is damaged; export it again");
    }
    for (auto left = static_cast<std::int64_t>(given); left > 0; --left) {
      const double number = numbers_.next(property.type);
      if (areCorners) {
        corners_.push_back(cornerOf(number));
      }
    }
  }

  std::int32_t cornerOf(double number) const {
    const std::int32_t count = surface_.vertexCount();
    if (!(number >= 0.0 && number < count && number == std::floor(number))) {
      throw std::runtime_error("a face has vertex " + heatmap::text(number) + ", and there are " +
                               std::to_string(count) + " before it, from 0 on");
    }
    return static_cast<std::int32_t>(number);
  }

  static constexpr double kMost = 4294967295.0;

  const PlyHeader& header_;
  Numbers numbers_;
  Surface surface_;
  std::vector<std::int32_t> corners_;
};

bool areCoordinatesFloats(const PlyHeader& header) {
  return std::any_of(header.elements.begin(), header.elements.end(), [](const PlyElement& e) {
    return e.name == "vertex" &&
           std::any_of(e.properties.begin(), e.properties.end(), [](const PlyProperty& p) {
             return p.name == "x" && p.type == PlyType::kFloat;
           });
  });
}

}  // namespace

PartFile readPly(std::string_view bytes) {
  const PlyHeader header = parsePlyHeader(bytes);
  if (header.form == PlyForm::kText) {
    return {PlyElements(header, TextNumbers(header.data)).read(), false, {}};
  }
  const BinaryNumbers numbers(header.data, header.form == PlyForm::kBigEndian);
  return {PlyElements(header, numbers).read(), areCoordinatesFloats(header), {}};
}

}  // namespace heatmap
