#include "weld/box_tree.h"

#include "util/machine.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>

namespace quor {
namespace {

/// Voxels first .. first + 2^bits - 1 of the order: a box.
struct Voxels {
  std::uint32_t first;
  unsigned bits;
  Voxels lowerHalf() const { return {first, bits - 1}; }
  Voxels upperHalf() const { return {first + (1U << (bits - 1)), bits - 1}; }
};

class Builder {
 public:
  Builder(MortonOrder order, PointArray points)
      : order_(std::move(order)), points_(points), columns_(order_.points.size()) {}

  BoxTree run() {
    if (!order_.points.empty()) {
      nodes_.reserve(order_.points.size() / 8);  // rarely more
      build({0, toIndex(order_.points.size())}, {0, order_.voxelBits});
    }
    return {std::move(order_.points), std::move(columns_), std::move(nodes_)};
  }

 private:
  Point point(std::int32_t position) const { return points_[order_.points[toSize(position)]]; }

  /// Builds the subtree of a range, which lies in the given voxels. Its depth is bounded, see
  /// buildBoxTree.
  /// @return the index of its node
  std::int32_t build(Range range, Voxels voxels) {
    const std::int32_t self = toIndex(nodes_.size());
    nodes_.push_back({Box(point(range.begin)), range, BoxTree::Node::kNone, false});
    if (range.size() <= BoxTree::kLeafCapacity) {
      nodes_.back().box = fillLeaf(range);
      return self;
    }
    const std::int32_t middle = split(range, voxels);
    assert(middle > range.begin && middle < range.end);
    const bool byVoxel = voxels.bits > 0;
    const std::int32_t left = build({range.begin, middle}, byVoxel ? voxels.lowerHalf() : voxels);
    const std::int32_t right = build({middle, range.end}, byVoxel ? voxels.upperHalf() : voxels);
    assert(left == self + 1);
    BoxTree::Node& node = nodes_[toSize(self)];
    node.right = right;
    node.box = nodes_[toSize(left)].box;
    node.box.extend(nodes_[toSize(right)].box);
    return self;
  }

  /// Puts the points of a leaf, which keep their places from now on, into the columns.
  /// @return their box
  Box fillLeaf(Range range) {
    const std::int32_t last = toIndex(order_.points.size()) - 1;
    for (std::int32_t i = range.begin; i < range.end; ++i) {
      prefetch(point(std::min(i + BoxTree::kLeafCapacity, last)));  // of the next leaf
      columns_.put(i, point(i));
    }
    return columns_.box(range);
  }

  /// Finds the position that divides the range in two, between its voxels as long as it has
  /// several. Narrows `voxels` to the smallest box that holds the range.
  std::int32_t split(Range range, Voxels& voxels) {
    while (voxels.bits > 0) {
      const std::int32_t middle = order_.start(voxels.upperHalf().first);
      if (middle > range.begin && middle < range.end) {
        return middle;
      }
      voxels = middle == range.begin ? voxels.upperHalf() : voxels.lowerHalf();
    }
    return splitInsideVoxel(range);
  }

  /// Halves the longest side of the box, or the number of points if that leaves one half with fewer
  /// than a quarter of them, as in a cluster with outliers.
  std::int32_t splitInsideVoxel(Range range) {
    Box box(point(range.begin));
    for (std::int32_t i = range.begin + 1; i < range.end; ++i) {
      box.extend(Box(point(i)));
    }
    const std::size_t axis = box.longestAxis();
    const double center = box.center()[axis];
    const auto positions = order_.points.begin();
    const auto first = positions + range.begin;
    const auto last = positions + range.end;
    const auto middle = std::partition(
        first, last, [this, axis, center](std::int32_t i) { return points_[i][axis] < center; });
    if (std::min(middle - first, last - middle) >= range.size() / 4) {
      return toIndex(middle - positions);
    }
    const auto median = first + range.size() / 2;
    std::nth_element(first, median, last, [this, axis](std::int32_t i, std::int32_t j) {
      return points_[i][axis] < points_[j][axis];
    });
    return toIndex(median - positions);
  }

  MortonOrder order_;
  PointArray points_;
  PointColumns columns_;
  std::vector<BoxTree::Node> nodes_;
};

}  // namespace

BoxTree buildBoxTree(MortonOrder order, PointArray points) {
  return Builder(std::move(order), points).run();
}

}  // namespace quor
