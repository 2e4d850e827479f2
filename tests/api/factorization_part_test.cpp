// The factorization of a real part against Eigen's own.

#include "api/solver_handle.h"
#include "soups/tagged_mesh.h"

#include <quor.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

double largestDifference(const Eigen::ArrayXd& a, const Eigen::ArrayXd& b) {
  return ((a - b).abs() / b.abs()).maxCoeff();
}

TEST(FactorizationPart, AgreesWithEigens) {
  const bench::TaggedMesh mesh = bench::tagEnds("heat sink", bench::readSoup(QUOR_PART), 2);
  StatusCode status = 99;
  void* pointer = nullptr;
  quorctorTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), mesh.tags.data(),
                 nullptr, &status, &pointer);
  ASSERT_EQ(status, 0U);
  ASSERT_EQ(quorinfo(pointer), 0U);
  const auto& handle = *static_cast<const quor::SolverHandle*>(pointer);
  const quor::SparseMatrix& K = *handle.stiffnessFF;
  const Eigen::SimplicialLDLT<quor::SparseMatrix> eigen(K);

  const quor::SparseMatrix& ours = handle.factorFF->matrixL().nestedExpression();
  const quor::SparseMatrix& theirs = eigen.matrixL().nestedExpression();
  ASSERT_EQ(ours.nonZeros(), theirs.nonZeros());
  EXPECT_TRUE(std::equal(ours.innerIndexPtr(), ours.innerIndexPtr() + ours.nonZeros(),
                         theirs.innerIndexPtr()));
  EXPECT_LT(largestDifference(ours.coeffs(), theirs.coeffs()), 1e-12);
  EXPECT_GT(largestDifference(ours.coeffs(), theirs.coeffs()), 0.0) << "not by blocks";
  EXPECT_LT(largestDifference(handle.factorFF->vectorD(), eigen.vectorD()), 1e-12);

  const Eigen::VectorXd rhs = Eigen::VectorXd::LinSpaced(K.cols(), -1.0, 1.0);
  const double theirResidual = (K * eigen.solve(rhs) - rhs).norm();
  EXPECT_LT((K * handle.factorFF->solve(rhs) - rhs).norm(), 2 * theirResidual);
  quorfree(pointer);
}

}  // namespace
