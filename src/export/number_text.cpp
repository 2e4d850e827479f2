#include "export/number_text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace quor {

char* writeNumberWithPrintf(char* first, double number, int digits) {
  std::array<char, 2 * kLongestNumber> text;  // with a zero, and separators of several bytes
  const int length = std::snprintf(text.data(), text.size(), "%.*g", digits, number);
  assert(length > 0 && static_cast<std::size_t>(length) < text.size());
  const char* const begin = text.data();
  const char* const last = begin + length;
  if (!std::isfinite(number)) {
    return std::copy(begin, last, first);
  }
  const auto isSeparator = [](char c) {
    return (c < '0' || c > '9') && c != 'e' && c != '-' && c != '+';
  };
  const char* const separator = std::find_if(begin, last, isSeparator);
  first = std::copy(begin, separator, first);
  if (separator != last) {
    *first++ = '.';
  }
  return std::remove_copy_if(separator, last, first, isSeparator);
}

char* writeNumber(char* first, double number, int digits) {
#if defined(__cpp_lib_to_chars)
  if (std::isfinite(number)) {
    return std::to_chars(first, first + kLongestNumber, number, std::chars_format::general, digits)
        .ptr;
  }
#endif
  // How an infinity and a NaN are spelt is the C library's affair, here as in a stream.
  return writeNumberWithPrintf(first, number, digits);
}

}  // namespace quor
