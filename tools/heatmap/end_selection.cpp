#include "end_selection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace heatmap {

bool isEndOfAxis(const Rule& rule) {
  return rule.kind == Rule::kLowEnd || rule.kind == Rule::kHighEnd;
}

EndSelection endSelection(const Surface& mesh, const Rule& rule) {
  EndSelection result{std::vector<bool>(mesh.triangles.size() / 3),
                      std::vector<bool>(static_cast<std::size_t>(mesh.vertexCount()))};
  std::vector<bool> isSelected = result.isVertex;
  for (const std::int32_t vertex : select(mesh, rule)) {
    isSelected[static_cast<std::size_t>(vertex)] = true;
  }
  for (const int corners : {3, 2}) {  // faces, else edges
    bool isAny = false;
    for (std::size_t t = 0; t < result.isFace.size(); ++t) {
      const std::int32_t* const corner = mesh.triangle(static_cast<std::int32_t>(t));
      const auto isCorner = [&](std::int32_t v) { return isSelected[static_cast<std::size_t>(v)]; };
      if (std::count_if(corner, corner + 3, isCorner) == corners) {
        isAny = true;
        result.isFace[t] = corners == 3;
        for (std::size_t k = 0; k < 3; ++k) {
          const auto v = static_cast<std::size_t>(corner[k]);
          result.isVertex[v] = result.isVertex[v] || isSelected[v];
        }
      }
    }
    if (isAny) {
      result.hasFaces = corners == 3;
      return result;
    }
  }
  result.isVertex = std::move(isSelected);
  return result;
}

}  // namespace heatmap
