// The faces of a part and the edges between them, as a CAD system would call them.
#pragma once

#include "part/change.h"
#include "part/surface.h"

#include <cstdint>
#include <vector>

namespace heatmap {

class Faces {
 public:
  // Finds the faces of a part, which must outlive this.
  explicit Faces(const Surface& part);

  // How many there are. They are numbered from 1.
  std::int32_t count() const { return toIndex(faces_.size()); }
  // The triangles of a face, ascending.
  const std::vector<std::int32_t>& triangles(std::int32_t face) const {
    return faces_[toSize(face - 1)];
  }
  // The face nearest to a point; of several as near, the one with the lowest number.
  std::int32_t nearestFace(quor::Vec3 point) const;
  // The edges of the chain nearest to a point, from one corner of the part to the next, or all
  // around. Nothing if the part has none.
  std::vector<Edge> nearestChain(quor::Vec3 point) const;

 private:
  const Surface& part_;
  std::vector<std::vector<std::int32_t>> faces_;
  std::vector<std::vector<Edge>> chains_;
};

}  // namespace heatmap
