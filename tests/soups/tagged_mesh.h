// Inputs of the solver benchmarks: welded meshes with prescribed vertices.
#pragma once

#include "soups/soups.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct TaggedMesh {
  std::string name;
  std::vector<double> vertices;         ///< 3n coordinates
  std::vector<std::int32_t> triangles;  ///< 3m corners
  std::vector<std::int32_t> tags;       ///< n: 1 or 2 at the ends of the mesh, 0 between them

  /// The name, and what tells meshes of one name apart: the number of vertices.
  std::string label() const { return name + ", " + std::to_string(tags.size()); }
  std::int32_t n() const { return static_cast<std::int32_t>(tags.size()); }
  std::int32_t m() const { return static_cast<std::int32_t>(triangles.size() / 3); }
};

/// Welds the soup, keeps its largest piece, and prescribes the lowest and the highest hundredth
/// along an axis.
TaggedMesh tagEnds(const std::string& name, const Soup& soup, std::size_t axis);

/// The part of a soup whose triangles lie lowest along x.
/// @param share  of the triangles, 0 to 1
Soup lowestShare(const Soup& soup, double share);

}  // namespace bench
