// Goes through the text of a mesh file, line by line and word by word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace heatmap {

// Splits a text at blanks, within one line at a time. The text must outlive it, and the words.
// Lines end with "\n", "\r\n" or "\r".
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) : rest_(text) {}

  // Goes to the next line that has a word. False at the end of the text. What is left of the
  // current line is skipped.
  bool nextLine();
  // The next word of the current line; empty at its end.
  std::string_view word();
  // Whether the current line has another word.
  bool hasWord() const;
  // Whether the first word of what is left of the line begins with #.
  bool isRemark() const;
  // The rest of the text behind the current line.
  std::string_view rest() const { return rest_; }

  // The next word of the line as a number. Throws std::runtime_error, which says where it is
  // missing, or what is there instead. Infinity and NaN are numbers.
  double number();
  // The next word of the line as an integer. Throws likewise.
  std::int64_t integer();

  // Throws std::runtime_error with the number of the current line in front.
  [[noreturn]] void refuse(const std::string& why) const;

 private:
  std::string_view takeLine();

  std::string_view rest_;
  std::string_view line_;
  std::size_t lineNumber_ = 0;  // 1-based
};

// Whether a word of a file is the given one in lower case, whatever its own case.
bool isWord(std::string_view word, std::string_view lower);

// A word as an integer in decimal, with or without a sign. Returns whether it is one.
bool parseInteger(std::string_view word, std::int64_t& value);

}  // namespace heatmap
