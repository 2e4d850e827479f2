// What every method of welding returns.
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

struct Welded {
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  std::vector<std::int32_t> map;
  std::int32_t vertexCount = 0;
  std::int32_t triangleCount = 0;

  /// Room for the worst case.
  Welded(std::size_t points, std::size_t corners)
      : vertices(3 * points), triangles(corners), map(points) {}
};

}  // namespace bench
