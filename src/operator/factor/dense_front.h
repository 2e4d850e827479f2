// Partial L D L^T factorization of a dense symmetric matrix, in place and by blocks.
//
// Sources: G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed. (2013), sections 4.1 and 4.2;
// for the tiles K. Goto, R. van de Geijn, Anatomy of high-performance matrix multiplication, ACM
// Trans. Math. Softw. 34 (2008).
#pragma once

#include "operator/factor/work_array.h"
#include "util/progress.h"
#include "util/vectors.h"

#include <cstddef>

namespace quor {

/// Room for one dense symmetric matrix at a time, stored by columns.
///
/// The matrix is its lower triangle; what is above belongs to the algorithm, which works on rows
/// and columns in blocks of eight, counted from 0, and to the end of the last block. The
/// elimination goes in panels of 32 columns, and keeps two packed copies of the panel's rows: those
/// of L and, unscaled, those of L D. In both, rows 8b .. 8b+7 stand side by side, eight numbers per
/// column.
class DenseFront {
 public:
  using Index = std::ptrdiff_t;

  /// @param largest  the largest number of rows that it will have
  DenseFront(Index largest, VectorWidth width);

  /// How many doubles it allocates for this largest number of rows.
  static Index room(Index largest);

  /// Starts a matrix of zeros with this many rows.
  void reset(Index size);

  /// Column j, whose entries j .. size-1 are of the matrix.
  double* column(Index j) { return entries_.data() + j * stride_; }

  /// Eliminates the first columns. They become those of L, with D on the diagonal in place of the
  /// ones; the others become the Schur complement.
  /// @param pivots    how many, at most size
  /// @param progress  is reported to after every panel
  /// @return false, and the matrix is spoilt, if a pivot is zero or not finite
  bool eliminate(Index pivots, const Progress& progress = {});

 private:
  static constexpr Index kBlock = 8;
  static constexpr Index kPanel = 32;

  template <typename Vectors>
  bool eliminateWith(Index pivots, const Progress& progress);
  bool eliminateWithFour(Index pivots, const Progress& progress);
  bool eliminateWithEight(Index pivots, const Progress& progress);
  template <typename Vectors>
  bool eliminatePanel(Index begin, Index end);
  template <typename Vectors>
  bool solveTile(Index rowBlock, Index from, Index first, Index last);
  template <typename Vectors>
  void updateRest(Index begin, Index end);
  template <typename Vectors, Index kColumns>
  static void updateTile(double* tile, Index stride, const double* left, const double* right,
                         Index depth);

  Index blocks() const { return (size_ + kBlock - 1) / kBlock; }
  /// The first row of the block that a row is in.
  static Index blockOf(Index row) { return row / kBlock * kBlock; }

  /// Column j of the panel in the eight packed rows that begin with `row`.
  static double* packed(const WorkArray& rows, Index row, Index j) {
    return rows.data() + row * kPanel + j % kPanel * kBlock;
  }

  VectorWidth width_;
  Index size_ = 0;
  Index stride_ = 0;
  WorkArray entries_;
  WorkArray scaled_;    ///< rows of L
  WorkArray unscaled_;  ///< rows of L D
};

}  // namespace quor
