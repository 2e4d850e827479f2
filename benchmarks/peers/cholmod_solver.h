// CHOLMOD's supernodal factorization, ordered by approximate minimum degree.
#pragma once

#include "peers/plain_solver.h"

#include <cholmod.h>

namespace bench {

class CholmodSolver {
 public:
  CholmodSolver();
  ~CholmodSolver();
  CholmodSolver(const CholmodSolver&) = delete;
  CholmodSolver& operator=(const CholmodSolver&) = delete;

  /// Ordering and symbolic analysis. @param matrix  symmetric; its lower triangle is read
  void analyze(const Matrix& matrix);

  /// The numeric step, for the matrix that was analyzed. Throws std::runtime_error.
  void factorize(const Matrix& matrix);

  Eigen::VectorXd solve(const Eigen::VectorXd& rhs);

 private:
  cholmod_common common_;
  cholmod_factor* factor_ = nullptr;
};

}  // namespace bench
