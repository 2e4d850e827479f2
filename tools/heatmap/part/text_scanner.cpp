#include "part/text_scanner.h"

#include "number.h"
#include "text.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace heatmap {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";

}  // namespace

std::string_view TextScanner::takeLine() {
  const std::size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
  const std::string_view line = rest_.substr(0, end);
  const bool isPair = rest_.substr(end, 2) == "\r\n";
  rest_.remove_prefix(std::min(end + (isPair ? 2 : 1), rest_.size()));
  ++lineNumber_;
  return line;
}

bool TextScanner::nextLine() {
  while (!rest_.empty()) {
    line_ = takeLine();
    if (hasWord()) {
      return true;
    }
  }
  line_ = {};
  return false;
}

std::string_view TextScanner::word() {
  line_.remove_prefix(std::min(line_.find_first_not_of(kBlanks), line_.size()));
  const std::string_view found = line_.substr(0, line_.find_first_of(kBlanks));
  line_.remove_prefix(found.size());
  return found;
}

bool TextScanner::hasWord() const {
  return line_.find_first_not_of(kBlanks) != std::string_view::npos;
}

bool TextScanner::isRemark() const {
  const std::size_t first = line_.find_first_not_of(kBlanks);
  return first != std::string_view::npos && line_[first] == '#';
}

double TextScanner::number() {
  const std::string_view found = word();
  if (found.empty()) {
    refuse("a number is missing");
  }
  const std::optional<double> value = parseNumber(found);
  if (!value) {
    refuse(quoted(std::string(found)) + " is not a number");
  }
  return *value;
}

std::int64_t TextScanner::integer() {
  const std::string_view found = word();
  std::int64_t value = 0;
  if (found.empty()) {
    refuse("a number is missing");
  }
  if (!parseInteger(found, value)) {
    refuse(quoted(std::string(found)) + " is not an integer");
  }
  return value;
}

void TextScanner::refuse(const std::string& why) const {
  throw std::runtime_error("line " + std::to_string(lineNumber_) + ": " + why);
}

bool isWord(std::string_view word, std::string_view lower) {
  return std::equal(word.begin(), word.end(), lower.begin(), lower.end(), [](char a, char b) {
    return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
  });
}

bool parseInteger(std::string_view word, std::int64_t& value) {
  if (word.size() > 1 && word[0] == '+' && word[1] != '-') {
    word.remove_prefix(1);
  }
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  return error == std::errc() && end == word.data() + word.size();
}

}  // namespace heatmap
