// The operator module against dense linear algebra.

#include "api/solver_handle.h"
#include "operator/construct_tagged.h"
#include "operator/stiffness_assembly.h"
#include "operator/vertex_partition.h"
#include "solve/residual.h"
#include "support/cotangent_stiffness.h"
#include "support/handle.h"

#include <algorithm>

using namespace test;
using quor::SolverHandle;

namespace {

std::unique_ptr<SolverHandle> construct(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  return quor::constructTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                               tags.data())
      .handle;
}

TEST(Partition, PrescribedFirstFreeReversed) {
  const std::vector<std::int32_t> tags{0, 2, 7, 1, 0};
  const quor::VertexPartition partition = quor::partitionVertices(5, tags.data());
  EXPECT_EQ(partition.prescribedCount, 2U);
  EXPECT_EQ(partition.callerToSolver, (std::vector<std::int32_t>{4, 0, 3, 1, 2}));
  EXPECT_EQ(partition.solverToCaller, (std::vector<std::int32_t>{1, 3, 4, 2, 0}));
}

TEST(Assembly, RightIsoscelesTriangleIsExact) {
  const quor::SparseMatrix K =
      *quor::assembleStiffness(3, 0, {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}).FF;
  Eigen::Matrix3d expected;
  expected << 1, -0.5, -0.5, -0.5, 0.5, 0, -0.5, 0, 0.5;
  EXPECT_EQ(Eigen::Matrix3d(K), expected);
  EXPECT_EQ(K.nonZeros(), 9);  // the zeros are stored
}

TEST(Handle, HoldsTheBlocksOfTheDenseMatrix) {
  for (const unsigned seed : {1U, 2U, 3U}) {
    const Mesh mesh = bumpyMesh(9, 7, seed);
    std::mt19937 random(seed);
    std::vector<std::int32_t> tags(std::size_t(mesh.n()));
    for (std::int32_t& tag : tags) {
      tag = std::uniform_int_distribution<std::int32_t>(-1, 5)(random);
    }
    const auto handle = construct(mesh, tags);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->tags, tags);
    const auto n = Eigen::Index(handle->vertexCount);
    const auto nP = Eigen::Index(handle->prescribedCount);
    const Eigen::MatrixXd caller = denseStiffness(mesh);
    Eigen::MatrixXd K(n, n);
    for (Eigen::Index r = 0; r < n; ++r) {
      for (Eigen::Index c = 0; c < n; ++c) {
        K(r, c) =
            caller(handle->solverToCaller[std::size_t(r)], handle->solverToCaller[std::size_t(c)]);
      }
    }
    const Eigen::MatrixXd FF(*handle->stiffnessFF);
    const Eigen::MatrixXd FP(*handle->stiffnessFP);
    const double scale = K.cwiseAbs().maxCoeff();
    EXPECT_LT((FF - K.bottomRightCorner(n - nP, n - nP)).cwiseAbs().maxCoeff(), 1e-13 * scale);
    EXPECT_LT((FP - K.bottomLeftCorner(n - nP, nP)).cwiseAbs().maxCoeff(), 1e-13 * scale);
    EXPECT_EQ(FF, FF.transpose());

    // The factor solves the system that the dense matrix poses.
    const Eigen::VectorXd rhs = Eigen::VectorXd::LinSpaced(n - nP, -1, 2);
    const Eigen::VectorXd x = handle->factorFF->solve(rhs);
    EXPECT_LT((FF.ldlt().solve(rhs) - x).norm(), 1e-11 * x.norm());
  }
}

TEST(Handle, MapsAreInverse) {
  const Mesh mesh = bumpyMesh(8, 8, 7);
  const auto handle = construct(mesh, tagEnds(8, 8));
  for (std::size_t i = 0; i < handle->callerToSolver.size(); ++i) {
    EXPECT_EQ(handle->solverToCaller[std::size_t(handle->callerToSolver[i])], std::int32_t(i));
  }
}

TEST(Residual, IsTheRoundOffOfASolve) {
  const Mesh mesh = bumpyMesh(20, 15, 8);
  const std::vector<std::int32_t> tags = tagEnds(20, 15);
  const auto handle = construct(mesh, tags);
  const std::size_t n = tags.size();
  std::vector<double> prescribed(n);
  std::vector<double> source(n);
  for (std::size_t i = 0; i < n; ++i) {
    prescribed[i] = std::sin(double(i));
    source[i] = std::cos(double(i));
  }
  std::vector<double> field(n);
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), prescribed.data(), source.data(), field.data(), &status);
  std::vector<double> solverField(n);
  std::vector<double> freeRhs;
  for (std::size_t k = 0; k < n; ++k) {
    const auto i = std::size_t(handle->solverToCaller[k]);
    solverField[k] = field[i];
    if (k >= handle->prescribedCount) {
      freeRhs.push_back(-source[i]);
    }
  }
  double residual = -1;
  quor::quorresidual(handle.get(), freeRhs.data(), solverField.data(), &residual);
  EXPECT_GT(residual, 0.0);
  EXPECT_LT(residual, 1e-24);
  solverField.back() += 1;
  quor::quorresidual(handle.get(), freeRhs.data(), solverField.data(), &residual);
  EXPECT_GT(residual, 1.0);

  quor::quorresidual(nullptr, nullptr, nullptr, &residual);
  EXPECT_EQ(residual, 1001.0);
  const auto allPrescribed = construct(mesh, std::vector<std::int32_t>(n, 1));
  quor::quorresidual(allPrescribed.get(), nullptr, solverField.data(), &residual);
  EXPECT_EQ(residual, 0.0);
}

TEST(Solve, EmptyHandleIsRefused) {
  const SolverHandle handle;
  StatusCode status = 99;
  quorsolveTagged(&handle, nullptr, nullptr, &status);
  EXPECT_EQ(status, 2U);
  status = 99;
  quorsolvePTagged(&handle, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 2U);
}

}  // namespace
