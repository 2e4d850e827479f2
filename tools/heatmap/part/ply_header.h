// The head of a PLY file: which numbers follow, in which order and form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace heatmap {

enum class PlyForm { kText, kLittleEndian, kBigEndian };

// The types of numbers, and how many bytes they have in binary.
enum class PlyType { kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kFloat, kDouble };
std::size_t byteCount(PlyType type);

struct PlyProperty {
  std::string name;
  bool isList;
  PlyType countType;  // of a list
  PlyType type;
};

struct PlyElement {
  std::string name;
  std::int64_t count;
  std::vector<PlyProperty> properties;
};

struct PlyHeader {
  PlyForm form;
  std::vector<PlyElement> elements;
  std::string_view data;  // what follows it
};

// Throws std::runtime_error, which says what is wrong.
PlyHeader parsePlyHeader(std::string_view bytes);

}  // namespace heatmap
