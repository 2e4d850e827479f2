#include "hard_meshes.h"

#include <cmath>
#include <random>

namespace bench {
namespace {

/// The hubs' share of the root of n: each then has about 9.5 times the root as neighbours, where
/// the ordering sets aside what has more than ten times.
constexpr double kHubs = 0.68;

/// @return the mesh without triangles, all of its vertices free
TaggedMesh meshOf(const std::string& name, std::int32_t n) {
  TaggedMesh mesh;
  mesh.name = name;
  mesh.vertices.resize(3 * static_cast<std::size_t>(n));
  mesh.tags.assign(static_cast<std::size_t>(n), 0);
  return mesh;
}

}  // namespace

TaggedMesh manyHubs(std::int32_t n) {
  TaggedMesh mesh = meshOf("many hubs", n);
  std::mt19937 random(1);
  for (double& coordinate : mesh.vertices) {
    coordinate = static_cast<double>(random()) / 4294967296.0;
  }
  const auto hubs = static_cast<std::uint32_t>(kHubs * std::sqrt(n));
  const auto anyHub = [&] { return static_cast<std::int32_t>(random() % hubs); };
  for (auto leaf = static_cast<std::int32_t>(hubs); leaf < n; ++leaf) {
    for (int k = 0; k < 3; ++k) {
      const std::int32_t first = anyHub();
      const std::int32_t second = anyHub();
      if (first != second) {
        mesh.triangles.insert(mesh.triangles.end(), {leaf, first, second});
      }
    }
  }
  mesh.tags.back() = 1;
  return mesh;
}

TaggedMesh strip(std::int32_t width, std::int32_t length) {
  TaggedMesh mesh = meshOf("strip " + std::to_string(width) + " wide", width * length);
  for (std::int32_t y = 0; y < length; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      const std::int32_t i = y * width + x;
      mesh.vertices[3 * static_cast<std::size_t>(i)] = x;
      mesh.vertices[3 * static_cast<std::size_t>(i) + 1] = y;
      if (x + 1 < width && y + 1 < length) {
        mesh.triangles.insert(mesh.triangles.end(),
                              {i, i + 1, i + width, i + 1, i + width + 1, i + width});
      }
    }
  }
  mesh.tags.front() = 1;
  mesh.tags.back() = 2;
  return mesh;
}

}  // namespace bench
