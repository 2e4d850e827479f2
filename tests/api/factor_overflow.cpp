// Builds a mesh whose factor has no place in 32-bit indices, and shows that the constructor says
// so. Takes 3 GB of memory.
//
// A cubic grid is cut into tetrahedra, six per cell along its diagonal (Kuhn), and all their faces
// together are the mesh: its elimination fills in like that of a volume.

#include <quor.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

constexpr int kSide = 97;  // vertices

/// All faces that have vertex (x, y, z) as their lowest: the other two are one and two monotonic
/// steps away from it, along the axes that are set in the bits of `first` and of `both`.
void appendFaces(int x, int y, int z, std::vector<std::int32_t>& triangles) {
  const auto to = [=](int axes) {
    return x + (axes & 1) + kSide * (y + (axes >> 1 & 1) + kSide * (z + (axes >> 2)));
  };
  for (int both = 1; both < 8; ++both) {
    const bool isInGrid =
        x + (both & 1) < kSide && y + (both >> 1 & 1) < kSide && z + (both >> 2) < kSide;
    for (int first = 1; isInGrid && first < both; ++first) {
      if ((first & both) == first) {
        triangles.insert(triangles.end(), {to(0), to(first), to(both)});
      }
    }
  }
}

}  // namespace

int main() {
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  for (int z = 0; z < kSide; ++z) {
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        vertices.insert(vertices.end(), {double(x), double(y), double(z)});
        appendFaces(x, y, z, triangles);
      }
    }
  }
  const auto n = std::int32_t(vertices.size() / 3);
  const auto m = std::int32_t(triangles.size() / 3);
  std::printf("%d vertices, %d triangles\n", n, m);
  std::vector<std::int32_t> tags(std::size_t(n), 0);
  tags.front() = tags.back() = 1;

  std::uint32_t prescribed = 99;
  StatusCode status = 99;
  void* handle = &status;
  try {
    quorctorTagged(n, vertices.data(), m, triangles.data(), tags.data(), &prescribed, &status,
                   &handle);
  } catch (const std::length_error& error) {
    const bool isAsDocumented = handle == nullptr && prescribed == 0 && status == 99 &&
                                std::strcmp(error.what(), "vector") == 0;
    std::printf("length_error, %s\n", isAsDocumented ? "as documented" : "not as documented");
    return isAsDocumented ? 0 : 1;
  }
  std::printf("no exception, status %u, info %u\n", status, quorinfo(handle));
  return 1;
}
