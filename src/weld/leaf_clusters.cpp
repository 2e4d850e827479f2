#include "weld/leaf_clusters.h"

#include "util/index.h"
#include "util/machine.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quor {
namespace {

using Mask = PointColumns::Mask;

/// Which points of a leaf chains of near ones connect.
class LeafClusters {
 public:
  /// @param size  number of points
  explicit LeafClusters(std::size_t size) {
    for (std::size_t k = 0; k < size; ++k) {
      clusterOf_[k] = Mask{1} << k;
    }
  }

  /// Unites the clusters of point k and of all that are near to it.
  void unite(std::size_t k, Mask near) {
    Mask cluster = clusterOf_[k];
    Mask rest = near & ~cluster;
    if (rest == 0) {
      return;
    }
    for (; rest != 0; rest &= ~cluster) {
      cluster |= clusterOf_[lowestBit(rest)];
    }
    for (rest = cluster; rest != 0; rest &= rest - 1) {
      clusterOf_[lowestBit(rest)] = cluster;
    }
    united_ |= cluster;
  }

  Mask of(std::size_t k) const { return clusterOf_[k]; }

  /// All points that are not alone in their clusters.
  Mask united() const { return united_; }

 private:
  std::array<Mask, PointColumns::kMaskBits> clusterOf_;
  Mask united_ = 0;
};

/// @param points   of the leaf
/// @param cluster  not empty
void linkToSmallest(const std::int32_t* points, Mask cluster, DisjointSets forest) {
  assert(cluster != 0);
  std::int32_t smallest = points[lowestBit(cluster)];
  for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
    smallest = std::min(smallest, points[lowestBit(rest)]);
  }
  for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
    std::int32_t& parent = forest.parent(points[lowestBit(rest)]);
    assert(parent == points[lowestBit(rest)]);
    parent = smallest;
  }
}

}  // namespace

bool linkLeaf(const BoxTree& tree, const BoxTree::Node& leaf, DisjointSets forest,
              double squaredTolerance) {
  assert(leaf.isLeaf());
  const Range range = leaf.range;
  const std::int32_t* const points = tree.points.data() + range.begin;
  const Mask all = PointColumns::all(range);
  if (leaf.box.squaredDiagonal() < squaredTolerance) {
    linkToSmallest(points, all, forest);
    return true;
  }
  const std::size_t size = toSize(range.size());
  LeafClusters clusters(size);
  for (std::size_t k = 0; k + 1 < size; ++k) {
    const std::int32_t i = range.begin + toIndex(k);
    const Range later{i + 1, range.end};
    clusters.unite(k, tree.columns.nearTo(tree.columns.point(i).data(), later, squaredTolerance)
                          << (k + 1));
  }
  for (Mask rest = clusters.united(); rest != 0;) {
    const Mask cluster = clusters.of(lowestBit(rest));
    linkToSmallest(points, cluster, forest);
    rest &= ~cluster;
  }
  return clusters.of(0) == all;
}

}  // namespace quor
