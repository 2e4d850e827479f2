#include "peers/cholmod_solver.h"

#include <stdexcept>

namespace bench {
namespace {

/// CHOLMOD's description of Eigen's arrays. It does not write to them.
cholmod_sparse viewOf(const Matrix& matrix) {
  cholmod_sparse view{};
  view.nrow = static_cast<std::size_t>(matrix.rows());
  view.ncol = static_cast<std::size_t>(matrix.cols());
  view.nzmax = static_cast<std::size_t>(matrix.nonZeros());
  view.p = const_cast<int*>(matrix.outerIndexPtr());
  view.i = const_cast<int*>(matrix.innerIndexPtr());
  view.x = const_cast<double*>(matrix.valuePtr());
  view.stype = -1;
  view.itype = CHOLMOD_INT;
  view.xtype = CHOLMOD_REAL;
  view.dtype = CHOLMOD_DOUBLE;
  view.sorted = 1;
  view.packed = 1;
  return view;
}

}  // namespace

CholmodSolver::CholmodSolver() {
  cholmod_start(&common_);
  common_.supernodal = CHOLMOD_SUPERNODAL;
  common_.nmethods = 1;
  common_.method[0].ordering = CHOLMOD_AMD;
}

CholmodSolver::~CholmodSolver() {
  cholmod_free_factor(&factor_, &common_);
  cholmod_finish(&common_);
}

void CholmodSolver::analyze(const Matrix& matrix) {
  cholmod_sparse view = viewOf(matrix);
  cholmod_free_factor(&factor_, &common_);
  factor_ = cholmod_analyze(&view, &common_);
}

void CholmodSolver::factorize(const Matrix& matrix) {
  cholmod_sparse view = viewOf(matrix);
  if (factor_ == nullptr || cholmod_factorize(&view, factor_, &common_) == 0) {
    throw std::runtime_error("CHOLMOD failed");
  }
}

Eigen::VectorXd CholmodSolver::solve(const Eigen::VectorXd& rhs) {
  cholmod_dense b{};
  b.nrow = b.d = b.nzmax = static_cast<std::size_t>(rhs.size());
  b.ncol = 1;
  b.x = const_cast<double*>(rhs.data());
  b.xtype = CHOLMOD_REAL;
  b.dtype = CHOLMOD_DOUBLE;
  cholmod_dense* x = cholmod_solve(CHOLMOD_A, factor_, &b, &common_);
  Eigen::VectorXd result =
      Eigen::Map<const Eigen::VectorXd>(static_cast<const double*>(x->x), rhs.size());
  cholmod_free_dense(&x, &common_);
  return result;
}

}  // namespace bench
