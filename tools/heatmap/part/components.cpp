#include "part/components.h"

#include "util/disjoint_sets.h"

#include <algorithm>
#include <utility>

namespace heatmap {

std::vector<std::int32_t> componentsOf(const Surface& surface) {
  std::vector<std::int32_t> parents = quor::DisjointSets::singletons(surface.vertexCount());
  quor::DisjointSets sets(parents.data());
  for (std::int32_t t = 0; t < surface.triangleCount(); ++t) {
    const std::int32_t* const corner = surface.triangle(t);
    sets.link(corner[0], corner[1]);
    sets.link(corner[0], corner[2]);
  }
  std::vector<std::int32_t> roots;
  roots.reserve(parents.size());
  for (std::int32_t v = 0; v < surface.vertexCount(); ++v) {
    roots.push_back(sets.root(v));
  }
  return roots;
}

std::int32_t keepLargestComponent(Surface& surface) {
  const std::vector<std::int32_t> component = componentsOf(surface);
  std::vector<std::int32_t> size(component.size(), 0);
  for (const std::int32_t root : component) {
    ++size[toSize(root)];
  }
  const auto largest =
      toIndex(static_cast<std::size_t>(std::max_element(size.begin(), size.end()) - size.begin()));
  const std::int32_t before = surface.triangleCount();
  std::vector<std::int32_t> kept;
  for (std::int32_t t = 0; t < before; ++t) {
    const std::int32_t* const corner = surface.triangle(t);
    if (component[toSize(corner[0])] == largest) {
      kept.insert(kept.end(), corner, corner + 3);
    }
  }
  surface.triangles = std::move(kept);
  return before - surface.triangleCount();
}

}  // namespace heatmap
