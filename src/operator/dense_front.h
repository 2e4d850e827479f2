// Partial L D L^T factorization of a dense symmetric matrix, in place and by blocks.
//
// Sources: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. (2013), sections 4.1 and 4.2;
// for the tiles K. Goto, R. van de Geijn, Anatomy of high-performance matrix multiplication, ACM
// Trans. Math. Softw. 34 (2008).
#pragma once

#include "operator/work_array.h"

#include <array>
#include <cstddef>

namespace quor {

/// How many numbers one instruction computes with. Results do not depend on it, to the bit: every
/// entry goes through the same sequence of rounded products and differences.
enum class VectorWidth { two, four };

/// The widest that this machine has.
VectorWidth widestVectors();

/// Room for one dense symmetric matrix at a time, stored by columns.
///
/// Rows and columns are worked on in blocks of eight, counted from 0. The matrix is its lower
/// triangle; the rest of a block that holds a part of it is there to be overwritten with anything
/// finite, up to the end of the last block. The elimination goes in panels of 32 columns, and keeps
/// two packed copies of the panel's rows: those of L and, unscaled, those of L D. In both, block b
/// holds rows 8b .. 8b+7, eight numbers per column of the panel.
class DenseFront {
 public:
  /// @param largest  the largest number of rows that it will have
  DenseFront(int largest, VectorWidth width);

  /// How many doubles it allocates for this largest number of rows.
  static std::size_t room(int largest);

  /// Starts a matrix of zeros with this many rows.
  void reset(int size);

  /// Column j, whose entries j .. size-1 are of the matrix.
  double* column(int j) { return entries_.data() + static_cast<std::ptrdiff_t>(j) * stride_; }

  /// Eliminates the first columns. They become those of L, with D on the diagonal in place of the
  /// ones; the others become the Schur complement.
  /// @param pivots  how many, at most size
  /// @return false, and the matrix is spoilt, if a pivot is zero or not finite
  bool eliminate(int pivots);

 private:
  static constexpr int kBlock = 8;
  static constexpr int kPanel = 32;
  struct Vectors2;
  struct Vectors4;

  template <typename Vectors>
  bool eliminateWith(int pivots);
  bool eliminateWithFour(int pivots);
  bool factorizeDiagonal(int begin, int end);
  template <typename Vectors>
  void solveRows(int begin, int end);
  template <typename Vectors>
  void updateRest(int begin, int end);
  template <typename Vectors>
  static void updateTile(double* tile, std::ptrdiff_t stride, const double* left,
                         const double* right, int depth);

  int blocks() const { return (size_ + kBlock - 1) / kBlock; }

  VectorWidth width_;
  int size_ = 0;
  std::ptrdiff_t stride_ = 0;
  WorkArray entries_;
  WorkArray scaled_;                                           ///< rows of L
  WorkArray unscaled_;                                         ///< rows of L D
  std::array<std::array<double, kPanel>, kPanel> diagonal_{};  ///< rows of the panel's own L
};

}  // namespace quor
