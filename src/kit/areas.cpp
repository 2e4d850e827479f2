#include "kit/areas.h"

#include "kit/measure.h"

#include <algorithm>
#include <cstddef>

namespace quorkit {

void areas(const MeshView& mesh, double* areasOut) {
  std::fill_n(areasOut, mesh.vertexCount(), 0.0);
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const corner = mesh.triangles + 3 * t;
    const double third =
        doubledArea(pointAt(mesh.vertices, corner[0]), pointAt(mesh.vertices, corner[1]),
                    pointAt(mesh.vertices, corner[2])) /
        6.0;
    for (std::size_t k = 0; k < 3; ++k) {
      areasOut[corner[k]] += third;
    }
  }
}

}  // namespace quorkit
