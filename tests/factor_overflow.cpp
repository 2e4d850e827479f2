// Builds a mesh whose factor has no place in 32-bit indices, and shows that the constructor says
// so. Needs some gigabytes and minutes.
//
// A cubic grid is cut into tetrahedra, six per cell along its diagonal (Kuhn), and all their faces
// together are the mesh. The more the surfaces intertwine the more the elimination fills in: here
// as much as in a volume.

#include <quor.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

constexpr int kSide = 97;  // vertices

using Step = std::array<int, 3>;

std::int32_t vertexAt(Step p) {
  return p[0] + kSide * (p[1] + kSide * p[2]);
}

bool isInGrid(Step p) {
  return p[0] < kSide && p[1] < kSide && p[2] < kSide;
}

/// All faces that have `corner` as their lowest vertex: the other two are one and two monotonic
/// steps away from it.
void appendFaces(Step corner, std::vector<std::int32_t>& triangles) {
  for (int first = 1; first < 8; ++first) {
    for (int both = first + 1; both < 8; ++both) {
      if ((first & both) != first) {
        continue;
      }
      const auto to = [&corner](int axes) {
        return Step{corner[0] + (axes & 1), corner[1] + (axes >> 1 & 1), corner[2] + (axes >> 2)};
      };
      if (isInGrid(to(both))) {
        triangles.insert(triangles.end(),
                         {vertexAt(corner), vertexAt(to(first)), vertexAt(to(both))});
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
        appendFaces({x, y, z}, triangles);
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
    const bool isClean = handle == nullptr && prescribed == 0 && status == 99;
    const bool isDocumented = std::strcmp(error.what(), "vector") == 0;
    std::printf("std::length_error(\"%s\"), outputs %s\n", error.what(),
                isClean ? "as documented" : "wrong");
    return isClean && isDocumented ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  std::printf("no exception, status %u, info %u\n", status, quorinfo(handle));
  return EXIT_FAILURE;
}
