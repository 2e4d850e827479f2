// Conversions between the 32-bit indices of the interface and sizes of containers.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace quor {

/// An index or a count as a size, to address an array with. It must not be negative, nor too large
/// for the memory of the machine.
template <typename Integer>
constexpr std::size_t toSize(Integer index) {
  static_assert(std::is_integral_v<Integer>);
  if constexpr (std::is_signed_v<Integer>) {
    assert(index >= 0);
  }
  assert(static_cast<std::uint64_t>(index) <= std::numeric_limits<std::size_t>::max());
  return static_cast<std::size_t>(index);
}

/// A size as an index of the interface. It must fit 32 bits.
template <typename Integer>
constexpr std::int32_t toIndex(Integer size) {
  static_assert(std::is_integral_v<Integer>);
  if constexpr (std::is_signed_v<Integer>) {
    assert(size >= 0);
  }
  assert(static_cast<std::uint64_t>(size) <= std::numeric_limits<std::int32_t>::max());
  return static_cast<std::int32_t>(size);
}

}  // namespace quor
