#include "memory_meter.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

// The library asks for memory through operator new and, inside Eigen, through malloc. Both arrive
// here: the operators by replacement, malloc by interposition on the C library's own.

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's own
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

namespace {

bool metering = false;
std::size_t held = 0;
std::size_t peak = 0;

void* noteTaken(void* block) {
  if (metering && block != nullptr) {
    held += malloc_usable_size(block);
    peak = std::max(peak, held);
  }
  return block;
}

void noteGiven(void* block) {
  if (metering && block != nullptr) {
    held -= malloc_usable_size(block);
  }
}

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
  return noteTaken(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
  return noteTaken(__libc_calloc(count, size));
}
void* memalign(std::size_t alignment, std::size_t size) {
  return noteTaken(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}
void* realloc(void* block, std::size_t size) {
  noteGiven(block);
  return noteTaken(__libc_realloc(block, size));
}
void free(void* block) {
  noteGiven(block);
  __libc_free(block);
}
}

namespace bench {

MemoryUse memoryOf(const std::function<void()>& job) {
  // Counted from a high mark, so that giving back older blocks does not wrap around.
  constexpr std::size_t mark = std::size_t{1} << 60U;
  held = peak = mark;
  metering = true;
  job();
  metering = false;
  return {peak - mark, held - mark};
}

}  // namespace bench
