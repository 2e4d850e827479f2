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
  // How many chains of edges there are, from one corner of the part to the next, or all around.
  std::int32_t chainCount() const { return toIndex(chains_.size()); }
  // The edges of a chain, numbered from 1.
  const std::vector<Edge>& edges(std::int32_t chain) const { return chains_[toSize(chain - 1)]; }

  // The face, or the chain, that is nearest to a point; of several as near, the one with the lowest
  // number. There is at least one.
  struct Nearest {
    std::int32_t number;
    double distance;
    std::int32_t other;    // the second nearest, or 0 if there is none
    double otherDistance;  // infinite if there is none
  };
  Nearest nearestFace(quor::Vec3 point) const;
  Nearest nearestChain(quor::Vec3 point) const;

 private:
  const Surface& part_;
  std::vector<std::vector<std::int32_t>> faces_;
  std::vector<std::vector<Edge>> chains_;
};

}  // namespace heatmap
