#include "util/vectors.h"

#if defined(QUOR_WIDE_VECTORS)
#include <cpuid.h>
#endif

namespace quor {

// Not by the compiler's own test, __builtin_cpu_supports: that fills a table when the library is
// loaded, which would be the library's only data that changes.
VectorWidth widestVectors() {
#if defined(QUOR_WIDE_VECTORS)
  constexpr unsigned savesState = 1U << 27;  // leaf 1, ecx: the system may save wide registers
  constexpr unsigned fourState = 0x06;       // xcr0: and does, those of four doubles
  constexpr unsigned eightState = 0xE6;      // and those of eight
  constexpr unsigned hasAvx2 = 1U << 5;      // leaf 7, ebx
  constexpr unsigned hasAvx512f = 1U << 16;
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) != 0 && (c & savesState) != 0) {
    unsigned state = 0;
    unsigned high = 0;
    __asm__("xgetbv" : "=a"(state), "=d"(high) : "c"(0));
    const bool isKnown = __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0;
    if (isKnown && (state & eightState) == eightState && (b & hasAvx512f) != 0) {
      return VectorWidth::eight;
    }
    if (isKnown && (state & fourState) == fourState && (b & hasAvx2) != 0) {
      return VectorWidth::four;  // GCOVR_EXCL_LINE: where there is no AVX-512
    }
  }
#endif
  return VectorWidth::two;  // GCOVR_EXCL_LINE: where there is no AVX2
}

}  // namespace quor
