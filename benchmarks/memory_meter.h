// How much memory a call holds at its peak.
#pragma once

#include <cstddef>
#include <functional>

namespace bench {

struct MemoryUse {
  std::size_t peak;  ///< bytes held at most at one time, beyond those held before the call
  std::size_t left;  ///< bytes still held after it
};

/// Counts what operator new and malloc hand out in this process while the job runs.
MemoryUse memoryOf(const std::function<void()>& job);

}  // namespace bench
