// Watches the allocations of this program and lets some fail.
#pragma once

#include <cstddef>
#include <limits>

namespace test {

/// What malloc and its family do while `watched`, and what they have seen. operator new, Eigen and
/// the standard streams all end there. For one thread at a time.
struct Allocations {
  bool watched = false;
  long failing = 0;          ///< number, from 1, of the allocation that fails; 0: none
  bool andAllLater = false;  ///< those after it fail too
  std::size_t largestAllowed = std::numeric_limits<std::size_t>::max();  ///< in bytes

  long count = 0;  ///< allocations so far, failed ones included
  long live = 0;   ///< memory blocks allocated and not yet freed

  /// Whether the watching works: sanitizers put their own allocator in place.
  static bool canBeWatched();
};

extern Allocations allocations;

}  // namespace test
