// Machine instructions that C++17 has no name for, by extensions of g++ and clang or without them.
// QUOR_PORTABLE chooses the latter everywhere, so that what other compilers get is tested as well.
#pragma once

#include <cstdint>

#if defined(__GNUC__) && !defined(QUOR_PORTABLE)
#define QUOR_GNU_EXTENSIONS 1
#elif defined(__x86_64__) || defined(_M_X64)
#define QUOR_HAS_SSE 1
#include <xmmintrin.h>
#endif

#if defined(QUOR_GNU_EXTENSIONS)
#define QUOR_ALWAYS_INLINE inline __attribute__((always_inline))
#elif defined(_MSC_VER)
#define QUOR_ALWAYS_INLINE __forceinline
#else
#define QUOR_ALWAYS_INLINE inline
#endif

// Before a loop of few, constant rounds over registers: unrolled it has no loop variable to index
// them with, which would keep them in memory. Not under clang's address sanitizer, which would take
// half a minute to compile what it adds to every access.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUOR_UNROLL
#endif
#endif
#if defined(QUOR_UNROLL)
#elif defined(__clang__)
#define QUOR_UNROLL _Pragma("unroll")
#elif defined(QUOR_GNU_EXTENSIONS)
#define QUOR_UNROLL _Pragma("GCC unroll 8")
#else
#define QUOR_UNROLL
#endif

namespace quor {

/// Asks for a cache line ahead of its use. A hint: any address will do.
inline void prefetch(const void* address) {
#if defined(QUOR_GNU_EXTENSIONS)
  __builtin_prefetch(address);
#elif defined(QUOR_HAS_SSE)
  _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
  static_cast<void>(address);
#endif
}

/// The same for memory that is needed after a while: into the cache of the second level, past that
/// of the first, which is small.
inline void prefetchFar(const void* address) {
#if defined(QUOR_GNU_EXTENSIONS)
  __builtin_prefetch(address, 0, 2);
#elif defined(QUOR_HAS_SSE)
  _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T1);
#else
  static_cast<void>(address);
#endif
}

/// The position of the lowest bit that is set. @param bits not 0
inline unsigned lowestBit(std::uint32_t bits) {
#if defined(QUOR_GNU_EXTENSIONS)
  return static_cast<unsigned>(__builtin_ctz(bits));
#else
  unsigned position = 0;
  for (unsigned step = 16; step != 0; step /= 2) {
    if ((bits & ((std::uint32_t{1} << step) - 1)) == 0) {  // nothing in the lower half
      position += step;
      bits >>= step;
    }
  }
  return position;
#endif
}

/// The first if the condition holds, else the second: never by a branch, which costs more than both
/// where it cannot be foreseen.
inline std::int32_t select(bool condition, std::int32_t first, std::int32_t second) {
  return second ^ ((first ^ second) & -static_cast<std::int32_t>(condition));
}

}  // namespace quor
