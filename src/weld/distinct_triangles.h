// Rewrites triangles onto welded vertices and drops those that collapsed or repeat.
#pragma once

#include "util/index.h"
#include "weld/hash_index.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quor {

/// A triangle is dropped if two of its corners are the same vertex, or if an earlier kept one has
/// the same three vertices in any order. The others keep their order and their corner order.
class DistinctTriangles {
 public:
  /// Throws std::bad_alloc.
  /// @param count          number of triangles
  /// @param triangles      3*count point indices
  /// @param vertexOfPoint  the vertex of each point
  /// @param vertexCount    number of vertices, at least 1
  /// @param kept           receives three vertices per kept triangle, and nothing behind them; may
  ///                       be `triangles`
  DistinctTriangles(std::int32_t count, const std::int32_t* triangles,
                    const std::int32_t* vertexOfPoint, std::int32_t vertexCount,
                    std::int32_t* kept);

  /// @return number of kept triangles
  std::int32_t keep();

  /// See HashIndex::steps.
  std::uint64_t steps() const { return index_.steps(); }

 private:
  using Triangle = std::array<std::int32_t, 3>;
  static constexpr std::int32_t kBlock = 512;

  /// The same for every order of the corners.
  static Triangle sorted(const std::int32_t* corners);
  std::uint64_t hashOf(const Triangle& key) const;
  Triangle rewritten(std::int32_t t) const;
  void rewrite(std::int32_t begin, std::int32_t end);
  std::size_t hashCandidates(std::int32_t begin, std::int32_t end);
  std::size_t keepNew(std::size_t candidates, std::int32_t end);
  void keepNewBySorting(std::int32_t begin);

  const std::int32_t* cornersOf(std::int32_t t) const { return triangles_ + 3 * toSize(t); }
  std::int32_t* kept(std::int32_t t) const { return kept_ + 3 * toSize(t); }

  std::int32_t count_;
  const std::int32_t* triangles_;
  const std::int32_t* vertexOfPoint_;
  std::int32_t* kept_;
  std::int32_t keptCount_ = 0;
  HashIndex index_;               ///< of the kept triangles
  std::uint64_t homesPerVertex_;  ///< as a share of 2^64, for each of the three
  // Of the block:
  std::array<std::int32_t, 3 * toSize(kBlock)> corners_;  ///< vertices of all triangles
  std::array<std::int32_t, kBlock> candidates_;           ///< positions in the block
  std::array<std::uint64_t, kBlock> hashes_;              ///< of the candidates
};

}  // namespace quor
