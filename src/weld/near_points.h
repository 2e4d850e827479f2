// Links points that are nearer to each other than the tolerance.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/box_tree.h"
#include "weld/oriented_boxes.h"
#include "weld/point.h"

#include <cstdint>
#include <vector>

namespace quor {

/// The search for any points and any tolerance: a tree of boxes joined with itself. Takes about the
/// time of a sort, whatever the tolerance, unless many points of separate clusters are almost near:
/// of N points of surfaces just out of reach about N^(4/3), and N^2 where they are within a
/// rounding error of it; see "Made to be slow" in docs/reliability.md.
class NearPoints {
 public:
  /// Throws std::bad_alloc.
  /// @param selected          indices of finite points
  /// @param forest            in which each of these is a tree of its own or the root of one whose
  ///                          other points are not among them
  /// @param squaredTolerance  above 0, +infinity included
  NearPoints(const std::vector<std::int32_t>& selected, PointArray points, DisjointSets forest,
             double squaredTolerance);

  /// Links every two of the points that are near: afterwards the trees of the forest are the
  /// clusters. To be called once. Throws std::bad_alloc.
  void link();

  /// Pairs of boxes, and passes over up to 32 points.
  std::uint64_t steps() const { return steps_ + orientedBoxes_.steps(); }

 private:
  using Mask = PointColumns::Mask;
  using Node = BoxTree::Node;

  /// A part of one side of a join.
  struct Side {
    const Node& node;
    bool inOneCluster;  ///< the node is one cluster, or one that it is part of is
  };

  std::int32_t point(std::int32_t position) const { return tree_.points[toSize(position)]; }
  static Side part(const Side& side, const Node& child);
  Side leftPart(const Side& side) const { return part(side, tree_.left(side.node)); }
  Side rightPart(const Side& side) const { return part(side, tree_.right(side.node)); }

  void joinChildren(Node& parent);
  static bool isOneLinkEnough(const Side& a, const Side& b);
  bool areJoined(const Side& a, const Side& b);
  void linkAcross(const Side& a, const Side& b);
  const OrientedBox* orientedBox(const Node& node);
  bool areApart(const Node& a, const Node& b);
  Mask nearIn(const Node& leaf, const Node& other);
  void linkLeaves(const Side& a, const Side& b);
  void linkLeaves(const Side& a, Mask inA, const Side& b);

  BoxTree tree_;
  DisjointSets forest_;
  double squaredTolerance_;
  OrientedBoxes orientedBoxes_;
  std::uint64_t steps_ = 0;  ///< pairs of boxes, and passes over 32 points
};

}  // namespace quor
