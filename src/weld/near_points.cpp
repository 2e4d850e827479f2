// A tree of tight boxes over the points, joined with itself (a dual-tree join: Gray and Moore,
// "N-Body" problems in statistical learning, 2000). Two boxes at or beyond the reach need no look;
// a box whose diagonal is below it is one cluster at once; two boxes that belong to one cluster
// need no look either. The latter two are what makes a large tolerance as cheap as a small one.

#include "weld/near_points.h"

#include "util/large_pages.h"
#include "util/machine.h"
#include "weld/cell_order.h"
#include "weld/point_columns.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quor {
namespace {

/// Cells first .. first + 2^bits - 1 of the order: a box.
struct Cells {
  std::uint32_t first;
  unsigned bits;
  Cells lowerHalf() const { return {first, bits - 1}; }
  Cells upperHalf() const { return {first + (1U << (bits - 1)), bits - 1}; }
};

/// Stored in preorder: the left child follows its parent.
struct Node {
  Box box;
  Range range;
  std::int32_t right;  ///< index of the right child, kLeaf without children
  bool oneCluster;     ///< all points were known to belong to one cluster when this was set

  static constexpr std::int32_t kLeaf = 0;
  bool isLeaf() const { return right == kLeaf; }
};

/// Which points of a leaf chains of near ones connect.
class LeafClusters {
 public:
  using Mask = PointColumns::Mask;

  explicit LeafClusters(std::int32_t size) {
    for (std::int32_t k = 0; k < size; ++k) {
      clusterOf_[static_cast<std::size_t>(k)] = Mask{1} << static_cast<unsigned>(k);
    }
  }

  /// Unites the clusters of point k and of all that are near to it.
  void unite(unsigned k, Mask near) {
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

  Mask of(unsigned k) const { return clusterOf_[k]; }

  /// All points that are not alone in their clusters.
  Mask united() const { return united_; }

 private:
  std::array<Mask, PointColumns::kMaskBits> clusterOf_;
  Mask united_ = 0;
};

class NearPointLinker {
 public:
  NearPointLinker(CellOrder order, PointArray points, PointForest forest, double reach)
      : order_(std::move(order)),
        points_(points),
        forest_(forest),
        reach_(reach),
        columns_(order_.points.size()) {}

  void run() {
    const auto count = static_cast<std::int32_t>(order_.points.size());
    if (count > 0) {
      reserveInLargePages(nodes_, order_.points.size() / 8);  // rarely more
      build({0, count}, {0, order_.cellBits});
    }
  }

 private:
  using Mask = PointColumns::Mask;
  static constexpr std::int32_t kLeafCapacity = PointColumns::kMaskBits;

  std::int32_t id(std::int32_t position) const {
    return order_.points[static_cast<std::size_t>(position)];
  }
  std::int32_t lastPosition() const { return static_cast<std::int32_t>(order_.points.size()) - 1; }
  Node& node(std::int32_t i) { return nodes_[static_cast<std::size_t>(i)]; }

  /// Builds the subtree of a range, which lies in the given cells, and links all its near pairs.
  /// Both halves of every split hold points, so the depth is at most 28, the number of cell bits,
  /// plus 63, the logarithm to the base 4/3 of how many leaves the fullest cell can hold: together
  /// with linkAcross, which descends on both sides, less than 64 KB of stack.
  /// @return the index of its node
  std::int32_t build(Range range, Cells cells) {
    const auto self = static_cast<std::int32_t>(nodes_.size());
    nodes_.push_back({Box(points_[id(range.begin)]), range, Node::kLeaf, false});
    if (range.size() <= kLeafCapacity) {
      linkInside(node(self));
      return self;
    }
    const std::int32_t middle = split(range, cells);
    const bool byCell = cells.bits > 0;
    const std::int32_t left = build({range.begin, middle}, byCell ? cells.lowerHalf() : cells);
    const std::int32_t right = build({middle, range.end}, byCell ? cells.upperHalf() : cells);
    node(self).right = right;
    node(self).box = node(left).box;
    node(self).box.extend(node(right).box);
    joinChildren(node(self), node(left), node(right));
    return self;
  }

  /// Finds the position that divides the range in two, between its cells as long as it has several.
  /// Narrows `cells` to the smallest box that holds the range.
  std::int32_t split(Range range, Cells& cells) {
    while (cells.bits > 0) {
      const std::int32_t middle = order_.start(cells.upperHalf().first);
      if (middle > range.begin && middle < range.end) {
        return middle;
      }
      cells = middle == range.begin ? cells.upperHalf() : cells.lowerHalf();
    }
    return splitInsideCell(range);
  }

  /// Halves the longest side of the box, or the number of points if that leaves one half with fewer
  /// than a quarter of them, as in a cluster with outliers.
  std::int32_t splitInsideCell(Range range) {
    Box box(points_[id(range.begin)]);
    for (std::int32_t i = range.begin + 1; i < range.end; ++i) {
      box.extend(Box(points_[id(i)]));
    }
    const std::size_t axis = box.longestAxis();
    const double center = box.lo[axis] + 0.5 * (box.hi[axis] - box.lo[axis]);
    const auto positions = order_.points.begin();
    const auto first = positions + range.begin;
    const auto last = positions + range.end;
    const auto middle = std::partition(
        first, last, [this, axis, center](std::int32_t i) { return points_[i][axis] < center; });
    if (std::min(middle - first, last - middle) >= range.size() / 4) {
      return static_cast<std::int32_t>(middle - positions);
    }
    const auto median = first + range.size() / 2;
    std::nth_element(first, median, last, [this, axis](std::int32_t i, std::int32_t j) {
      return points_[i][axis] < points_[j][axis];
    });
    return static_cast<std::int32_t>(median - positions);
  }

  void joinChildren(Node& parent, const Node& left, const Node& right) {
    if (parent.box.squaredDiagonal() < reach_) {
      // So are the children's diagonals: each child is one cluster already.
      forest_.link(id(left.range.begin), id(right.range.begin));
      parent.oneCluster = true;
      return;
    }
    linkAcross({left, left.oneCluster}, {right, right.oneCluster});
    parent.oneCluster = left.oneCluster && right.oneCluster && isSameTree(left, right);
  }

  bool isSameTree(const Node& a, const Node& b) {
    return forest_.root(id(a.range.begin)) == forest_.root(id(b.range.begin));
  }

  /// A node, and whether all its points are known to belong to one cluster: because the node says
  /// so, or one that it is part of.
  struct Side {
    const Node& node;
    bool oneCluster;
  };
  Side part(const Side& side, std::int32_t child) {
    return {node(child), side.oneCluster || node(child).oneCluster};
  }
  Side leftPart(const Side& side) {
    return part(side, static_cast<std::int32_t>(&side.node - nodes_.data()) + 1);
  }
  Side rightPart(const Side& side) { return part(side, side.node.right); }

  /// Links every near pair with one point on either side. Between two clusters one pair is enough:
  /// the calls after it return at once.
  void linkAcross(const Side& a, const Side& b) {
    if (!(squaredDistance(a.node.box, b.node.box) < reach_) || isJoined(a, b)) {
      return;
    }
    if (a.node.isLeaf() && b.node.isLeaf()) {
      linkLeaves(a, b);
    } else if (b.node.isLeaf() ||
               (!a.node.isLeaf() && a.node.range.size() >= b.node.range.size())) {
      linkAcross(leftPart(a), b);
      linkAcross(rightPart(a), b);
    } else {
      linkAcross(a, leftPart(b));
      linkAcross(a, rightPart(b));
    }
  }

  bool isJoined(const Side& a, const Side& b) {
    return a.oneCluster && b.oneCluster && isSameTree(a.node, b.node);
  }

  void linkLeaves(const Side& a, const Side& b) {
    const Range rangeA = a.node.range;
    const Range rangeB = b.node.range;
    if (columns_.nearTo(a.node.box, rangeB, reach_) == 0) {
      return;
    }
    for (Mask inA = columns_.nearTo(b.node.box, rangeA, reach_); inA != 0; inA &= inA - 1) {
      const std::int32_t i = first(inA, rangeA);
      const std::array<double, 3> p = columns_.point(i);
      for (Mask near = columns_.nearTo(p.data(), rangeB, reach_); near != 0; near &= near - 1) {
        forest_.link(id(i), id(first(near, rangeB)));
        if (a.oneCluster && b.oneCluster) {
          return;
        }
      }
    }
  }

  /// The position of the first point of a set.
  static std::int32_t first(Mask set, Range range) {
    return range.begin + static_cast<std::int32_t>(lowestBit(set));
  }

  /// Links the near pairs of a leaf, whose points are all still trees of their own, and fits its
  /// box.
  void linkInside(Node& leaf) {
    const Range range = leaf.range;
    for (std::int32_t i = range.begin; i < range.end; ++i) {
      prefetch(points_[id(std::min(i + kLeafCapacity, lastPosition()))]);  // of the next leaf
      columns_.put(i, points_[id(i)]);
    }
    leaf.box = columns_.box(range);
    const Mask all = PointColumns::all(range);
    if (leaf.box.squaredDiagonal() < reach_) {
      linkToSmallest(all, range);
      leaf.oneCluster = true;
      return;
    }
    LeafClusters clusters(range.size());
    for (std::int32_t i = range.begin; i + 1 < range.end; ++i) {
      const auto k = static_cast<unsigned>(i - range.begin);
      const Range later{i + 1, range.end};
      clusters.unite(k, columns_.nearTo(columns_.point(i).data(), later, reach_) << (k + 1));
    }
    for (Mask rest = clusters.united(); rest != 0;) {
      const Mask cluster = clusters.of(lowestBit(rest));
      linkToSmallest(cluster, range);
      rest &= ~cluster;
    }
    leaf.oneCluster = clusters.of(0) == all;
  }

  void linkToSmallest(Mask cluster, Range range) {
    std::int32_t smallest = id(first(cluster, range));
    for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
      smallest = std::min(smallest, id(first(rest, range)));
    }
    for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
      forest_.parent(id(first(rest, range))) = smallest;
    }
  }

  CellOrder order_;
  PointArray points_;
  PointForest forest_;
  double reach_;
  PointColumns columns_;
  std::vector<Node> nodes_;
};

}  // namespace

void linkNearPoints(const std::vector<std::int32_t>& selected, PointArray points,
                    PointForest forest, double reach) {
  NearPointLinker(orderByCell(selected, points), points, forest, reach).run();
}

}  // namespace quor
