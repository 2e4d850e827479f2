#include "kit/flow.h"

#include "operator/element_stiffness.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>

namespace quorkit {

void flows(const MeshView& mesh, const double* field, const std::int32_t* regions,
           std::int32_t regionCount, double* flowsOut) {
  std::fill_n(flowsOut, toSize(regionCount), 0.0);
  constexpr std::size_t kBlock = 64;
  std::array<quor::ElementStiffness, kBlock> elements;
  for (std::size_t begin = 0; begin < mesh.triangleCount(); begin += kBlock) {
    const std::size_t count = std::min(kBlock, mesh.triangleCount() - begin);
    const std::int32_t* corner = mesh.triangles + 3 * begin;
    quor::elementStiffnesses(mesh.vertices, corner, count, elements.data());
    for (std::size_t t = 0; t < count; ++t, corner += 3) {
      for (std::size_t k = 0; k < 3; ++k) {
        // The edge from a to b: what leaves one end arrives at the other, to the bit. So the flows
        // balance, and nothing is lost in sums of what passes inside a region.
        const std::int32_t a = corner[k];
        const std::int32_t b = corner[k == 2 ? 0 : k + 1];
        if (regions[a] == regions[b]) {
          continue;
        }
        assert(regions[a] < regionCount && regions[b] < regionCount);
        const double flow = elements[t].edge[k] * (field[b] - field[a]);
        if (regions[a] >= 0) {
          flowsOut[regions[a]] += flow;
        }
        if (regions[b] >= 0) {
          flowsOut[regions[b]] -= flow;
        }
      }
    }
  }
}

}  // namespace quorkit
