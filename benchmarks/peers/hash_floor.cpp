#include "hash_floor.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace bench {
namespace {

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32U);
}

std::vector<std::int32_t> emptyTable(std::size_t entries) {
  std::size_t slots = 1;
  while (slots < entries + entries / 4) {
    slots *= 2;
  }
  std::vector<std::int32_t> table(slots, -1);
  return table;
}

}  // namespace

void hashFloor(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
               const std::int32_t* triangles, Welded& out) {
  constexpr std::size_t bytes = 3 * sizeof(double);
  std::vector<std::int32_t> table = emptyTable(static_cast<std::size_t>(pointCount));
  out.vertexCount = 0;
  for (std::int32_t i = 0; i < pointCount; ++i) {
    const double* p = points + 3 * static_cast<std::size_t>(i);
    std::array<std::uint64_t, 3> words{};
    std::memcpy(words.data(), p, bytes);
    std::size_t slot = mix(mix(mix(0, words[0]), words[1]), words[2]) & (table.size() - 1);
    while (table[slot] >= 0 &&
           // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
           std::memcmp(out.vertices.data() + 3 * static_cast<std::size_t>(table[slot]), p, bytes) !=
               0) {
      slot = (slot + 1) & (table.size() - 1);
    }
    if (table[slot] < 0) {
      std::memcpy(out.vertices.data() + 3 * static_cast<std::size_t>(out.vertexCount), p, bytes);
      table[slot] = out.vertexCount++;
    }
    out.map[static_cast<std::size_t>(i)] = table[slot];
  }

  table = emptyTable(static_cast<std::size_t>(triangleCount));
  std::vector<std::array<std::int32_t, 3>> keys;
  keys.reserve(static_cast<std::size_t>(triangleCount));
  for (std::size_t t = 0; t < static_cast<std::size_t>(triangleCount); ++t) {
    std::array<std::int32_t, 3> corners{};
    for (std::size_t k = 0; k < 3; ++k) {
      corners[k] = out.map[static_cast<std::size_t>(triangles[3 * t + k])];
    }
    std::array<std::int32_t, 3> key = corners;
    std::sort(key.begin(), key.end());
    if (key[0] == key[1] || key[1] == key[2]) {
      continue;
    }
    const auto word = [&key](std::size_t k) { return static_cast<std::uint64_t>(key[k]); };
    std::size_t slot = mix(mix(0, word(0) << 32U | word(1)), word(2)) & (table.size() - 1);
    while (table[slot] >= 0 && keys[static_cast<std::size_t>(table[slot])] != key) {
      slot = (slot + 1) & (table.size() - 1);
    }
    if (table[slot] < 0) {
      table[slot] = static_cast<std::int32_t>(keys.size());
      std::copy(corners.begin(), corners.end(), out.triangles.data() + 3 * keys.size());
      keys.push_back(key);
    }
  }
  out.triangleCount = static_cast<std::int32_t>(keys.size());
}

}  // namespace bench
