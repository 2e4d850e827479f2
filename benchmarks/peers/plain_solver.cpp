#include "peers/plain_solver.h"

#include <Eigen/Geometry>

#include <algorithm>
#include <stdexcept>

namespace bench {

PlainAssembly plainAssemble(const TaggedMesh& mesh) {
  PlainAssembly a;
  const std::int32_t n = mesh.n();
  const auto isPrescribed = [](std::int32_t tag) { return tag >= 1 && tag <= 3; };
  a.tags = mesh.tags;
  a.callerToSolver.resize(mesh.tags.size());
  a.solverToCaller.resize(mesh.tags.size());
  for (std::int32_t i = 0; i < n; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const std::int32_t k =
        isPrescribed(mesh.tags[at]) ? a.prescribed++ : a.prescribed + (n - 1 - i);
    a.callerToSolver[at] = k;
    a.solverToCaller[static_cast<std::size_t>(k)] = i;
  }
  std::vector<double> positions(mesh.vertices.size());
  for (std::size_t i = 0; i < mesh.tags.size(); ++i) {
    std::copy_n(mesh.vertices.data() + 3 * i, 3,
                positions.data() + 3 * static_cast<std::size_t>(a.callerToSolver[i]));
  }
  std::vector<std::int32_t> corners(mesh.triangles.size());
  std::transform(mesh.triangles.begin(), mesh.triangles.end(), corners.begin(),
                 [&](std::int32_t i) { return a.callerToSolver[static_cast<std::size_t>(i)]; });
  a.vertices = std::make_shared<const std::vector<double>>(positions);
  a.triangles = std::make_shared<const std::vector<std::int32_t>>(corners);

  std::vector<Eigen::Triplet<double>> triplets;
  triplets.reserve(3 * corners.size());
  std::vector<bool> used(mesh.tags.size());
  const auto at = [&](std::int32_t k) {
    return Eigen::Vector3d(a.vertices->data() + 3 * static_cast<std::size_t>(k));
  };
  for (std::size_t t = 0; t < corners.size(); t += 3) {
    const std::int32_t i[3] = {corners[t], corners[t + 1], corners[t + 2]};
    const Eigen::Vector3d p[3] = {at(i[0]), at(i[1]), at(i[2])};
    Eigen::Vector3d gradient[3];
    const double squared = (p[1] - p[0]).cross(p[2] - p[0]).squaredNorm();
    for (int k = 0; k < 3; ++k) {
      used[static_cast<std::size_t>(i[k])] = true;
      const Eigen::Vector3d edge = p[(k + 2) % 3] - p[(k + 1) % 3];
      const Eigen::Vector3d side = p[k] - p[(k + 1) % 3];
      const double inverse = 1 / edge.squaredNorm();
      gradient[k] = (side - edge * (edge.dot(side) * inverse)) / (inverse * squared);
    }
    const double area = 0.5 * std::sqrt(squared);
    for (int k = 0; k < 3; ++k) {
      const int l = (k + 1) % 3;
      const double value = area * gradient[k].dot(gradient[l]);
      triplets.emplace_back(i[k], i[l], value);
      triplets.emplace_back(i[l], i[k], value);
      triplets.emplace_back(i[k], i[k], area * gradient[k].squaredNorm());
    }
  }
  if (std::find(used.begin(), used.end(), false) != used.end()) {
    throw std::runtime_error("a vertex that no triangle uses");
  }
  Matrix stiffness(n, n);
  stiffness.setFromTriplets(triplets.begin(), triplets.end());
  const std::int32_t free = n - a.prescribed;
  a.stiffnessFF =
      std::make_shared<const Matrix>(stiffness.block(a.prescribed, a.prescribed, free, free));
  a.stiffnessFP =
      std::make_shared<const Matrix>(stiffness.block(a.prescribed, 0, free, a.prescribed));
  return a;
}

void PlainFactor::order(const Matrix& matrix) {
  ConstCholMatrixPtr result = nullptr;
  permuted_.resize(matrix.rows(), matrix.cols());
  ordering(matrix, result, permuted_);
}

void PlainFactor::analyze() {
  analyzePattern_preordered(permuted_, true);
}

void PlainFactor::factorizeNumerically() {
  factorize_preordered<true>(permuted_);
}

}  // namespace bench
