#include "export/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace quor {
namespace {

/// The C library's text, with a point where its locale has another decimal separator.
char* writeWithPrintf(char* first, double number, int digits) {
  const int length = std::snprintf(first, kLongestNumber, "%.*g", digits, number);
  char* const last = first + length;
  if (!std::isfinite(number)) {
    return last;
  }
  const auto isSeparator = [](char c) {
    return (c < '0' || c > '9') && c != 'e' && c != '-' && c != '+';
  };
  char* const separator = std::find_if(first, last, isSeparator);
  if (separator == last) {
    return last;
  }
  *separator = '.';
  return std::remove_if(separator + 1, last, isSeparator);  // the rest of a longer separator
}

}  // namespace

char* writeNumber(char* first, double number, int digits) {
#if defined(__cpp_lib_to_chars)
  if (std::isfinite(number)) {
    return std::to_chars(first, first + kLongestNumber, number, std::chars_format::general, digits)
        .ptr;
  }
#endif
  // How an infinity and a NaN are spelt is the C library's affair, here as in a stream.
  return writeWithPrintf(first, number, digits);
}

}  // namespace quor
