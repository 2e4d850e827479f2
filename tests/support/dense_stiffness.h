// The stiffness matrix as textbooks have it, from cotangents, and dense: the oracle for small
// meshes.
#pragma once

#include "mesh.h"

#include <Eigen/Dense>

namespace test {

/// Position of a vertex.
inline Eigen::Vector3d at(const Mesh& mesh, std::int32_t vertex) {
  return Eigen::Vector3d::Map(mesh.vertices.data() + 3 * std::size_t(vertex));
}

/// n x n, in caller order.
inline Eigen::MatrixXd denseStiffness(const Mesh& mesh) {
  Eigen::MatrixXd K = Eigen::MatrixXd::Zero(mesh.n(), mesh.n());
  for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t a = mesh.triangles[t + k];
      const std::int32_t b = mesh.triangles[t + (k + 1) % 3];
      const std::int32_t c = mesh.triangles[t + (k + 2) % 3];  // opposite the edge a b
      const Eigen::Vector3d u = at(mesh, a) - at(mesh, c);
      const Eigen::Vector3d w = at(mesh, b) - at(mesh, c);
      const double half = 0.5 * u.dot(w) / u.cross(w).norm();
      K(a, b) -= half;
      K(b, a) -= half;
      K(a, a) += half;
      K(b, b) += half;
    }
  }
  return K;
}

}  // namespace test
