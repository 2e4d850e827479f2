// Matrices of graphs, for what works on a matrix and knows no mesh.
#pragma once

#include "operator/factor/sparse_matrix.h"

#include <random>
#include <utility>
#include <vector>

namespace test {

using quor::SparseMatrix;

/// A symmetric positive definite matrix with the pattern of a graph, both triangles stored.
inline SparseMatrix matrixOf(int n, const std::vector<std::pair<int, int>>& edges,
                             std::mt19937& random) {
  std::uniform_real_distribution<double> weight(0.1, 1.0);
  std::vector<Eigen::Triplet<double>> triplets;
  for (int i = 0; i < n; ++i) {
    triplets.emplace_back(i, i, weight(random));
  }
  for (const auto& [i, j] : edges) {
    const double w = weight(random);
    for (const auto& [r, c] : {std::pair{i, j}, std::pair{j, i}}) {
      triplets.emplace_back(r, c, -w);
      triplets.emplace_back(r, r, w);
    }
  }
  SparseMatrix matrix(n, n);
  matrix.setFromTriplets(triplets.begin(), triplets.end());
  return matrix;
}

inline SparseMatrix gridMatrix(int side, int layers, std::mt19937& random) {
  std::vector<std::pair<int, int>> edges;
  const auto at = [&](int i, int j, int k) { return i + side * (j + side * k); };
  for (int k = 0; k < layers; ++k) {
    for (int j = 0; j < side; ++j) {
      for (int i = 0; i < side; ++i) {
        if (i > 0) {
          edges.emplace_back(at(i - 1, j, k), at(i, j, k));
        }
        if (j > 0) {
          edges.emplace_back(at(i, j - 1, k), at(i, j, k));
        }
        if (k > 0) {
          edges.emplace_back(at(i, j, k - 1), at(i, j, k));
        }
      }
    }
  }
  return matrixOf(side * side * layers, edges, random);
}

}  // namespace test
