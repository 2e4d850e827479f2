// Asking for the memory of L before it is read.
#pragma once

#include "util/machine.h"

#include <cstddef>
#include <cstdint>

namespace quor {

constexpr std::ptrdiff_t kLine = 64;

/// Asks for memory ahead of its use, line by line upwards or downwards: 16 KB ahead, so that it has
/// arrived when it is read. The processor itself foresees only longer pieces, and none downwards.
template <std::ptrdiff_t kStep>
class Ahead {
 public:
  explicit Ahead(const void* from) : next_(reinterpret_cast<std::intptr_t>(from)) {}

  void askForLine() {
    prefetchFar(reinterpret_cast<const void*>(next_));  // NOLINT(performance-no-int-to-ptr)
    next_ += kStep;
  }

  /// Catches up with what is read now.
  void askBeyond(const void* address) {
    const auto limit = reinterpret_cast<std::intptr_t>(address) + 256 * kStep;
    while (kStep > 0 ? next_ < limit : next_ > limit) {
      askForLine();
    }
    next_ = limit;
  }

  /// Leaves out what is not read.
  void skipTo(const void* address) {
    const auto to = reinterpret_cast<std::intptr_t>(address);
    next_ = (kStep > 0 ? next_ < to : next_ > to) ? to : next_;
  }

 private:
  std::intptr_t next_;
};

}  // namespace quor
