// Machine instructions that C++17 has no name for.
#pragma once

#include <cstdint>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace quor {

/// Asks for a cache line ahead of its use. A hint: any address will do.
inline void prefetch(const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#elif defined(_M_X64) || defined(_M_IX86)
  _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
  static_cast<void>(address);
#endif
}

/// The position of the lowest bit that is set. @param bits not 0
inline unsigned lowestBit(std::uint32_t bits) {
#if defined(__GNUC__)
  return static_cast<unsigned>(__builtin_ctz(bits));
#else
  unsigned long position = 0;
  _BitScanForward(&position, bits);
  return position;
#endif
}

/// The first if the condition holds, else the second: never by a branch, which costs more than both
/// where it cannot be foreseen.
inline std::int32_t select(bool condition, std::int32_t first, std::int32_t second) {
  return second ^ ((first ^ second) & -static_cast<std::int32_t>(condition));
}

}  // namespace quor
