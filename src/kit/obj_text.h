// Mesh and field as the text of an OBJ file.
#pragma once

#include "export/number_text.h"
#include "export/obj_lines.h"
#include "kit/mesh.h"
#include "kit/position_digits.h"
#include "kit/texture_scale.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorkit {

/// Composes text and hands it on in blocks.
/// @tparam Sink  (std::string_view) takes the next block
template <typename Sink>
class TextBlocks {
 public:
  explicit TextBlocks(Sink sink) : sink_(std::move(sink)) { text_.reserve(kBlock); }

  TextBlocks& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }
  TextBlocks& operator<<(double number) {
    std::array<char, quor::kLongestNumber> digits{};
    text_.append(digits.data(), quor::writeNumber(digits.data(), number, digits_));
    return *this;
  }
  TextBlocks& operator<<(std::int64_t number) {
    std::array<char, 24> digits{};
    text_.append(digits.data(),
                 std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
    return *this;
  }
  /// How many significant digits numbers have from here on.
  void useDigits(int digits) { digits_ = digits; }
  void endLine() {
    text_ += '\n';
    if (text_.size() >= kBlock - kLongestLine) {
      handOn();
    }
  }

  /// Hands on what is left.
  void handOn() {
    sink_(std::string_view(text_));
    text_.clear();
  }

 private:
  static constexpr std::size_t kBlock = 1U << 16U;
  static constexpr std::size_t kLongestLine = 512;

  Sink sink_;
  std::string text_;
  int digits_ = quor::kFewestDigits;
};

/// Composes the text that wobj writes, with a margin, without NaN, and with more digits where edges
/// are short. See quorkitWrite.
/// @param mesh    finite coordinates, corners in range, at least one vertex
/// @param field   n finite values
/// @param name    of the material file, as it is to stand in the text
/// @param margin  share of the field's range that its ends keep from those of the ramp, 0 .. 1
/// @param sink    (std::string_view) takes block after block; what it throws is passed on
template <typename Sink>
void composeObj(const MeshView& mesh, const double* field, std::string_view name, double margin,
                Sink sink) {
  TextBlocks<Sink> lines(std::move(sink));
  (lines << "mtllib " << name).endLine();
  (lines << "usemtl Heat").endLine();
  lines.useDigits(positionDigits(mesh));
  quor::writePositions(lines, mesh.vertices, mesh.vertexCount());
  lines.useDigits(quor::kFewestDigits);
  quor::writeTextureCoordinates(lines, field, mesh.vertexCount(),
                                TextureScale(field, mesh.vertexCount(), margin));
  quor::writeFaces(lines, mesh.triangles, mesh.triangleCount());
  lines.handOn();
}

}  // namespace quorkit
