// The stiffness matrix as textbooks have it, from cotangents: the oracle for the solver.
#pragma once

#include "mesh.h"

#include <Eigen/Dense>

namespace test {

/// Position of a vertex.
inline Eigen::Vector3d at(const Mesh& mesh, std::int32_t vertex) {
  return Eigen::Vector3d::Map(mesh.vertices.data() + 3 * std::size_t(vertex));
}

/// Calls visit(i, j, half the cotangent of the angle opposite) for the three edges of every
/// triangle.
template <typename Visit>
void forEachCotangentWeight(const Mesh& mesh, const Visit& visit) {
  for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t a = mesh.triangles[t + k];
      const std::int32_t b = mesh.triangles[t + (k + 1) % 3];
      const std::int32_t c = mesh.triangles[t + (k + 2) % 3];  // opposite the edge a b
      const Eigen::Vector3d u = at(mesh, a) - at(mesh, c);
      const Eigen::Vector3d w = at(mesh, b) - at(mesh, c);
      visit(std::size_t(a), std::size_t(b), 0.5 * u.dot(w) / u.cross(w).norm());
    }
  }
}

/// n x n, in caller order.
inline Eigen::MatrixXd denseStiffness(const Mesh& mesh) {
  Eigen::MatrixXd K = Eigen::MatrixXd::Zero(mesh.n(), mesh.n());
  forEachCotangentWeight(mesh, [&K](std::size_t i, std::size_t j, double weight) {
    const auto a = Eigen::Index(i);
    const auto b = Eigen::Index(j);
    K(a, b) -= weight;
    K(b, a) -= weight;
    K(a, a) += weight;
    K(b, b) += weight;
  });
  return K;
}

}  // namespace test
