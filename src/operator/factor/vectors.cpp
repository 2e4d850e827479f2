#include "operator/factor/vectors.h"

#if defined(QUOR_WIDE_VECTORS)
#include <cpuid.h>
#endif

namespace quor {

// Not by the compiler's own test, __builtin_cpu_supports: that fills a table when the library is
// loaded, which would be the library's only data that changes.
VectorWidth widestVectors() {
#if defined(QUOR_WIDE_VECTORS)
  constexpr unsigned savesState = 1U << 27;  // leaf 1, ecx: the system may save wide registers
  constexpr unsigned wideState = 6;          // xcr0: and does
  constexpr unsigned hasAvx2 = 1U << 5;      // leaf 7, ebx
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) != 0 && (c & savesState) != 0) {
    unsigned low = 0;
    unsigned high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    if ((low & wideState) == wideState && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
        (b & hasAvx2) != 0) {
      return VectorWidth::four;
    }
  }
#endif
  return VectorWidth::two;  // GCOVR_EXCL_LINE: where there is no AVX2
}

}  // namespace quor
