// Writes a text file line by line.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string_view>

namespace quor {

/// Composes lines of text and numbers, each of which reaches the file in one write, so that a
/// reader that follows the growing file sees whole lines.
///
/// Numbers look as an output stream prints them: six significant digits, in the file's locale. In
/// the classic one they are formatted without the stream, which takes longer than the write.
class LineWriter {
 public:
  /// @param file  open; its locale stays as it is. Throws what the locale throws when it is made
  ///              ready for numbers.
  explicit LineWriter(std::ofstream& file);

  // What a line is made of: a few short texts and numbers.
  LineWriter& operator<<(std::string_view text);
  LineWriter& operator<<(double number);
  LineWriter& operator<<(std::int64_t number);

  /// Ends the line and writes it. What fails shows in the file's state, as with any stream.
  void endLine();

 private:
  char* end() { return line_.data() + line_.size(); }

  std::ofstream& file_;
  bool isClassic_;
  std::array<char, 256> line_;  ///< the longest, of a face, has 67
  char* next_ = line_.data();
};

}  // namespace quor
