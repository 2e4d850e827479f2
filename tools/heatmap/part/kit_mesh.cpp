#include "part/kit_mesh.h"

namespace heatmap {

Surface copyOf(const quor::kit::Mesh& mesh, quor::Vec3 origin) {
  const auto vertices = mesh.vertices();
  const auto triangles = mesh.triangles();
  return {{vertices.begin(), vertices.end()}, {triangles.begin(), triangles.end()}, origin};
}

Change changeOf(const quor::kit::Mesh& refined) {
  const auto triangles = refined.triangleOrigins();
  const auto vertices = refined.vertexOrigins();
  Change change{{triangles.begin(), triangles.end()}, {}};
  for (std::size_t k = 0; k < vertices.size(); k += 2) {
    change.vertexOrigins.push_back({vertices[k], vertices[k + 1]});
  }
  return change;
}

}  // namespace heatmap
