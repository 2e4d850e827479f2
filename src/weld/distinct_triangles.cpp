#include "weld/distinct_triangles.h"

#include <algorithm>
#include <cassert>
#include <utility>
#include <vector>

namespace quor {

DistinctTriangles::DistinctTriangles(std::int32_t count, const std::int32_t* triangles,
                                     const std::int32_t* vertexOfPoint, std::int32_t vertexCount,
                                     std::int32_t* kept)
    : count_(count),
      triangles_(triangles),
      vertexOfPoint_(vertexOfPoint),
      kept_(kept),
      index_(toSize(count), count),
      homesPerVertex_(~std::uint64_t{0} / 3 / toSize(vertexCount)) {
  assert(count >= 0 && vertexCount >= 1);
}

std::int32_t DistinctTriangles::keep() {
  for (std::int32_t begin = 0; begin < count_; begin += std::min(kBlock, count_ - begin)) {
    const std::int32_t end = begin + std::min(kBlock, count_ - begin);
    rewrite(begin, end);
    const std::size_t candidates = hashCandidates(begin, end);
    const std::size_t looked = keepNew(candidates, end);
    if (looked < candidates) {
      keepNewBySorting(begin + candidates_[looked]);
      break;
    }
  }
  return keptCount_;
}

/// Without branches, which would often go wrong.
DistinctTriangles::Triangle DistinctTriangles::sorted(const std::int32_t* corners) {
  const std::int32_t a = corners[0];
  const std::int32_t b = corners[1];
  const std::int32_t c = corners[2];
  const std::int32_t low = a < b ? a : b;
  const std::int32_t high = a < b ? b : a;
  const std::int32_t lowest = low < c ? low : c;
  const std::int32_t highest = high < c ? c : high;
  return {lowest, a ^ b ^ c ^ lowest ^ highest, highest};
}

/// Triangles that follow each other mostly have near vertices, and so homes near to each other, in
/// a stretch of 1/4096 of the table that moves along with the mean of the three. The highest alone
/// would crowd the table where some vertices have all triangles and come last, as the centres that
/// a mesh of polygons gets when it is cut up.
std::uint64_t DistinctTriangles::hashOf(const Triangle& key) const {
  const auto word = [&key](std::size_t k) { return static_cast<std::uint64_t>(key[k]); };
  const std::uint64_t mixed = mixHash(mixHash(0, word(0) << 32U | word(1)), word(2));
  return (word(0) + word(1) + word(2)) * homesPerVertex_ + (mixed >> 12U);
}

void DistinctTriangles::rewrite(std::int32_t begin, std::int32_t end) {
  const std::int32_t* const points = cornersOf(begin);
  const std::size_t count = 3 * toSize(end - begin);
  for (std::size_t k = 0; k < count; ++k) {
    corners_[k] = vertexOfPoint_[toSize(points[k])];
  }
}

DistinctTriangles::Triangle DistinctTriangles::rewritten(std::int32_t t) const {
  const std::int32_t* const points = cornersOf(t);
  return {vertexOfPoint_[toSize(points[0])], vertexOfPoint_[toSize(points[1])],
          vertexOfPoint_[toSize(points[2])]};
}

/// @return the number of triangles of the block, now in candidates_, that did not collapse
std::size_t DistinctTriangles::hashCandidates(std::int32_t begin, std::int32_t end) {
  std::size_t candidates = 0;
  for (std::int32_t t = begin; t < end; ++t) {
    const Triangle key = sorted(&corners_[3 * toSize(t - begin)]);
    hashes_[candidates] = hashOf(key);
    index_.prefetchSlot(hashes_[candidates]);
    candidates_[candidates] = t - begin;
    candidates += toSize(static_cast<int>(key[0] != key[1]) & static_cast<int>(key[1] != key[2]));
  }
  return candidates;
}

/// @return how many candidates were looked for before the table was crowded
std::size_t DistinctTriangles::keepNew(std::size_t candidates, std::int32_t end) {
  for (std::size_t k = 0; k < candidates; ++k) {
    if (index_.isCrowded(end)) {
      return k;
    }
    const std::int32_t* const corners = &corners_[3 * toSize(candidates_[k])];
    const std::size_t slot = index_.locate(
        hashes_[k], [&](std::int32_t earlier) { return sorted(kept(earlier)) == sorted(corners); });
    if (index_.index(slot) != HashIndex::kNone) {
      continue;
    }
    index_.fill(slot, hashes_[k], keptCount_);
    for (std::size_t corner = 0; corner < 3; ++corner) {
      kept(keptCount_)[corner] = corners[corner];
    }
    ++keptCount_;
  }
  return candidates;
}

/// Does without the table for all triangles from `begin` on. Writes only those that it keeps.
void DistinctTriangles::keepNewBySorting(std::int32_t begin) {
  assert(keptCount_ <= begin);  // so what is kept is never written over what is still to be read
  using Entry = std::pair<Triangle, std::int32_t>;
  std::vector<Entry> entries;
  entries.reserve(toSize(keptCount_) + toSize(count_ - begin));
  for (std::int32_t t = 0; t < keptCount_; ++t) {
    entries.emplace_back(sorted(kept(t)), t);
  }
  for (std::int32_t t = begin; t < count_; ++t) {
    const Triangle key = sorted(rewritten(t).data());
    if (key[0] != key[1] && key[1] != key[2]) {
      entries.emplace_back(key, t);
    }
  }
  std::sort(entries.begin(), entries.end());  // of equal ones the first comes first
  entries.erase(std::unique(entries.begin(), entries.end(),
                            [](const Entry& a, const Entry& b) { return a.first == b.first; }),
                entries.end());
  std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b) { return a.second < b.second; });
  for (auto entry = entries.begin() + keptCount_; entry != entries.end(); ++entry) {
    const Triangle corners = rewritten(entry->second);
    std::copy(corners.begin(), corners.end(), kept(keptCount_++));
  }
}

}  // namespace quor
