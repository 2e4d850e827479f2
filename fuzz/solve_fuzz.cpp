// Any bytes as a tagged mesh: quorctorTagged answers as documented, and where the system is well
// posed both solves agree with dense linear algebra.

#include "input.h"
#include "support/cotangent_stiffness.h"

#include <quor.h>

#include <numeric>

namespace {

using fuzz::require;
using test::Mesh;

Mesh readMesh(fuzz::Input& input) {
  Mesh mesh;
  mesh.vertices = input.vertices(24);
  mesh.triangles = input.triangles(1 + input.byte() % 64, mesh.n());
  return mesh;
}

/// The documented order of the checks: any triangle with repeated corners, then any unused vertex.
StatusCode expectedStatus(const Mesh& mesh) {
  std::vector<bool> used(std::size_t(mesh.n()));
  for (std::size_t t = 0; t < mesh.triangles.size(); t += 3) {
    const std::int32_t* corner = mesh.triangles.data() + t;
    if (corner[0] == corner[1] || corner[1] == corner[2] || corner[0] == corner[2]) {
      return QUOR_REPEATED_CORNER;
    }
    used[corner[0]] = used[corner[1]] = used[corner[2]] = true;
  }
  return std::find(used.begin(), used.end(), false) == used.end() ? QUOR_SUCCESS
                                                                  : QUOR_UNUSED_VERTEX;
}

/// Whether no triangle is a needle or a cap or far away, where cotangents and gradients round
/// differently.
bool isWellShaped(const Mesh& mesh) {
  for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
    const std::size_t t = i - i % 3;
    const Eigen::Vector3d p = test::at(mesh, mesh.triangles[i]);
    const Eigen::Vector3d u = test::at(mesh, mesh.triangles[t + (i + 1) % 3]) - p;
    const Eigen::Vector3d w = test::at(mesh, mesh.triangles[t + (i + 2) % 3]) - p;
    const double product = u.norm() * w.norm();
    if (!(product > 1e-100 && product < 1e100 && u.cross(w).norm() > 0.01 * product &&
          p.norm() < 1e3 * u.norm())) {
      return false;
    }
  }
  return true;
}

struct Problem {
  Mesh mesh;
  std::vector<std::int32_t> tags;
  std::vector<double> prescribed;
  std::vector<double> source;  ///< empty: none
};

std::vector<int> freeVertices(const Problem& problem) {
  std::vector<int> free;
  for (int i = 0; i < problem.mesh.n(); ++i) {
    if (problem.tags[std::size_t(i)] < 1 || problem.tags[std::size_t(i)] > 3) {
      free.push_back(i);
    }
  }
  return free;
}

void compareWithDense(const Problem& problem, const std::vector<double>& field) {
  const Eigen::MatrixXd K = test::denseStiffness(problem.mesh);
  const std::vector<int> free = freeVertices(problem);
  Eigen::VectorXd x = Eigen::VectorXd::Map(problem.prescribed.data(), K.rows());
  x(free).setZero();
  Eigen::VectorXd rhs = -(K * x)(free);
  if (!problem.source.empty()) {
    rhs -= Eigen::VectorXd::Map(problem.source.data(), K.rows())(free);
  }
  if (free.empty() || !rhs.allFinite() || x.norm() > 1e100 || rhs.norm() > 1e100) {
    return;
  }
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(K(free, free));
  const Eigen::VectorXd& lambda = eigen.eigenvalues();
  if (!(lambda[0] > 1e-6 * lambda.maxCoeff())) {
    return;
  }
  const Eigen::VectorXd expected =
      eigen.eigenvectors() * (eigen.eigenvectors().transpose() * rhs).cwiseQuotient(lambda);
  const Eigen::VectorXd actual = Eigen::VectorXd::Map(field.data(), K.rows())(free);
  // The sums that make the right-hand side may cancel.
  const double size = K.norm() * x.norm() + rhs.norm();
  require((actual - expected).norm() <= 1e-6 * size / lambda[0] + 1e-300);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const int mode = input.byte();
  Problem problem{readMesh(input), {}, {}, {}};
  // The sum makes sure that few of the inputs that come from a slow one are slow themselves.
  const bool isLarge = mode == 255 && std::accumulate(data, data + size, 0U) % 16 == 0;
  if (isLarge) {  // so many triangles that the factor is worth computing in blocks
    Mesh large = test::tangledMesh(300, 600, unsigned(input.byte()));
    std::copy(problem.mesh.vertices.begin(), problem.mesh.vertices.end(), large.vertices.begin());
    problem.mesh = large;
  }
  const auto n = std::size_t(problem.mesh.n());
  for (std::size_t i = 0; i < n; ++i) {
    problem.tags.push_back(input.byte() % 8 - 2);
    problem.prescribed.push_back(input.coordinate());
    if (mode % 2 != 0) {
      problem.source.push_back(input.coordinate());
    }
  }
  const Mesh& mesh = problem.mesh;
  const std::vector<int> free = freeVertices(problem);

  std::uint32_t prescribedCount = 99;
  StatusCode status = 99;
  void* handle = nullptr;
  require(quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         problem.tags.data(), &prescribedCount, &status, &handle) == 1);
  require(status == expectedStatus(mesh) && (handle != nullptr) == (status == QUOR_SUCCESS));
  require(prescribedCount == n - free.size());
  if (handle == nullptr) {
    return 0;
  }
  std::vector<double> field(n, 12345.0);
  if (problem.source.empty()) {
    quorsolveTagged(handle, problem.prescribed.data(), field.data(), &status);
  } else {
    quorsolvePTagged(handle, problem.prescribed.data(), problem.source.data(), field.data(),
                     &status);
  }
  require(status == QUOR_SUCCESS);
  const std::uint32_t info = quorinfo(handle);
  require(info <= QUOR_INFO_NUMERICAL_ISSUE);
  quorfree(handle);

  std::vector<bool> isFree(n);
  for (const int i : free) {
    isFree[std::size_t(i)] = true;
    require(info == QUOR_INFO_SUCCESS || test::bitsOf(field[std::size_t(i)]) == 0);
  }
  for (std::size_t i = 0; i < n; ++i) {
    require(isFree[i] || test::bitsOf(field[i]) == test::bitsOf(problem.prescribed[i]));
  }
  if (info == QUOR_INFO_SUCCESS && !isLarge && isWellShaped(mesh)) {
    compareWithDense(problem, field);
  }
  return 0;
}
