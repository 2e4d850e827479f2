// Meshes of the kit, owned and taken apart.
#pragma once

#include "mesh.h"

#include <quorkit.h>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace test {

struct FreeKitMesh {
  void operator()(const QuorkitMesh* mesh) const { quorkitFreeMesh(mesh); }
};
using KitMesh = std::unique_ptr<const QuorkitMesh, FreeKitMesh>;

struct FreeKitSolver {
  void operator()(QuorkitSolver* solver) const { quorkitFreeSolver(solver); }
};
using KitSolver = std::unique_ptr<QuorkitSolver, FreeKitSolver>;

/// Its vertices and triangles alone.
inline Mesh plain(const KitMesh& mesh) {
  return {{mesh->vertices, mesh->vertices + 3 * std::ptrdiff_t(mesh->vertexCount)},
          {mesh->triangles, mesh->triangles + 3 * std::ptrdiff_t(mesh->triangleCount)}};
}

inline bool sameMesh(const Mesh& a, const Mesh& b) {
  return sameBits(a.vertices, b.vertices) && a.triangles == b.triangles;
}

inline std::array<double, 3> pointOf(const Mesh& mesh, std::int32_t vertex) {
  const double* p = mesh.vertices.data() + 3 * std::size_t(vertex);
  return {p[0], p[1], p[2]};
}

inline double squaredLength(const Mesh& mesh, std::int32_t u, std::int32_t v) {
  const auto p = pointOf(mesh, u);
  const auto q = pointOf(mesh, v);
  const double dx = p[0] - q[0];
  const double dy = p[1] - q[1];
  const double dz = p[2] - q[2];
  return dx * dx + dy * dy + dz * dz;
}

/// Twice the area of a triangle, as a vector along its normal.
inline std::array<double, 3> doubleAreaVector(const Mesh& mesh, std::size_t t) {
  const auto a = pointOf(mesh, mesh.triangles[3 * t]);
  const auto b = pointOf(mesh, mesh.triangles[3 * t + 1]);
  const auto c = pointOf(mesh, mesh.triangles[3 * t + 2]);
  const double u[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const double v[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

}  // namespace test
