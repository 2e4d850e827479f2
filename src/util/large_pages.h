// Fewer page faults for large arrays.
#pragma once

#include <cstddef>
#include <vector>

namespace quor {

/// Asks the system to back memory that nobody has touched yet with large pages, of 2 MB and not of
/// 4 KB: the first touch of a page costs about a microsecond, and an array that is used in no order
/// needs fewer look-ups of addresses. A hint: it changes no content, and where the system has no
/// such pages, or the memory does not hold a whole one, nothing happens.
///
/// Nor does it for more than 32 MB: large pages are taken from memory that was long unused, and on
/// a virtual machine whose host has yet to back that memory, many of them are far slower than small
/// ones that were used before.
/// @param memory  any bytes of a process; other memory of it is not affected
void preferLargePages(void* memory, std::size_t bytes);

/// Reserves room in an empty vector and asks for large pages before anything is put there.
template <typename Value>
void reserveInLargePages(std::vector<Value>& vector, std::size_t count) {
  vector.reserve(count);
  preferLargePages(vector.data(), count * sizeof(Value));
}

/// The same, and fills the vector with zeros.
template <typename Value>
void resizeInLargePages(std::vector<Value>& vector, std::size_t count) {
  reserveInLargePages(vector, count);
  vector.resize(count);
}

}  // namespace quor
