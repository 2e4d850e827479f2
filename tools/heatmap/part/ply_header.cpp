#include "part/ply_header.h"

#include "part/text_scanner.h"
#include "text.h"

#include <array>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

PlyType typeOf(std::string_view name, const TextScanner& text) {
  constexpr std::array<std::pair<std::string_view, PlyType>, 16> kTypes{{
      {"char", PlyType::kInt8},
      {"int8", PlyType::kInt8},
      {"uchar", PlyType::kUint8},
      {"uint8", PlyType::kUint8},
      {"short", PlyType::kInt16},
      {"int16", PlyType::kInt16},
      {"ushort", PlyType::kUint16},
      {"uint16", PlyType::kUint16},
      {"int", PlyType::kInt32},
      {"int32", PlyType::kInt32},
      {"uint", PlyType::kUint32},
      {"uint32", PlyType::kUint32},
      {"float", PlyType::kFloat},
      {"float32", PlyType::kFloat},
      {"double", PlyType::kDouble},
      {"float64", PlyType::kDouble},
  }};
  for (const auto& [known, type] : kTypes) {
    if (known == name) {
      return type;
    }
  }
  text.refuse(quoted(std::string(name)) + " is no type of PLY");
}

PlyForm formOf(std::string_view name, const TextScanner& text) {
  if (name == "ascii") {
    return PlyForm::kText;
  }
  if (name == "binary_little_endian") {
    return PlyForm::kLittleEndian;
  }
  if (name == "binary_big_endian") {
    return PlyForm::kBigEndian;
  }
  text.refuse(quoted(std::string(name)) + " is no format of PLY");
}

PlyElement elementOf(TextScanner& text) {
  PlyElement element{std::string(text.word()), text.integer(), {}};
  if (element.count < 0 || element.count > 2147483647) {
    text.refuse("the number of elements is not between 0 and 2147483647");
  }
  return element;
}

PlyProperty propertyOf(TextScanner& text) {
  PlyProperty property{};
  std::string_view type = text.word();
  property.isList = type == "list";
  if (property.isList) {
    property.countType = typeOf(text.word(), text);
    if (property.countType == PlyType::kFloat || property.countType == PlyType::kDouble) {
      text.refuse("the length of a list is no integer");
    }
    type = text.word();
  }
  property.type = typeOf(type, text);
  property.name = std::string(text.word());
  return property;
}

}  // namespace

std::size_t byteCount(PlyType type) {
  switch (type) {
    case PlyType::kInt8:
    case PlyType::kUint8:
      return 1;
    case PlyType::kInt16:
    case PlyType::kUint16:
      return 2;
    case PlyType::kDouble:
      return 8;
    default:
      return 4;
  }
}

PlyHeader parsePlyHeader(std::string_view bytes) {
  TextScanner text(bytes);
  PlyHeader header{PlyForm::kText, {}, {}};
  while (text.nextLine()) {
    const std::string_view word = text.word();
    if (word == "format") {
      header.form = formOf(text.word(), text);
    } else if (word == "element") {
      header.elements.push_back(elementOf(text));
    } else if (word == "property") {
      if (header.elements.empty()) {
        text.refuse("a property before the first element");
      }
      header.elements.back().properties.push_back(propertyOf(text));
    } else if (word == "end_header") {
      header.data = text.rest();
      return header;
    }
  }
  throw std::runtime_error("its head has no end: the file is cut off or damaged; export it again");
}

}  // namespace heatmap
