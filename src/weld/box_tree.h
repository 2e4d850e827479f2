// A tree of tight boxes over points.
#pragma once

#include "util/index.h"
#include "weld/morton_order.h"
#include "weld/point.h"
#include "weld/point_columns.h"

#include <cassert>
#include <cstdint>
#include <vector>

namespace quor {

/// Every node stands for a range of the points, and for the box around them. A leaf has at most
/// kLeafCapacity points, any other node two children that share its points.
struct BoxTree {
  static constexpr std::int32_t kLeafCapacity = PointColumns::kMaskBits;

  struct Node {
    Box box;
    Range range;         ///< of the points in their order, not empty
    std::int32_t right;  ///< index of the right child, kNone for a leaf
    bool isOneCluster;   ///< for who links points: whether all in the range are; false at first

    static constexpr std::int32_t kNone = 0;  // the root is nobody's child
    bool isLeaf() const { return right == kNone; }
  };

  std::vector<std::int32_t> points;  ///< point indices, leaf by leaf
  PointColumns columns;              ///< their coordinates, in this order
  std::vector<Node> nodes;           ///< in preorder: the left child follows its parent

  /// Both for a node that is no leaf.
  const Node& left(const Node& node) const {
    assert(!node.isLeaf());
    return (&node)[1];
  }
  const Node& right(const Node& node) const {
    assert(!node.isLeaf());
    return nodes[toSize(node.right)];
  }
};

/// Both halves of every split hold points, so the depth is at most 28, the number of voxel bits,
/// plus 63, the logarithm to the base 4/3 of how many leaves the fullest voxel can hold.
/// Throws std::bad_alloc.
/// @param order   of some finite points
/// @param points  the array that the order is of
BoxTree buildBoxTree(MortonOrder order, PointArray points);

}  // namespace quor
