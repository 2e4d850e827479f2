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

#include "util/large_pages.h"
#include "util/machine.h"
#include "weld/morton_order.h"
#include "weld/oriented_box.h"
#include "weld/point_columns.h"

#include <algorithm>
#include <array>
#include <bitset>
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

/// Stored in preorder: the left child follows its parent.
struct Node {
  Box box;
  Range range;
  std::int32_t right;  ///< index of the right child, kLeaf without children
  bool isOneCluster;   ///< its own links connect all its points

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
  NearPointLinker(MortonOrder order, PointArray points, DisjointSets forest,
                  double squaredTolerance)
      : order_(std::move(order)),
        points_(points),
        forest_(forest),
        squaredTolerance_(squaredTolerance),
        columns_(order_.points.size()),
        canOrient_(OrientedBox::isUsable(squaredTolerance)) {}

  void run() {
    const auto count = static_cast<std::int32_t>(order_.points.size());
    if (count > 0) {
      reserveInLargePages(nodes_, order_.points.size() / 8);  // rarely more
      build({0, count}, {0, order_.voxelBits});
    }
  }

  std::uint64_t steps() const { return steps_; }

 private:
  using Mask = PointColumns::Mask;
  static constexpr std::int32_t kLeafCapacity = PointColumns::kMaskBits;
  static constexpr std::size_t kStepsPerNode = 16;
  static constexpr std::int32_t kNone = -1;

  std::int32_t id(std::int32_t position) const {
    return order_.points[static_cast<std::size_t>(position)];
  }
  std::int32_t lastPosition() const { return static_cast<std::int32_t>(order_.points.size()) - 1; }
  Node& node(std::int32_t i) { return nodes_[static_cast<std::size_t>(i)]; }

  /// Builds the subtree of a range, which lies in the given voxels, and links all its near pairs.
  /// Both halves of every split hold points, so the depth is at most 28, the number of voxel bits,
  /// plus 63, the logarithm to the base 4/3 of how many leaves the fullest voxel can hold: together
  /// with linkAcross, which descends on both sides, less than 64 KB of stack.
  /// @return the index of its node
  std::int32_t build(Range range, Voxels voxels) {
    const auto self = static_cast<std::int32_t>(nodes_.size());
    nodes_.push_back({Box(points_[id(range.begin)]), range, Node::kLeaf, false});
    if (range.size() <= kLeafCapacity) {
      linkInside(node(self));
      return self;
    }
    const std::int32_t middle = split(range, voxels);
    assert(middle > range.begin && middle < range.end);
    const bool byVoxel = voxels.bits > 0;
    const std::int32_t left = build({range.begin, middle}, byVoxel ? voxels.lowerHalf() : voxels);
    const std::int32_t right = build({middle, range.end}, byVoxel ? voxels.upperHalf() : voxels);
    node(self).right = right;
    node(self).box = node(left).box;
    node(self).box.extend(node(right).box);
    joinChildren(node(self), node(left), node(right));
    return self;
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
    Box box(points_[id(range.begin)]);
    for (std::int32_t i = range.begin + 1; i < range.end; ++i) {
      box.extend(Box(points_[id(i)]));
    }
    const std::size_t axis = box.longestAxis();
    const double center = box.center()[axis];
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
    if (parent.box.squaredDiagonal() < squaredTolerance_) {
      assert(left.isOneCluster && right.isOneCluster);  // their diagonals are no longer
      forest_.link(id(left.range.begin), id(right.range.begin));
      parent.isOneCluster = true;
      return;
    }
    const Side a{left, left.isOneCluster};
    const Side b{right, right.isOneCluster};
    linkAcross(a, b);
    parent.isOneCluster = areJoined(a, b);
  }

  /// A part of one side of a join. It refers to a node in place, which stays there: nodes are added
  /// between the joins, not during one.
  struct Side {
    const Node& node;
    bool inOneCluster;  ///< the node is one cluster, or one that it is part of is
  };
  Side part(const Side& side, std::int32_t child) {
    return {node(child), side.inOneCluster || node(child).isOneCluster};
  }
  Side leftPart(const Side& side) {
    return part(side, static_cast<std::int32_t>(&side.node - nodes_.data()) + 1);
  }
  Side rightPart(const Side& side) { return part(side, side.node.right); }

  /// Whether one link between the two would connect all points of both. One side alone is not
  /// enough: the other may hold several clusters, each with a link of its own.
  static bool isOneLinkEnough(const Side& a, const Side& b) {
    return a.inOneCluster && b.inOneCluster;
  }

  /// Whether all points of both are known to belong to one cluster.
  bool areJoined(const Side& a, const Side& b) {
    return isOneLinkEnough(a, b) &&
           forest_.root(id(a.node.range.begin)) == forest_.root(id(b.node.range.begin));
  }

  /// Links every near pair with one point on either side, or as many as it takes to connect them.
  /// Descends from the larger box: a large leaf beside a small cluster is taken point by point
  /// before the cluster is taken apart.
  void linkAcross(const Side& a, const Side& b) {
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

  /// Whether the boxes of so many pairs have come near that most must have come so for nothing, as
  /// those of surfaces that are almost near: then it pays to make oriented boxes.
  bool areStepsMany() const { return steps_ > kStepsPerNode * nodes_.size(); }

  /// The oriented box of a node, as a position in orientedBoxes_, if it has one or gets one now,
  /// else kNone. Made where it is asked for first, in a few passes over the node's points.
  std::int32_t orientedBox(const Node& node) {
    if (!canOrient_ || !areStepsMany() ||
        !(node.box.squaredDiagonal() < OrientedBox::kSquaredTolerances * squaredTolerance_)) {
      return kNone;
    }
    orientedBoxOf_.resize(nodes_.size(), kNone);
    std::int32_t& box = orientedBoxOf_[static_cast<std::size_t>(&node - nodes_.data())];
    if (box == kNone) {
      box = static_cast<std::int32_t>(orientedBoxes_.size());
      orientedBoxes_.emplace_back(columns_, node.box, node.range);
      steps_ += static_cast<std::size_t>(node.range.size() / kLeafCapacity);
    }
    return box;
  }

  /// Whether no pair between the two is near, as far as more than their boxes tell. For two leaves
  /// it is as fast to look.
  bool areApart(const Node& a, const Node& b) {
    if (a.isLeaf() || b.isLeaf()) {
      return a.isLeaf() != b.isLeaf() && (a.isLeaf() ? nearIn(a, b) : nearIn(b, a)) == 0;
    }
    const std::int32_t boxA = orientedBox(a);
    const std::int32_t boxB = orientedBox(b);
    return boxA != kNone && boxB != kNone && boxAt(boxA).isBeyond(boxAt(boxB), squaredTolerance_);
  }

  /// The points of a leaf that may be near to one of another node.
  Mask nearIn(const Node& leaf, const Node& other) {
    const Mask near = columns_.nearTo(other.box, leaf.range, squaredTolerance_);
    if (near == 0) {
      return 0;
    }
    const std::int32_t box = orientedBox(other);
    return box == kNone ? near : near & boxAt(box).nearIn(columns_, leaf.range, squaredTolerance_);
  }

  const OrientedBox& boxAt(std::int32_t place) const {
    return orientedBoxes_[static_cast<std::size_t>(place)];
  }

  void linkLeaves(const Side& a, const Side& b) {
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
  void linkLeaves(const Side& a, Mask inA, const Side& b) {
    const Range rangeA = a.node.range;
    const Range rangeB = b.node.range;
    for (; inA != 0; inA &= inA - 1) {
      const std::int32_t i = first(inA, rangeA);
      const std::array<double, 3> p = columns_.point(i);
      ++steps_;
      for (Mask near = columns_.nearTo(p.data(), rangeB, squaredTolerance_); near != 0;
           near &= near - 1) {
        forest_.link(id(i), id(first(near, rangeB)));
        if (isOneLinkEnough(a, b)) {
          return;
        }
      }
    }
  }

  static std::size_t size(Mask set) { return std::bitset<PointColumns::kMaskBits>(set).count(); }

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
    if (leaf.box.squaredDiagonal() < squaredTolerance_) {
      linkToSmallest(all, range);
      leaf.isOneCluster = true;
      return;
    }
    LeafClusters clusters(range.size());
    for (std::int32_t i = range.begin; i + 1 < range.end; ++i) {
      const auto k = static_cast<unsigned>(i - range.begin);
      const Range later{i + 1, range.end};
      clusters.unite(k, columns_.nearTo(columns_.point(i).data(), later, squaredTolerance_)
                            << (k + 1));
    }
    for (Mask rest = clusters.united(); rest != 0;) {
      const Mask cluster = clusters.of(lowestBit(rest));
      linkToSmallest(cluster, range);
      rest &= ~cluster;
    }
    leaf.isOneCluster = clusters.of(0) == all;
  }

  void linkToSmallest(Mask cluster, Range range) {
    assert(cluster != 0);
    std::int32_t smallest = id(first(cluster, range));
    for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
      smallest = std::min(smallest, id(first(rest, range)));
    }
    for (Mask rest = cluster; rest != 0; rest &= rest - 1) {
      forest_.parent(id(first(rest, range))) = smallest;
    }
  }

  MortonOrder order_;
  PointArray points_;
  DisjointSets forest_;
  double squaredTolerance_;
  PointColumns columns_;
  std::vector<Node> nodes_;
  std::size_t steps_ = 0;  ///< pairs of boxes, and passes over 32 points
  bool canOrient_;
  std::vector<std::int32_t> orientedBoxOf_;  ///< of the first nodes, a position in orientedBoxes_
  std::vector<OrientedBox> orientedBoxes_;
};

}  // namespace

void linkNearPoints(const std::vector<std::int32_t>& selected, PointArray points,
                    DisjointSets forest, double squaredTolerance, std::uint64_t& steps) {
  NearPointLinker linker(orderAlongMortonCurve(selected, points), points, forest, squaredTolerance);
  linker.run();
  steps += linker.steps();
}

}  // namespace quor
