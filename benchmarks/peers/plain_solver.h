// A solver by the plain method: the same steps as the library's, written down straight with Eigen.
#pragma once

#include "soups/tagged_mesh.h"

#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

#include <cstdint>
#include <memory>
#include <vector>

namespace bench {

using Matrix = Eigen::SparseMatrix<double>;

/// The mesh in solver order and the two blocks of its stiffness matrix.
struct PlainAssembly {
  std::vector<std::int32_t> callerToSolver;
  std::vector<std::int32_t> solverToCaller;
  std::vector<std::int32_t> tags;
  std::shared_ptr<const std::vector<double>> vertices;
  std::shared_ptr<const std::vector<std::int32_t>> triangles;
  std::int32_t prescribed = 0;
  std::shared_ptr<const Matrix> stiffnessFF;
  std::shared_ptr<const Matrix> stiffnessFP;
};

PlainAssembly plainAssemble(const TaggedMesh& mesh);

/// Eigen's factorization with its three steps callable one by one.
class PlainFactor : public Eigen::SimplicialLDLT<Matrix> {
 public:
  void order(const Matrix& matrix);
  void analyze();
  void factorizeNumerically();

 private:
  Matrix permuted_;
};

}  // namespace bench
