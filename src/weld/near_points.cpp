// A tree of tight boxes over the points, joined with itself (a dual-tree join: Gray and Moore,
// "N-Body" problems in statistical learning, 2000). Four shortcuts make a large tolerance as cheap
// as a small one; that the first two are exact is proven in point.h.
//   - Two boxes whose distance is not below the tolerance need no look.
//   - A box whose diagonal is below the tolerance is one cluster at once.
//   - Two boxes whose points all belong to one cluster need no look.
//   - Between two boxes that are one cluster each, one link is enough.
// What is left are surfaces just out of reach of each other: their boxes come near long before
// their points do. For these, where there are many, boxes are made that lie along the points.

#include "weld/near_points.h"

#include "util/machine.h"
#include "weld/leaf_clusters.h"
#include "weld/morton_order.h"

#include <array>
#include <bitset>
#include <cassert>
#include <cstddef>

namespace quor {
namespace {

using Mask = PointColumns::Mask;

std::size_t size(Mask set) {
  return std::bitset<PointColumns::kMaskBits>(set).count();
}

/// The position of the first point of a set.
std::int32_t first(Mask set, Range range) {
  return range.begin + toIndex(lowestBit(set));
}

}  // namespace

NearPoints::NearPoints(const std::vector<std::int32_t>& selected, PointArray points,
                       DisjointSets forest, double squaredTolerance)
    : tree_(buildBoxTree(orderAlongMortonCurve(selected, points), points)),
      forest_(forest),
      squaredTolerance_(squaredTolerance),
      orientedBoxes_(tree_, squaredTolerance) {
  assert(squaredTolerance > 0.0);
}

/// From the last node to the first one: children come after their parents in preorder, so each node
/// finds its own linked inside.
void NearPoints::link() {
  for (auto node = tree_.nodes.rbegin(); node != tree_.nodes.rend(); ++node) {
    if (node->isLeaf()) {
      node->isOneCluster = linkLeaf(tree_, *node, forest_, squaredTolerance_);
    } else {
      joinChildren(*node);
    }
  }
}

void NearPoints::joinChildren(Node& parent) {
  const Node& left = tree_.left(parent);
  const Node& right = tree_.right(parent);
  if (parent.box.squaredDiagonal() < squaredTolerance_) {
    assert(left.isOneCluster && right.isOneCluster);  // their diagonals are no longer
    forest_.link(point(left.range.begin), point(right.range.begin));
    parent.isOneCluster = true;
    return;
  }
  const Side a{left, left.isOneCluster};
  const Side b{right, right.isOneCluster};
  linkAcross(a, b);
  parent.isOneCluster = areJoined(a, b);
}

NearPoints::Side NearPoints::part(const Side& side, const Node& child) {
  return {child, side.inOneCluster || child.isOneCluster};
}

/// Whether one link between the two would connect all points of both. One side alone is not enough:
/// the other may hold several clusters, each with a link of its own.
bool NearPoints::isOneLinkEnough(const Side& a, const Side& b) {
  return a.inOneCluster && b.inOneCluster;
}

/// Whether all points of both are known to belong to one cluster.
bool NearPoints::areJoined(const Side& a, const Side& b) {
  return isOneLinkEnough(a, b) &&
         forest_.root(point(a.node.range.begin)) == forest_.root(point(b.node.range.begin));
}

/// Links every near pair with one point on either side, or as many as it takes to connect them.
/// Descends from the larger box: a large leaf beside a small cluster is taken point by point before
/// the cluster is taken apart. The depth is at most that of both sides together, see buildBoxTree:
/// less than 64 KB of stack.
void NearPoints::linkAcross(const Side& a, const Side& b) {
  ++steps_;
  if (!(squaredDistance(a.node.box, b.node.box) < squaredTolerance_) || areJoined(a, b) ||
      areApart(a.node, b.node)) {
    return;
  }
  if (a.node.isLeaf() && b.node.isLeaf()) {
    linkLeaves(a, b);
  } else if (b.node.isLeaf() ||
             (!a.node.isLeaf() && a.node.box.squaredDiagonal() >= b.node.box.squaredDiagonal())) {
    linkAcross(leftPart(a), b);
    linkAcross(rightPart(a), b);
  } else {
    linkAcross(a, leftPart(b));
    linkAcross(a, rightPart(b));
  }
}

/// The oriented box of a node, or null. Only after the boxes of so many pairs have come near that
/// most must have come so for nothing, as those of surfaces that are almost near, does it pay to
/// make any.
const OrientedBox* NearPoints::orientedBox(const Node& node) {
  constexpr std::uint64_t kStepsPerNode = 16;
  return steps() > kStepsPerNode * tree_.nodes.size() ? orientedBoxes_.of(node) : nullptr;
}

/// Whether no pair between the two is near, as far as more than their boxes tell. For two leaves it
/// is as fast to look.
bool NearPoints::areApart(const Node& a, const Node& b) {
  if (a.isLeaf() || b.isLeaf()) {
    return a.isLeaf() != b.isLeaf() && (a.isLeaf() ? nearIn(a, b) : nearIn(b, a)) == 0;
  }
  const OrientedBox* const boxA = orientedBox(a);
  const OrientedBox* const boxB = orientedBox(b);
  return boxA != nullptr && boxB != nullptr && boxA->isBeyond(*boxB, squaredTolerance_);
}

/// The points of a leaf that may be near to one of another node.
Mask NearPoints::nearIn(const Node& leaf, const Node& other) {
  const Mask near = tree_.columns.nearTo(other.box, leaf.range, squaredTolerance_);
  if (near == 0) {
    return 0;
  }
  const OrientedBox* const box = orientedBox(other);
  return box == nullptr ? near : near & box->nearIn(tree_.columns, leaf.range, squaredTolerance_);
}

void NearPoints::linkLeaves(const Side& a, const Side& b) {
  const Mask inA = nearIn(a.node, b.node);
  const Mask inB = inA == 0 ? 0 : nearIn(b.node, a.node);
  if (inB == 0) {
    return;
  }
  if (size(inA) <= size(inB)) {
    linkLeaves(a, inA, b);
  } else {
    linkLeaves(b, inB, a);
  }
}

/// @param inA  the points of the first leaf that may be near to some of the second
void NearPoints::linkLeaves(const Side& a, Mask inA, const Side& b) {
  const Range rangeA = a.node.range;
  const Range rangeB = b.node.range;
  for (; inA != 0; inA &= inA - 1) {
    const std::int32_t i = first(inA, rangeA);
    const std::array<double, 3> p = tree_.columns.point(i);
    ++steps_;
    for (Mask near = tree_.columns.nearTo(p.data(), rangeB, squaredTolerance_); near != 0;
         near &= near - 1) {
      forest_.link(point(i), point(first(near, rangeB)));
      if (isOneLinkEnough(a, b)) {
        return;
      }
    }
  }
}

}  // namespace quor
