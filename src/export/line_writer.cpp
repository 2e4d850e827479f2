#include "export/line_writer.h"

#include "export/number_text.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <locale>
#include <ostream>
#include <streambuf>

namespace quor {
namespace {

/// Makes the locale ready for numbers. A stream does that when the first one is inserted, but keeps
/// to itself that memory ran out and drops the number.
void prepareNumbers(std::ofstream& file) {
  class : public std::streambuf {
  } nowhere;
  std::use_facet<std::num_put<char>>(file.getloc()).put(&nowhere, file, ' ', 0L);
}

}  // namespace

LineWriter::LineWriter(std::ofstream& file)
    : file_(file), isClassic_(file.getloc() == std::locale::classic()) {
  prepareNumbers(file_);
}

LineWriter& LineWriter::operator<<(std::string_view text) {
  if (isClassic_) {
    assert(end() - next_ > static_cast<std::ptrdiff_t>(text.size()));
    next_ = std::copy(text.begin(), text.end(), next_);
  } else {
    file_ << text;
  }
  return *this;
}

LineWriter& LineWriter::operator<<(double number) {
  if (!isClassic_) {
    file_ << number;
    return *this;
  }
  assert(end() - next_ > static_cast<std::ptrdiff_t>(kLongestNumber));
  next_ = writeNumber(next_, number);
  return *this;
}

LineWriter& LineWriter::operator<<(std::int64_t number) {
  if (isClassic_) {
    next_ = std::to_chars(next_, end(), number).ptr;
  } else {
    file_ << number;
  }
  return *this;
}

void LineWriter::endLine() {
  if (isClassic_) {
    *next_++ = '\n';
    file_.write(line_.data(), next_ - line_.data());
    file_.flush();
    next_ = line_.data();
  } else {
    file_ << std::endl;
  }
}

}  // namespace quor
