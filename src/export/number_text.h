// Numbers as text, as an output stream in the classic locale prints them.
#pragma once

#include <cstddef>

namespace quor {

/// Room for any number that writeNumber writes.
constexpr std::size_t kLongestNumber = 24;

/// What every number has unless more are asked for.
constexpr int kFewestDigits = 6;

/// Writes a number as printf's %g does, whatever the locale.
/// @param first   room for kLongestNumber characters
/// @param digits  significant ones, 1 .. 17
/// @return the end of what was written; no zero follows it
char* writeNumber(char* first, double number, int digits = kFewestDigits);

/// The same, for standard libraries that write no doubles by themselves.
char* writeNumberWithPrintf(char* first, double number, int digits);

}  // namespace quor
