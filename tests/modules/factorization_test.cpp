// The factorization by blocks against Eigen's own.

#include "operator/factor/factorization.h"
#include "operator/factor/elimination_tree.h"
#include "operator/factor/multifrontal.h"
#include "operator/stiffness_assembly.h"
#include "support/matrices.h"
#include "support/mesh.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace test;
using quor::Factorization;
using quor::VectorWidth;

namespace {

/// Eigen's factorization, with its steps and its insides in reach.
class EigenFactor
    : public Eigen::SimplicialLDLT<SparseMatrix, Eigen::Lower, Eigen::AMDOrdering<int>> {
 public:
  explicit EigenFactor(const SparseMatrix& matrix, bool ordered = true) {
    if (ordered) {
      ConstCholMatrixPtr result = nullptr;
      ordering(matrix, result, upper);
    } else {
      upper = matrix.triangularView<Eigen::Upper>();
      m_P.setIdentity(matrix.cols());
      m_Pinv.setIdentity(matrix.cols());
    }
    analyzePattern_preordered(upper, true);
    analysis = {m_parent, m_nonZerosPerCol};
    factorize_preordered<true>(upper);
  }
  const SparseMatrix& L() const { return m_matrix; }
  quor::PermutedTriangles permuted(const SparseMatrix& matrix) const {
    return {matrix, m_P, m_Pinv};
  }
  SparseMatrix upper;
  struct {
    Eigen::VectorXi parent, columnCounts;
  } analysis;
};

struct NamedMatrix {
  std::string name;
  SparseMatrix matrix;
  bool ordered;  ///< by minimum degree; otherwise eliminated in the order it comes in
};

std::vector<NamedMatrix> positiveMatrices() {
  std::mt19937 random(1);
  std::vector<NamedMatrix> matrices;
  for (int round = 0; round < 60; ++round) {
    const int n = 1 + round * round / 8;
    const double degree = 0.2 * (round % 20);  // from single vertices to one dense lump
    std::vector<std::pair<int, int>> edges;
    for (int k = 0; k < degree * n; ++k) {
      const int i = int(random() % unsigned(n));
      const int j = int(random() % unsigned(n));
      if (i != j) {
        edges.emplace_back(i, j);
      }
    }
    matrices.push_back(
        {"random " + std::to_string(round), matrixOf(n, edges, random), round % 2 == 0});
  }
  std::vector<std::pair<int, int>> chain;
  std::vector<std::pair<int, int>> star;
  std::vector<std::pair<int, int>> complete;
  for (int i = 1; i < 300; ++i) {
    chain.emplace_back(i - 1, i);
    star.emplace_back(0, i);
    for (int j = 0; j < i && i < 100; ++j) {
      complete.emplace_back(i, j);
    }
  }
  matrices.push_back({"chain", matrixOf(300, chain, random), true});
  matrices.push_back({"star", matrixOf(300, star, random), true});
  matrices.push_back({"complete", matrixOf(100, complete, random), true});
  matrices.push_back({"plane", gridMatrix(40, 1, random), true});
  matrices.push_back({"volume", gridMatrix(9, 9, random), false});
  return matrices;
}

/// Free-free block of a mesh whose first vertices are prescribed.
SparseMatrix stiffnessOf(const Mesh& mesh, int prescribed) {
  return *quor::assembleStiffness(mesh.n(), prescribed, mesh.vertices, mesh.triangles).FF;
}

void expectSamePattern(const SparseMatrix& a, const SparseMatrix& b) {
  ASSERT_EQ(a.nonZeros(), b.nonZeros());
  EXPECT_TRUE(std::equal(a.outerIndexPtr(), a.outerIndexPtr() + a.cols(), b.outerIndexPtr()));
  EXPECT_TRUE(std::equal(a.innerIndexPtr(), a.innerIndexPtr() + a.nonZeros(), b.innerIndexPtr()));
}

/// The largest relative difference of two entries.
double difference(const Eigen::ArrayXd& a, const Eigen::ArrayXd& b) {
  return a.size() == 0 ? 0.0 : ((a - b).abs() / (b.abs() + 1e-300)).maxCoeff();
}

bool sameBits(const double* a, const double* b, Eigen::Index count) {
  return test::sameBits({a, a + count}, {b, b + count});
}

void expectSameBits(const Factorization& ours, const EigenFactor& eigen) {
  ASSERT_EQ(ours.info(), eigen.info());
  if (eigen.info() == Eigen::Success) {
    const SparseMatrix& L = ours.matrixL().nestedExpression();
    expectSamePattern(L, eigen.L());
    EXPECT_TRUE(sameBits(L.valuePtr(), eigen.L().valuePtr(), L.nonZeros()));
    EXPECT_TRUE(sameBits(ours.vectorD().data(), eigen.vectorD().data(), L.cols()));
  }
}

TEST(PermutedTriangles, AreEigensInEigensOrder) {
  for (const auto& [name, matrix, ordered] : positiveMatrices()) {
    SCOPED_TRACE(name);
    const EigenFactor eigen(matrix, ordered);
    const auto& [upper, lower] = eigen.permuted(matrix);
    expectSamePattern(upper, eigen.upper);
    EXPECT_TRUE(sameBits(upper.valuePtr(), eigen.upper.valuePtr(), upper.nonZeros()));
    const SparseMatrix mirrored = lower.transpose();
    const SparseMatrix sorted = SparseMatrix(upper.transpose()).transpose();
    const SparseMatrix strict = sorted.triangularView<Eigen::StrictlyUpper>();
    expectSamePattern(mirrored, strict);
    EXPECT_TRUE(sameBits(mirrored.valuePtr(), strict.valuePtr(), strict.nonZeros()));
  }
}

TEST(EliminationTree, AndColumnCountsAreEigens) {
  for (const auto& [name, matrix, ordered] : positiveMatrices()) {
    SCOPED_TRACE(name);
    const EigenFactor eigen(matrix, ordered);
    const auto& [upper, lower] = eigen.permuted(matrix);
    const Eigen::VectorXi parent = quor::eliminationTree(upper);
    EXPECT_EQ(parent, eigen.analysis.parent);
    EXPECT_EQ(quor::columnCounts(lower, parent), eigen.analysis.columnCounts);
  }
}

TEST(Multifrontal, FillsEigensPatternWithEigensValues) {
  for (const auto& [name, matrix, ordered] : positiveMatrices()) {
    SCOPED_TRACE(name);
    const EigenFactor eigen(matrix, ordered);
    const auto& [parent, counts] = eigen.analysis;
    quor::PermutedTriangles permuted = eigen.permuted(matrix);
    const quor::Supernodes supernodes(permuted.upper, parent, counts);
    const quor::FrontTree tree = quor::groupIntoFronts(supernodes);
    SparseMatrix L[2] = {eigen.L(), eigen.L()};
    Eigen::VectorXd D[2] = {eigen.vectorD(), eigen.vectorD()};
    for (const VectorWidth width : {VectorWidth::two, quor::widestVectors()}) {
      const std::size_t k = width == VectorWidth::two ? 0 : 1;
      permuted = eigen.permuted(matrix);  // its upper triangle is released
      std::fill_n(L[k].innerIndexPtr(), L[k].nonZeros(), -1);
      L[k].coeffs().setConstant(kNaN);
      D[k].setConstant(kNaN);
      ASSERT_TRUE(quor::factorizeFronts(
          permuted, supernodes, tree, width,
          {L[k].outerIndexPtr(), L[k].innerIndexPtr(), L[k].valuePtr(), D[k].data()}));
      expectSamePattern(L[k], eigen.L());
      EXPECT_LT(difference(L[k].coeffs(), eigen.L().coeffs()), 1e-12);
      EXPECT_LT(difference(D[k], eigen.vectorD()), 1e-12);
    }
    if (quor::widestVectors() != VectorWidth::two) {
      EXPECT_TRUE((L[0].coeffs() == L[1].coeffs()).all()) << "the vectors' width shows";
      EXPECT_EQ(D[0], D[1]);
    }
  }
}

TEST(Factorization, OfAMeshAgreesWithEigens) {
  const int side = 130;
  // Equilateral triangles, lifted: no entry is the small difference of large ones.
  const Mesh mesh = gridMesh(side, side, [](double u, double v) {
    return std::array<double, 3>{u - 0.5 * v, std::sqrt(0.75) * v, 0.1 * std::sin(4 * u)};
  });
  const SparseMatrix matrix = stiffnessOf(mesh, side);
  const Factorization ours(matrix);
  const EigenFactor eigen(matrix);
  ASSERT_EQ(ours.info(), Eigen::Success);
  const SparseMatrix& L = ours.matrixL().nestedExpression();
  expectSamePattern(L, eigen.L());
  EXPECT_LT(difference(L.coeffs(), eigen.L().coeffs()), 1e-12);
  EXPECT_GT(difference(L.coeffs(), eigen.L().coeffs()), 0.0) << "not by blocks";
  EXPECT_LT(difference(ours.vectorD(), eigen.vectorD()), 1e-12);
  EXPECT_EQ(ours.permutationP().indices(), eigen.permutationP().indices());
  const Eigen::VectorXd rhs = Eigen::VectorXd::LinSpaced(matrix.cols(), -1.0, 2.0);
  const double eigenResidual = (matrix * eigen.solve(rhs) - rhs).norm();
  EXPECT_LT((matrix * ours.solve(rhs) - rhs).norm(), 2 * eigenResidual);
}

// A diagonal entry and what slivers take away from it are large and nearly the same.
TEST(Factorization, OfSliversIsAsAccurateAsEigens) {
  const int side = 130;
  std::mt19937 random(0);
  const auto little = [&] { return 0.01 * std::ldexp(double(random()), -32); };
  const Mesh mesh = gridMesh(side, side, [&](double u, double v) {
    const bool isNextToItsNeighbour = random() % 5 == 0;
    const double x = std::round(u * (side - 1)) - (isNextToItsNeighbour ? 1 - little() : 0);
    return std::array<double, 3>{x, std::round(v * (side - 1)) + little(), 0.0};
  });
  const SparseMatrix matrix = stiffnessOf(mesh, side);
  const Factorization ours(matrix);
  const EigenFactor eigen(matrix);
  for (int round = 0; round < 3; ++round) {
    Eigen::VectorXd rhs = Eigen::VectorXd::Zero(matrix.cols());
    for (double& value : rhs.head(side)) {
      value = std::ldexp(double(random()), -32);
    }
    const double eigenResidual = (matrix * eigen.solve(rhs) - rhs).norm();
    EXPECT_LT((matrix * ours.solve(rhs) - rhs).norm(), 2 * eigenResidual);
  }
}

/// Spoils one diagonal entry of the matrix.
SparseMatrix withDiagonal(const SparseMatrix& original, int vertex, double value) {
  SparseMatrix matrix = original;
  matrix.coeffRef(vertex, vertex) = value;
  return matrix;
}

SparseMatrix scaledBesideDiagonal(const SparseMatrix& original, double factor) {
  SparseMatrix matrix = original * factor;
  matrix.diagonal() = original.diagonal();
  return matrix;
}

/// A matrix beside one that meets a pivot of exactly zero.
SparseMatrix withSingularIsland(const SparseMatrix& matrix) {
  std::vector<Eigen::Triplet<double>> triplets;
  for (int j = 0; j < matrix.cols(); ++j) {
    for (SparseMatrix::InnerIterator entry(matrix, j); entry; ++entry) {
      triplets.emplace_back(int(entry.row()), j, entry.value());
    }
  }
  const auto a = int(matrix.cols());
  for (const auto& [r, c, value] : {std::tuple{a, a, 1.0}, std::tuple{a, a + 1, -1.0},
                                    std::tuple{a + 1, a, -1.0}, std::tuple{a + 1, a + 1, 1.0}}) {
    triplets.emplace_back(r, c, value);
  }
  SparseMatrix result(a + 2, a + 2);
  result.setFromTriplets(triplets.begin(), triplets.end());
  return result;
}

TEST(Factorization, LeavesTheRestToEigen) {
  std::mt19937 random(2);
  const SparseMatrix large = gridMatrix(90, 1, random);
  std::vector<std::pair<int, int>> complete;
  for (int i = 0; i < 300; ++i) {
    for (int j = 0; j < i; ++j) {
      complete.emplace_back(i, j);
    }
  }
  const std::vector<std::pair<const char*, SparseMatrix>> cases = {
      {"nothing", SparseMatrix(0, 0)},
      {"one number", matrixOf(1, {}, random)},
      {"small", gridMatrix(50, 1, random)},
      {"more working memory than L", matrixOf(300, complete, random)},
      {"a NaN", withDiagonal(large, 4000, kNaN)},
      {"an infinity", withDiagonal(large, 1, kInfinity)},
      {"a pivot that overflows", scaledBesideDiagonal(large, 1e160)},
      {"a pivot of zero", withSingularIsland(large)},
      {"a row of zeros", SparseMatrix(large * 0.0)},
  };
  for (const auto& [name, matrix] : cases) {
    SCOPED_TRACE(name);
    expectSameBits(Factorization(matrix), EigenFactor(matrix));
  }
  // So that the cases above would be noticed:
  const Factorization ours(large);
  EXPECT_FALSE(
      (ours.matrixL().nestedExpression().coeffs() == EigenFactor(large).L().coeffs()).all());
}

}  // namespace
