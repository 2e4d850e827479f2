#include "weld/oriented_boxes.h"

#include "util/index.h"

namespace quor {

const OrientedBox* OrientedBoxes::of(const BoxTree::Node& node) {
  if (!OrientedBox::isUsable(squaredTolerance_) ||
      !(node.box.squaredDiagonal() < OrientedBox::kSquaredTolerances * squaredTolerance_)) {
    return nullptr;
  }
  boxOfNode_.resize(tree_.nodes.size());
  std::unique_ptr<OrientedBox>& box = boxOfNode_[toSize(&node - tree_.nodes.data())];
  if (box == nullptr) {
    box = std::make_unique<OrientedBox>(tree_.columns, node.box, node.range);
    steps_ += toSize(node.range.size() / PointColumns::kMaskBits);
  }
  return box.get();
}

}  // namespace quor
