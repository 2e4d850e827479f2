// Numbers as text, as an output stream in the classic locale prints them.
#pragma once

#include <cstddef>

namespace quor {

/// Room for any number that writeNumber writes.
constexpr std::size_t kLongestNumber = 24;

/// Writes six significant digits, as printf's %g does, whatever the locale.
/// @param first  room for kLongestNumber characters
/// @return the end of what was written; no zero follows it
char* writeNumber(char* first, double number);

}  // namespace quor
