// The order of elimination against Eigen's.

#include "operator/factor/minimum_degree.h"
#include "operator/factor/quotient_graph.h"
#include "support/matrices.h"

#include <gtest/gtest.h>
#include <Eigen/OrderingMethods>

#include <stdexcept>
#include <string>

using namespace test;

namespace {

/// A symmetric pattern for an ordering to fall for.
/// @param kind  0: at random, 1: a band, 2: a chain with shortcuts, 3: with hubs, 4: a wide band
SparseMatrix patternOf(unsigned kind, int n, double degree, bool fullDiagonal,
                       std::mt19937& random) {
  std::vector<Eigen::Triplet<double>> triplets;
  const auto below = [&](int limit) { return int(random() % unsigned(limit)); };
  for (int i = 0; i < n; ++i) {
    if (fullDiagonal || below(8) != 0) {
      triplets.emplace_back(i, i, 1.0);
    }
  }
  for (int k = 0; k < degree * n / 2; ++k) {
    const int i = below(n);
    const int anywhere = below(n);
    const int others[] = {anywhere, i + 1 + below(5), below(3) != 0 ? i + 1 : anywhere,
                          below(20) == 0 ? below(3) : anywhere, i + 1 + 17 * below(2)};
    const int j = others[kind];
    if (i != j && j < n) {
      triplets.emplace_back(i, j, 1.0);
      triplets.emplace_back(j, i, 1.0);
    }
  }
  SparseMatrix pattern(n, n);
  pattern.setFromTriplets(triplets.begin(), triplets.end());
  return pattern;
}

quor::Permutation eigensOrder(SparseMatrix pattern) {
  quor::Permutation order;
  Eigen::internal::minimum_degree_ordering(pattern, order);
  return order;
}

/// The order when marks are reset at nearly every pivot, as happens on meshes of millions only.
quor::Permutation orderWithFewMarks(const SparseMatrix& pattern) {
  const auto n = int(pattern.cols());
  quor::QuotientGraph graph(pattern, 2 * n + 2);
  graph.eliminateAll();
  quor::Permutation order(n);
  graph.postorder(order.indices().data());
  return order;
}

TEST(MinimumDegree, GivesEigensOrder) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    const int n = int(random() % (round < 2000 ? 40U : round < 2990 ? 300U : 3000U));
    const unsigned kind = random() % 5;
    const double degree = double(random() % 200) / 20;
    const SparseMatrix pattern = patternOf(kind, n, degree, random() % 4 != 0, random);
    SCOPED_TRACE("n " + std::to_string(n) + ", kind " + std::to_string(kind));
    const Eigen::VectorXi expected = eigensOrder(pattern).indices();
    quor::Permutation inverse;
    const quor::Permutation order = quor::orderByMinimumDegree(pattern, inverse);
    ASSERT_EQ(inverse.indices(), expected);
    ASSERT_EQ(order.inverse().eval().indices(), expected);
    ASSERT_EQ(orderWithFewMarks(pattern).indices(), expected);
  }
}

TEST(MinimumDegree, RefusesWhatEigensIndicesCannotCount) {
  // Only the number of entries is looked at: there are none behind it.
  SparseMatrix matrix(2, 2);
  matrix.outerIndexPtr()[2] = 1789569704;  // and a fifth more, and two per row: 2^31
  quor::Permutation inverse;
  ASSERT_EQ(quor::QuotientGraph::room(matrix), std::int64_t{1} << 31);
  EXPECT_THROW(quor::orderByMinimumDegree(matrix, inverse), std::length_error);
  matrix.outerIndexPtr()[2] = 0;
}

}  // namespace
