#include "operator/factor/dense_front.h"

#include "util/exact_arithmetic.h"
#include "util/machine.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstring>

namespace quor {

namespace {

/// Distances between columns that are a multiple of 512 bytes would crowd a panel into few sets of
/// the cache.
std::ptrdiff_t strideFor(std::ptrdiff_t size) {
  const std::ptrdiff_t stride = (size + 7) / 8 * 8;
  return stride % 64 == 0 ? stride + 8 : stride;
}

}  // namespace

DenseFront::DenseFront(Index largest, VectorWidth width)
    : width_(width),
      entries_(strideFor(largest) * strideFor(largest)),
      scaled_(strideFor(largest) * kPanel),
      unscaled_(strideFor(largest) * kPanel) {}

DenseFront::Index DenseFront::room(Index largest) {
  return strideFor(largest) * (strideFor(largest) + 2 * kPanel);
}

void DenseFront::reset(Index size) {
  size_ = size;
  stride_ = strideFor(size);
  assert(size >= 0 && stride_ * stride_ <= entries_.size());
  const Index end = blocks() * kBlock;
  for (Index j = 0; j < end; ++j) {
    std::fill(column(j) + j / kBlock * kBlock, column(j) + end, 0.0);
  }
}

// Indices are signed throughout, hence .data()[j] where std::array asks for an unsigned one.

/// A tile of 8 rows and a few columns: minus the product of 8 packed rows and as many others.
template <typename Vectors, DenseFront::Index kColumns>
QUOR_ALWAYS_INLINE void DenseFront::updateTile(double* tile, Index stride, const double* left,
                                               const double* right, Index depth) {
  using Vector = typename Vectors::Type;
  constexpr Index lanes = sizeof(Vector) / sizeof(double);
  constexpr Index parts = lanes == kBlock ? 1 : 2;           // of a column at once: registers
  for (Index row = 0; row < kBlock; row += parts * lanes) {  // have to hold all of them
    std::array<Vector, kColumns * parts> sums;
    QUOR_UNROLL
    for (Index k = 0; k < kColumns * parts; ++k) {
      load(sums.data()[k], tile + k / parts * stride + row + k % parts * lanes);
    }
    for (Index t = 0; t < depth; ++t) {
      std::array<Vector, parts> rows;
      QUOR_UNROLL
      for (Index part = 0; part < parts; ++part) {
        load(rows.data()[part], left + t * kBlock + row + part * lanes);
      }
      QUOR_UNROLL
      for (Index k = 0; k < kColumns * parts; ++k) {
        sums.data()[k] -= rows.data()[k % parts] * right[t * kBlock + k / parts];
      }
    }
    QUOR_UNROLL
    for (Index k = 0; k < kColumns * parts; ++k) {
      store(tile + k / parts * stride + row + k % parts * lanes, sums.data()[k]);
    }
  }
}

/// Eliminates the columns first .. last-1, four at most, in the block of rows that begins with
/// `rowBlock`: subtracts what the panel's columns from `from` on take from them, earlier ones
/// having been subtracted, and divides by the pivots. The block with the pivots comes before all
/// others.
/// @return false if a pivot is zero or not finite
template <typename Vectors>
QUOR_ALWAYS_INLINE bool DenseFront::solveTile(Index rowBlock, Index from, Index first, Index last) {
  using Vector = typename Vectors::Type;
  constexpr Index lanes = sizeof(Vector) / sizeof(double);
  constexpr Index parts = kBlock / lanes;
  const Index pivotBlock = blockOf(first);  // the first row of the block that holds the pivots
  for (Index t = first; t < last; ++t) {
    double* const target = column(t) + rowBlock;
    std::array<Vector, parts> sum;
    for (Index part = 0; part < parts; ++part) {
      load(sum.data()[part], target + part * lanes);
    }
    for (Index s = from; s < t; ++s) {
      const double factor = packed(scaled_, pivotBlock, s)[t - pivotBlock];
      for (Index part = 0; part < parts; ++part) {
        Vector earlier;
        load(earlier, packed(unscaled_, rowBlock, s) + part * lanes);
        sum.data()[part] -= earlier * factor;
      }
    }
    double* const unscaled = packed(unscaled_, rowBlock, t);
    for (Index part = 0; part < parts; ++part) {
      store(unscaled + part * lanes, sum.data()[part]);
    }
    const double pivot = rowBlock == pivotBlock ? unscaled[t - rowBlock] : column(t)[t];
    if (pivot == 0.0 || !std::isfinite(pivot)) {
      return false;
    }
    double* const scaled = packed(scaled_, rowBlock, t);
    for (Index part = 0; part < parts; ++part) {
      sum.data()[part] /= pivot;
      store(scaled + part * lanes, sum.data()[part]);
      store(target + part * lanes, sum.data()[part]);
    }
    column(t)[t] = pivot;  // D takes the place of the one that the division left in the pivot's row
  }
  return true;
}

/// Eliminates the columns of a panel in all rows, four by four: most of it is tiles as well.
/// @return false if a pivot is zero or not finite
template <typename Vectors>
QUOR_ALWAYS_INLINE bool DenseFront::eliminatePanel(Index begin, Index end) {
  for (Index first = begin; first < end; first += 4) {
    const Index last = std::min(first + 4, end);
    const bool isWhole = last == first + 4;
    const Index pivotBlock = blockOf(first);
    for (Index rowBlock = pivotBlock; rowBlock < size_; rowBlock += kBlock) {
      if (isWhole) {
        updateTile<Vectors, 4>(
            column(first) + rowBlock, stride_, packed(unscaled_, rowBlock, begin),
            packed(scaled_, pivotBlock, begin) + (first - pivotBlock), first - begin);
      }
      if (!solveTile<Vectors>(rowBlock, isWhole ? first : begin, first, last)) {
        return false;
      }
    }
  }
  return true;
}

/// Subtracts what the panel takes from all columns behind it. Invariant: every tile on or below the
/// diagonal is updated once. The rows are taken in bands of eight blocks, whose part of L stays in
/// the innermost cache; a band updates its own rows only, of each column from the diagonal down.
/// Where the panel ends inside a block, zeros in the copy of L D keep the block's finished columns
/// as they are.
template <typename Vectors>
QUOR_ALWAYS_INLINE void DenseFront::updateRest(Index begin, Index end) {
  constexpr Index band = 8 * kBlock;
  const Index rest = blockOf(end);
  for (Index t = begin; t < end && rest < size_; ++t) {
    std::fill_n(packed(unscaled_, rest, t), end - rest, 0.0);
  }
  for (Index bandBegin = rest; bandBegin < size_; bandBegin += band) {
    const Index bandEnd = std::min(bandBegin + band, size_);
    for (Index columnBlock = rest; columnBlock < bandEnd; columnBlock += kBlock) {
      constexpr Index columns = Vectors::kTileColumns;
      for (Index first = 0; first < kBlock; first += columns) {
        const double* const right = packed(unscaled_, columnBlock, begin) + first;
        for (Index rowBlock = std::max(bandBegin, columnBlock); rowBlock < bandEnd;
             rowBlock += kBlock) {
          updateTile<Vectors, columns>(column(columnBlock + first) + rowBlock, stride_,
                                       packed(scaled_, rowBlock, begin), right, end - begin);
        }
      }
    }
  }
}

template <typename Vectors>
QUOR_ALWAYS_INLINE bool DenseFront::eliminateWith(Index pivots, const Progress& progress) {
  for (Index begin = 0; begin < pivots; begin += kPanel) {
    const Index end = std::min(begin + kPanel, pivots);
    if (!eliminatePanel<Vectors>(begin, end)) {
      return false;
    }
    updateRest<Vectors>(begin, end);
    progress.report(static_cast<double>(end) / static_cast<double>(pivots));
  }
  return true;
}

#if defined(QUOR_WIDE_VECTORS)
// Without fused multiply-add, which would round once where the others round twice.
__attribute__((target("avx2"))) bool DenseFront::eliminateWithFour(Index pivots,
                                                                   const Progress& progress) {
  return eliminateWith<Vectors4>(pivots, progress);
}
__attribute__((target("avx512f"))) bool DenseFront::eliminateWithEight(Index pivots,
                                                                       const Progress& progress) {
  return eliminateWith<Vectors8>(pivots, progress);
}
#else
bool DenseFront::eliminateWithFour(Index pivots, const Progress& progress) {
  return eliminateWith<Vectors2>(pivots, progress);
}
bool DenseFront::eliminateWithEight(Index pivots, const Progress& progress) {
  return eliminateWith<Vectors2>(pivots, progress);
}
#endif

bool DenseFront::eliminate(Index pivots, const Progress& progress) {
  assert(pivots >= 0 && pivots <= size_);
  switch (width_) {
    case VectorWidth::eight:
      return eliminateWithEight(pivots, progress);
    case VectorWidth::four:
      return eliminateWithFour(pivots, progress);
    default:
      return eliminateWith<Vectors2>(pivots, progress);
  }
}

}  // namespace quor
