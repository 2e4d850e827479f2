#include "weld/distinct_triangles.h"

#include "weld/hash_index.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quor {
namespace {

using Triangle = std::array<std::int32_t, 3>;

/// The same for every order of the corners. Without branches, which would often go wrong.
Triangle sorted(const Triangle& t) {
  const auto [a, b, c] = t;
  const std::int32_t low = a < b ? a : b;
  const std::int32_t high = a < b ? b : a;
  const std::int32_t lowest = low < c ? low : c;
  const std::int32_t highest = high < c ? c : high;
  return {lowest, a ^ b ^ c ^ lowest ^ highest, highest};
}

std::uint64_t hashOf(const Triangle& key) {
  const auto word = [](std::int32_t vertex) { return static_cast<std::uint32_t>(vertex); };
  return mixHash(mixHash(0, std::uint64_t{word(key[0])} << 32U | word(key[1])), word(key[2]));
}

class TriangleFilter {
 public:
  TriangleFilter(std::int32_t count, const std::int32_t* triangles,
                 const std::int32_t* vertexOfPoint, std::int32_t* kept)
      : count_(count),
        triangles_(triangles),
        vertexOfPoint_(vertexOfPoint),
        kept_(kept),
        index_(static_cast<std::size_t>(count), count) {}

  std::int32_t run() {
    for (std::int32_t t = 0; t < std::min(kAhead, count_); ++t) {
      prepare(t);
    }
    for (std::int32_t t = 0; t < count_; ++t) {
      const Candidate candidate = ring_[static_cast<std::size_t>(t) % kRing];
      if (t < count_ - kAhead) {
        prepare(t + kAhead);
      }
      keepIfNew(candidate);
    }
    return keptCount_;
  }

 private:
  /// A triangle whose slot has been asked for, so that it is there when its turn comes.
  struct Candidate {
    Triangle corners;
    Triangle key;
    std::uint64_t hash;
  };
  static constexpr std::int32_t kAhead = 24;
  static constexpr std::size_t kRing = 32;

  void prepare(std::int32_t t) {
    const std::int32_t* points = triangles_ + 3 * static_cast<std::size_t>(t);
    Candidate& candidate = ring_[static_cast<std::size_t>(t) % kRing];
    candidate.corners = {vertex(points[0]), vertex(points[1]), vertex(points[2])};
    candidate.key = sorted(candidate.corners);
    candidate.hash = hashOf(candidate.key);
    index_.prefetchSlot(candidate.hash);
  }

  void keepIfNew(const Candidate& candidate) {
    const Triangle& key = candidate.key;
    if (key[0] == key[1] || key[1] == key[2]) {
      return;
    }
    const std::size_t slot = index_.locate(
        candidate.hash, [&](std::int32_t earlier) { return sorted(kept(earlier)) == key; });
    if (index_.index(slot) != HashIndex::kNone) {
      return;
    }
    index_.fill(slot, candidate.hash, keptCount_);
    for (std::size_t corner = 0; corner < 3; ++corner) {
      kept_[3 * static_cast<std::size_t>(keptCount_) + corner] = candidate.corners[corner];
    }
    ++keptCount_;
  }

  std::int32_t vertex(std::int32_t point) const {
    return vertexOfPoint_[static_cast<std::size_t>(point)];
  }

  Triangle kept(std::int32_t t) const {
    const std::int32_t* corners = kept_ + 3 * static_cast<std::size_t>(t);
    return {corners[0], corners[1], corners[2]};
  }

  std::int32_t count_;
  const std::int32_t* triangles_;
  const std::int32_t* vertexOfPoint_;
  std::int32_t* kept_;
  std::int32_t keptCount_ = 0;
  HashIndex index_;
  std::array<Candidate, kRing> ring_;
};

}  // namespace

std::int32_t keepDistinctTriangles(std::int32_t count, const std::int32_t* triangles,
                                   const std::int32_t* vertexOfPoint, std::int32_t* kept) {
  return TriangleFilter(count, triangles, vertexOfPoint, kept).run();
}

}  // namespace quor
