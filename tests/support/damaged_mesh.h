// Closed surfaces with the damage that tessellators leave in them.
#pragma once

#include "kit_mesh.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <utility>

namespace test {

/// An octahedron, each face cut into side * side triangles, bumpy.
inline Mesh closedMesh(int side, std::mt19937& random) {
  Mesh mesh;
  std::map<std::array<int, 3>, std::int32_t> places;
  std::uniform_real_distribution<double> bump(0.9, 1.1);
  const auto vertex = [&](std::array<int, 3> p) {
    const auto [place, isNew] = places.emplace(p, mesh.n());
    if (isNew) {
      const double length = bump(random) / std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
      mesh.vertices.insert(mesh.vertices.end(), {p[0] * length, p[1] * length, p[2] * length});
    }
    return place->second;
  };
  for (int octant = 0; octant < 8; ++octant) {
    const int s[3] = {octant & 1 ? -1 : 1, octant & 2 ? -1 : 1, octant & 4 ? -1 : 1};
    const auto at = [&](int i, int j) {
      return vertex({s[0] * i, s[1] * j, s[2] * (side - i - j)});
    };
    const auto add = [&](std::int32_t a, std::int32_t b, std::int32_t c) {
      if (s[0] * s[1] * s[2] > 0) {
        std::swap(b, c);
      }
      mesh.triangles.insert(mesh.triangles.end(), {a, b, c});
    };
    for (int i = 0; i < side; ++i) {
      for (int j = 0; i + j < side; ++j) {
        add(at(i, j), at(i, j + 1), at(i + 1, j));
        if (i + j + 1 < side) {
          add(at(i + 1, j), at(i, j + 1), at(i + 1, j + 1));
        }
      }
    }
  }
  return mesh;
}

/// Puts a vertex on side e of triangle t, at a share of its length, splits the triangle there, and
/// fills the crack with a degenerate triangle.
/// @param off  how far the vertex is off the side, as a share of the way to the opposite corner
inline void insertFiller(Mesh& mesh, std::size_t t, std::size_t e, double share, double off) {
  const std::int32_t a = mesh.triangles[3 * t + e];
  const std::int32_t b = mesh.triangles[3 * t + (e + 1) % 3];
  const std::int32_t c = mesh.triangles[3 * t + (e + 2) % 3];
  const std::int32_t middle = mesh.n();
  for (std::size_t axis = 0; axis < 3; ++axis) {
    mesh.vertices.push_back((1 - share - off) * pointOf(mesh, a)[axis] +
                            share * pointOf(mesh, b)[axis] + off * pointOf(mesh, c)[axis]);
  }
  mesh.triangles[3 * t] = a;
  mesh.triangles[3 * t + 1] = middle;
  mesh.triangles[3 * t + 2] = c;
  mesh.triangles.insert(mesh.triangles.end(), {middle, b, c, a, b, middle});
}

/// The same anywhere, often next to an end, and on the side or hardly off it.
inline void addFiller(Mesh& mesh, std::mt19937& random) {
  const std::size_t t = random() % std::size_t(mesh.m());
  const std::size_t e = random() % 3;
  const int kind = int(random() % 4);
  const double share = kind == 0 ? 1e-8 : kind == 1 ? 1 - 1e-8 : (1 + random() % 999) / 1000.0;
  insertFiller(mesh, t, e, share, random() % 2 == 0 ? 0 : 1e-8);
}

}  // namespace test
