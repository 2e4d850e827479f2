// The oriented boxes of a tree's nodes, made as they are asked for.
#pragma once

#include "weld/box_tree.h"
#include "weld/oriented_box.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quor {

/// One oriented box for each node that needs one.
class OrientedBoxes {
 public:
  /// @param tree  outlives this object; its nodes keep their places
  OrientedBoxes(const BoxTree& tree, double squaredTolerance)
      : tree_(tree), squaredTolerance_(squaredTolerance) {}
  OrientedBoxes(const OrientedBoxes&) = delete;
  OrientedBoxes& operator=(const OrientedBoxes&) = delete;
  ~OrientedBoxes() = default;

  /// The oriented box of a node, which lives as long as this object, or null if the node is too
  /// large for one, or the tolerance too large or too small. Throws std::bad_alloc.
  const OrientedBox* of(const BoxTree::Node& node);

  /// Passes over up to 32 points that the boxes took.
  std::uint64_t steps() const { return steps_; }

 private:
  const BoxTree& tree_;
  double squaredTolerance_;
  std::vector<std::unique_ptr<OrientedBox>> boxOfNode_;  ///< empty before the first is made
  std::uint64_t steps_ = 0;
};

}  // namespace quor
