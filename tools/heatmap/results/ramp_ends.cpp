#include "results/ramp_ends.h"

namespace heatmap {

void addRampEnds(Surface& mesh, std::vector<double>& field, double low, double high) {
  const std::vector<double> place(mesh.vertex(0), mesh.vertex(0) + 3);
  for (const double value : {low, high, high}) {
    mesh.triangles.push_back(mesh.vertexCount());
    mesh.vertices.insert(mesh.vertices.end(), place.begin(), place.end());
    field.push_back(value);
  }
}

}  // namespace heatmap
