// Takes the place of the C library's allocation functions: those of the program come first.
#include "allocations.h"

#include "sanitizers.h"

#include <cerrno>

namespace test {

Allocations allocations;

bool Allocations::canBeWatched() {
#if defined(__GLIBC__) && !defined(QUOR_SANITIZED)
  return true;
#else
  return false;
#endif
}

}  // namespace test

#if defined(__GLIBC__) && !defined(QUOR_SANITIZED)

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the C library's own
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

namespace {

using test::allocations;

/// Counts an allocation, which `allocate` makes unless it is to fail.
template <typename Allocate>
void* allocated(std::size_t size, const Allocate& allocate) {
  if (!allocations.watched) {
    return allocate();
  }
  ++allocations.count;
  const bool isLater = allocations.failing != 0 && allocations.count > allocations.failing;
  if (allocations.count == allocations.failing || (isLater && allocations.andAllLater) ||
      size > allocations.largestAllowed) {
    errno = ENOMEM;
    return nullptr;
  }
  void* block = allocate();
  allocations.live += block != nullptr ? 1 : 0;
  return block;
}

void released(const void* block) {
  allocations.live -= allocations.watched && block != nullptr ? 1 : 0;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
  return allocated(size, [=] { return __libc_malloc(size); });
}

void* calloc(std::size_t count, std::size_t size) {
  return allocated(count * size, [=] { return __libc_calloc(count, size); });
}

void* realloc(void* block, std::size_t size) {
  void* moved = allocated(size, [=] { return __libc_realloc(block, size); });
  released(moved != nullptr ? block : nullptr);
  return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
  return allocated(size, [=] { return __libc_memalign(alignment, size); });
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  *block = memalign(alignment, size);
  return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
  released(block);
  __libc_free(block);
}
}

#endif
