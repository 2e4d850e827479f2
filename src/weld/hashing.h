// What the hashes of the weld are made of.
#pragma once

#include <cstdint>

namespace quor {

/// Mixes one more 64-bit word into a hash. The product carries every bit upwards, the fold brings
/// the upper half down again; both are bijective, so nothing is lost on the way.
inline std::uint64_t mixHash(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32U);
}

/// A sum of odd multiples, different for all triples of words that are near to each other. Its
/// upper bits depend on all lower bits of the words, its lower bits on few.
inline std::uint64_t sumOfMultiples(std::uint64_t x, std::uint64_t y, std::uint64_t z) {
  return x * 0x9E3779B97F4A7C15U + y * 0xD6E8FEB86659FD93U + z * 0xA0761D6478BD642FU;
}

}  // namespace quor
