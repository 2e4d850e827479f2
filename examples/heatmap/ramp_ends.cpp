#include "ramp_ends.h"

#include "field.h"

namespace heatmap {

void addRampEnds(Mesh& mesh, std::vector<std::int32_t>& tags, std::vector<double>& values,
                 double low, double high) {
  const std::vector<double> place(mesh.vertex(0), mesh.vertex(0) + 3);
  for (const double value : {low, high, high}) {
    mesh.triangles.push_back(mesh.vertexCount());
    mesh.vertices.insert(mesh.vertices.end(), place.begin(), place.end());
    tags.push_back(kRampEnd);
    values.push_back(value);
  }
}

}  // namespace heatmap
