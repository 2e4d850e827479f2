#include "util/large_pages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace quor {

void preferLargePages(void* memory, std::size_t bytes) {
#if defined(__linux__)
  constexpr std::uintptr_t kPage = std::uintptr_t{1} << 21U;
  constexpr std::size_t kMost = 16 * kPage;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t skipped = (kPage - begin % kPage) % kPage;
  if (bytes >= skipped + kPage && bytes <= kMost) {
    madvise(static_cast<char*>(memory) + skipped, (bytes - skipped) / kPage * kPage, MADV_HUGEPAGE);
  }
#else
  static_cast<void>(memory);
  static_cast<void>(bytes);
#endif
}

}  // namespace quor
