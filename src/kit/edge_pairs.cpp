#include "kit/edge_pairs.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace quorkit {
namespace {

/// Sides by their lower vertex, in the order of the mesh: the counting sort that finds the pairs.
class SidesByVertex {
 public:
  explicit SidesByVertex(const MeshView& mesh)
      : start_(mesh.vertexCount() + 1), sides_(3 * mesh.triangleCount()) {
    const auto lower = [&mesh](std::int32_t side) {
      return std::min(mesh.triangles[side], mesh.triangles[nextSide(side)]);
    };
    const std::int32_t count = 3 * mesh.m;
    for (std::int32_t side = 0; side < count; ++side) {
      ++start_[toSize(lower(side)) + 1];
    }
    for (std::size_t v = 1; v < start_.size(); ++v) {
      start_[v] += start_[v - 1];
    }
    std::vector<std::int32_t> next(start_.begin(), start_.end() - 1);
    for (std::int32_t side = 0; side < count; ++side) {
      sides_[toSize(next[toSize(lower(side))]++)] = side;
    }
  }

  std::int32_t* begin(std::size_t vertex) { return sides_.data() + start_[vertex]; }
  std::int32_t* end(std::size_t vertex) { return sides_.data() + start_[vertex + 1]; }

 private:
  std::vector<std::int32_t> start_;
  std::vector<std::int32_t> sides_;
};

}  // namespace

std::vector<std::int32_t> pairSides(const MeshView& mesh) {
  std::vector<std::int32_t> pairs(3 * mesh.triangleCount(), kNoSide);
  SidesByVertex sides(mesh);
  const auto higher = [&mesh](std::int32_t side) {
    return std::max(mesh.triangles[side], mesh.triangles[nextSide(side)]);
  };
  for (std::size_t v = 0; v < mesh.vertexCount(); ++v) {
    std::int32_t* const end = sides.end(v);
    std::sort(sides.begin(v), end, [&](std::int32_t a, std::int32_t b) {
      return higher(a) != higher(b) ? higher(a) < higher(b) : a < b;
    });
    for (std::int32_t* first = sides.begin(v); first != end;) {
      std::int32_t* last = first;
      while (last != end && higher(*last) == higher(*first)) {
        ++last;
      }
      if (last - first == 2 && mesh.triangles[first[0]] == mesh.triangles[nextSide(first[1])]) {
        assert(first[0] / 3 != first[1] / 3);
        pairs[toSize(first[0])] = first[1];
        pairs[toSize(first[1])] = first[0];
      }
      first = last;
    }
  }
  return pairs;
}

}  // namespace quorkit
