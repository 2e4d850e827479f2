// The substitutions with columns in groups, against Eigen's with single columns.

#include "solve/substitution.h"
#include "operator/factor/column_groups.h"
#include "operator/stiffness_assembly.h"
#include "support/mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

using namespace test;
using quor::Factorization;

namespace {

/// Of the free vertices of a wavy grid, or of two with nothing in common, so that there are two
/// roots.
quor::SparseMatrix stiffness(int pieces) {
  const int side = 80;
  Mesh mesh = gridMesh(side, side, [](double u, double v) {
    return std::array<double, 3>{u + 0.1 * v * v, v, 0.2 * std::sin(5 * u * v)};
  });
  const std::vector<std::int32_t> triangles = mesh.triangles;
  const std::int32_t n = mesh.n();
  if (pieces == 2) {
    const std::vector<double> vertices = mesh.vertices;
    mesh.vertices.insert(mesh.vertices.end(), vertices.begin(), vertices.end());
    for (const std::int32_t corner : triangles) {
      mesh.triangles.push_back(corner + n);
    }
  }
  return *quor::assembleStiffness(mesh.n(), side, mesh.vertices, mesh.triangles).FF;
}

Eigen::VectorXd eigensSolution(const Factorization& factor, Eigen::VectorXd x) {
  factor.matrixL().solveInPlace(x);
  x.array() *= factor.diagonal().array().inverse();
  factor.matrixU().solveInPlace(x);
  return x;
}

TEST(Substitution, SolvesLikeEigensForAnyRightHandSide) {
  for (const int pieces : {1, 2}) {
    quor::SparseMatrix matrix = stiffness(pieces);
    if (pieces == 2) {  // the second piece has nothing prescribed
      matrix.coeffRef(matrix.cols() - 1, matrix.cols() - 1) += 1.0;
    }
    const Factorization factor(matrix);
    ASSERT_TRUE(factor.isBlocked());
    const Eigen::Index n = matrix.cols();
    const double scale = 1.0 / double(n);
    const Eigen::VectorXd full = Eigen::VectorXd::LinSpaced(n, -scale, 2 * scale);
    for (const Eigen::VectorXd& rhs :
         {full, Eigen::VectorXd(Eigen::VectorXd::Unit(n, 0)),
          Eigen::VectorXd(Eigen::VectorXd::Unit(n, n - 1)),
          Eigen::VectorXd(Eigen::VectorXd::Unit(n, n / 3) - Eigen::VectorXd::Unit(n, n / 2)),
          Eigen::VectorXd(Eigen::VectorXd::Zero(n))}) {
      const Eigen::VectorXd expected = eigensSolution(factor, rhs);
      Eigen::VectorXd x = rhs;
      quor::substitute(factor, x.data());
      EXPECT_LE((x - expected).norm(), 1e-12 * expected.norm());
    }
  }
}

TEST(Substitution, NaNReachesTheEntriesThatItReachesInEigens) {
  const Factorization factor(stiffness(2));
  ASSERT_TRUE(factor.isBlocked());
  const Eigen::Index n = factor.diagonal().size();
  for (const Eigen::Index place : {Eigen::Index{0}, n / 2, n - 1}) {
    Eigen::VectorXd x = Eigen::VectorXd::Zero(n);
    x[place] = kNaN;
    const Eigen::VectorXd expected = eigensSolution(factor, x);
    quor::substitute(factor, x.data());
    EXPECT_TRUE((x.array().isNaN() == expected.array().isNaN()).all());
    EXPECT_FALSE(x.hasNaN() && x.array().isNaN().all());
  }
}

TEST(ColumnGroups, AreNestedAndAsLongAsTheyMayBe) {
  const Factorization factor(stiffness(1));
  const quor::SparseMatrix& L = factor.matrixL().nestedExpression();
  const auto isNested = [&](int j) {  // column j is j+1 and that column's rows
    const int* const rows = L.innerIndexPtr() + L.outerIndexPtr()[j];
    const int* const end = L.innerIndexPtr() + L.outerIndexPtr()[j + 1];
    return rows != end && *rows == j + 1 &&
           std::equal(rows + 1, end, end, L.innerIndexPtr() + L.outerIndexPtr()[j + 2]);
  };
  std::set<int> sizes;
  int first = 0;
  for (const int size : factor.columnGroups()) {
    sizes.insert(size);
    for (int j = first; j < first + size - 1; ++j) {
      EXPECT_TRUE(isNested(j)) << j;
    }
    first += size;
    EXPECT_TRUE(size == quor::kMostGroupedColumns || first == L.cols() || !isNested(first - 1));
  }
  EXPECT_EQ(first, L.cols());
  EXPECT_EQ(sizes, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

}  // namespace
