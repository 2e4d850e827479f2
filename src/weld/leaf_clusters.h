// Links the near points of a leaf.
#pragma once

#include "util/disjoint_sets.h"
#include "weld/box_tree.h"

namespace quor {

/// Links the near points of a leaf, and whatever chains of them connect.
/// @param forest  in which all points of the leaf are still trees of their own
/// @return whether all points of the leaf are one cluster
bool linkLeaf(const BoxTree& tree, const BoxTree::Node& leaf, DisjointSets forest,
              double squaredTolerance);

}  // namespace quor
