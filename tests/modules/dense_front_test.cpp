// The dense kernel of the factorization by itself, against the factorization written down straight.

#include "operator/factor/dense_front.h"

#include "support/sanitizers.h"

#include <gtest/gtest.h>
#include <Eigen/Dense>

#include <limits>
#include <random>
#include <vector>

using quor::DenseFront;
using quor::VectorWidth;

namespace {

using Matrix = Eigen::MatrixXd;

/// Symmetric, with a diagonal that dominates, so that no entry grows.
Matrix randomMatrix(int size, std::mt19937& random) {
  std::uniform_real_distribution<double> entry(-1.0, 1.0);
  Matrix matrix(size, size);
  for (int j = 0; j < size; ++j) {
    for (int i = j; i < size; ++i) {
      matrix(i, j) = matrix(j, i) = i == j ? (j % 3 == 0 ? -1 : 1) * (size + 1.0) : entry(random);
    }
  }
  return matrix;
}

/// Eliminates one more column of the lower triangle.
void eliminateNaively(Matrix& lower, int column) {
  const Eigen::Index below = lower.rows() - column - 1;
  const Eigen::VectorXd l = lower.col(column).tail(below) / lower(column, column);
  for (Eigen::Index j = 0; j < below; ++j) {
    lower.col(column + 1 + j).tail(below - j) -= l.tail(below - j) * (lower(column, column) * l[j]);
  }
  lower.col(column).tail(below) = l;
}

void fill(DenseFront& front, const Matrix& matrix) {
  front.reset(matrix.rows());
  for (Eigen::Index j = 0; j < matrix.cols(); ++j) {
    for (Eigen::Index i = j; i < matrix.rows(); ++i) {
      front.column(j)[i] = matrix(i, j);
    }
  }
}

/// The lower triangle that the front holds, zeros above.
Matrix lowerOf(DenseFront& front, Eigen::Index size) {
  Matrix lower = Matrix::Zero(size, size);
  for (Eigen::Index j = 0; j < size; ++j) {
    lower.col(j).tail(size - j) = Eigen::Map<const Eigen::VectorXd>(front.column(j) + j, size - j);
  }
  return lower;
}

std::vector<VectorWidth> allWidths() {
  std::vector<VectorWidth> widths;
  for (const VectorWidth width : {VectorWidth::two, VectorWidth::four, VectorWidth::eight}) {
    if (width <= quor::widestVectors()) {
      widths.push_back(width);
    }
  }
  return widths;
}

TEST(DenseFront, EliminatesAnyPartOfAnySize) {
  constexpr int largest = 140;  // four panels and a rest, in bands of eight blocks and a rest
  std::mt19937 random(1);
  std::vector<DenseFront> fronts;
  for (const VectorWidth width : allWidths()) {
    fronts.emplace_back(largest, width);
  }
#if defined(__OPTIMIZE__) && !defined(QUOR_SANITIZED)
  const int step = 1;
#else
  const int step = 13;  // meets every size modulo 8
#endif
  for (int size = 1; size <= largest; size += step) {
    const Matrix matrix = randomMatrix(size, random);
    Matrix expected = matrix.triangularView<Eigen::Lower>();
    for (int pivots = 0; pivots <= size; ++pivots) {
      if (pivots > 0) {
        eliminateNaively(expected, pivots - 1);
      }
      Matrix first;
      for (DenseFront& front : fronts) {
        fill(front, matrix);
        ASSERT_TRUE(front.eliminate(pivots));
        const Matrix lower = lowerOf(front, size);
        ASSERT_LT((lower - expected).cwiseAbs().maxCoeff(), 1e-13 * (size + 1))
            << "size " << size << ", pivots " << pivots;
        ASSERT_TRUE(first.size() == 0 || first == lower)
            << "the vectors' width shows: size " << size << ", pivots " << pivots;
        first = lower;
      }
    }
  }
}

TEST(DenseFront, StopsAtAPivotThatIsZeroOrNotFinite) {
  constexpr int size = 50;
  std::mt19937 random(2);
  const Matrix matrix = randomMatrix(size, random);
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const VectorWidth width : allWidths()) {
    DenseFront front(size, width);
    for (const int at : {0, 3, 4, 31, 32, 37, 49}) {
      Matrix eliminated = matrix.triangularView<Eigen::Lower>();
      for (int column = 0; column < at; ++column) {
        eliminateNaively(eliminated, column);
      }
      for (const double spoilt : {infinity, -infinity, infinity - infinity}) {
        Matrix spoiltMatrix = matrix;
        spoiltMatrix(at, at) = spoilt;
        fill(front, spoiltMatrix);
        EXPECT_FALSE(front.eliminate(at + 1)) << at;
        fill(front, spoiltMatrix);
        EXPECT_TRUE(front.eliminate(at)) << at;  // it is no pivot
      }
      Matrix cleared = matrix;  // in row `at` all is zero
      cleared.row(at).setZero();
      fill(front, cleared);
      EXPECT_FALSE(front.eliminate(size)) << at;
    }
  }
}

}  // namespace
