// Another part of the host's process that uses Eigen, with other settings: it aligns to 64 bytes
// and exports all the symbols of the templates that the library uses too. No memory may pass
// between the two.

#include <Eigen/SparseCholesky>

#include <functional>

#if EIGEN_MAX_ALIGN_BYTES != 64
#error "this file is to be compiled with EIGEN_MAX_ALIGN_BYTES=64"
#endif

/// Solves a system, with a call made while all its objects are alive.
/// @return the norm of the residual
double solveWithOtherEigen(const std::function<void()>& inBetween) {
  using Matrix = Eigen::SparseMatrix<double, Eigen::ColMajor, int>;
  const int n = 2000;
  std::vector<Eigen::Triplet<double, int>> triplets;
  for (int i = 0; i < n; ++i) {
    triplets.emplace_back(i, i, 4.0);
    triplets.emplace_back(i, (i + 7) % n, -1.0);
    triplets.emplace_back((i + 7) % n, i, -1.0);
  }
  Matrix matrix(n, n);
  matrix.setFromTriplets(triplets.begin(), triplets.end());
  const Eigen::SimplicialLDLT<Matrix, Eigen::Lower, Eigen::AMDOrdering<int>> factor(matrix);
  const Eigen::VectorXd rhs = Eigen::VectorXd::LinSpaced(n, -1, 1);
  inBetween();
  const Eigen::VectorXd x = factor.solve(rhs);
  return (matrix * x - rhs).norm();
}
