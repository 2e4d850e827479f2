#include "operator/dense_front.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__) && !defined(_WIN32)
// Windows aligns no stack to the 32 bytes of the wider vectors.
#define QUOR_WIDE_VECTORS 1
#include <cpuid.h>
#endif

#if defined(__GNUC__)
// A function is compiled for the instructions of the one that it is inlined into.
#define QUOR_INLINE inline __attribute__((always_inline))
#else
#define QUOR_INLINE __forceinline
#endif

namespace quor {

#if defined(__GNUC__)
struct DenseFront::Vectors2 {
  using Type = double __attribute__((vector_size(2 * sizeof(double))));
};
struct DenseFront::Vectors4 {
  using Type = double __attribute__((vector_size(4 * sizeof(double))));
};
#else
struct DenseFront::Vectors2 {
  using Type = double;
};
#endif

namespace {

template <typename Vector>
QUOR_INLINE void load(Vector& vector, const double* from) {
  std::memcpy(&vector, from, sizeof vector);
}

template <typename Vector>
QUOR_INLINE void store(double* to, const Vector& vector) {
  std::memcpy(to, &vector, sizeof vector);
}

/// Distances between columns that are a multiple of 512 bytes would crowd a panel into few sets of
/// the cache.
std::ptrdiff_t strideFor(std::ptrdiff_t size) {
  const std::ptrdiff_t stride = (size + 7) / 8 * 8;
  return stride % 64 == 0 ? stride + 8 : stride;
}

}  // namespace

VectorWidth widestVectors() {
#if defined(QUOR_WIDE_VECTORS)
  constexpr unsigned savesState = 1U << 27;  // leaf 1, ecx: the system may save wide registers
  constexpr unsigned wideState = 6;          // xcr0: and does
  constexpr unsigned hasAvx2 = 1U << 5;      // leaf 7, ebx
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) != 0 && (c & savesState) != 0) {
    unsigned low = 0;
    unsigned high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    if ((low & wideState) == wideState && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
        (b & hasAvx2) != 0) {
      return VectorWidth::four;
    }
  }
#endif
  return VectorWidth::two;
}

DenseFront::DenseFront(Index largest, VectorWidth width)
    : width_(width),
      entries_(strideFor(largest) * strideFor(largest)),
      scaled_(strideFor(largest) * kPanel),
      unscaled_(strideFor(largest) * kPanel),
      diagonal_(kPanel * kPanel) {}

DenseFront::Index DenseFront::room(Index largest) {
  return strideFor(largest) * (strideFor(largest) + 2 * kPanel) + kPanel * kPanel;
}

void DenseFront::reset(Index size) {
  size_ = size;
  stride_ = strideFor(size);
  const Index end = blocks() * kBlock;
  for (Index j = 0; j < end; ++j) {
    std::fill(column(j) + j / kBlock * kBlock, column(j) + end, 0.0);
  }
}

/// Columns and rows begin .. end-1, one column after the other. L D is kept above the diagonal.
bool DenseFront::factorizeDiagonal(Index begin, Index end) {
  for (Index j = begin; j < end; ++j) {
    double* const source = column(j);
    const double pivot = source[j];
    if (pivot == 0.0 || !std::isfinite(pivot)) {
      return false;
    }
    for (Index i = j + 1; i < end; ++i) {
      column(i)[j] = source[i];
      source[i] /= pivot;
      diagonalRow(i - begin)[j - begin] = source[i];
    }
    for (Index k = j + 1; k < end; ++k) {
      double* const target = column(k);
      const double factor = target[j];
      for (Index i = k; i < end; ++i) {
        target[i] -= source[i] * factor;
      }
    }
  }
  return true;
}

/// The rows below the diagonal block: first L D, by substitution, then L. Both go into their packed
/// copies, where rows of the diagonal block itself are zeros, and L into the columns.
template <typename Vectors>
QUOR_INLINE void DenseFront::solveRows(Index begin, Index end) {
  using Vector = typename Vectors::Type;
  constexpr Index lanes = sizeof(Vector) / sizeof(double);
  constexpr Index parts = kBlock / lanes;
  for (Index row = end / kBlock * kBlock; row < size_; row += kBlock) {
    double* const unscaled = unscaled_.data() + row * kPanel;
    double* const scaled = scaled_.data() + row * kPanel;
    const Index ownRows = std::max(end - row, Index{0});
    for (Index t = 0; t < end - begin; ++t) {
      double* const source = column(begin + t) + row;
      std::array<Vector, parts> sum;
      for (Index part = 0; part < parts; ++part) {
        load(sum.data()[part], source + part * lanes);
      }
      for (Index s = 0; s < t; ++s) {
        const double factor = diagonalRow(t)[s];
        for (Index part = 0; part < parts; ++part) {
          Vector earlier;
          load(earlier, unscaled + s * kBlock + part * lanes);
          sum.data()[part] -= earlier * factor;
        }
      }
      const double pivot = column(begin + t)[begin + t];
      double* const x = unscaled + t * kBlock;
      double* const l = scaled + t * kBlock;
      for (Index part = 0; part < parts; ++part) {
        store(x + part * lanes, sum.data()[part]);
        store(l + part * lanes, sum.data()[part] / pivot);
      }
      std::fill(x, x + ownRows, 0.0);
      std::fill(l, l + ownRows, 0.0);
      std::copy(l + ownRows, l + kBlock, source + ownRows);
    }
  }
}

/// A tile of 8 rows and 4 columns: minus the product of 8 rows of L and 4 of L D.
template <typename Vectors>
QUOR_INLINE void DenseFront::updateTile(double* tile, Index stride, const double* left,
                                        const double* right, Index depth) {
  using Vector = typename Vectors::Type;
  constexpr Index lanes = sizeof(Vector) / sizeof(double);
  for (Index row = 0; row < kBlock; row += 2 * lanes) {  // as many rows as registers can hold
    std::array<Vector, 4> upper;
    std::array<Vector, 4> lower;
    for (Index j = 0; j < 4; ++j) {
      load(upper.data()[j], tile + j * stride + row);
      load(lower.data()[j], tile + j * stride + row + lanes);
    }
    for (Index t = 0; t < depth; ++t) {
      Vector leftUpper;
      Vector leftLower;
      load(leftUpper, left + t * kBlock + row);
      load(leftLower, left + t * kBlock + row + lanes);
      for (Index j = 0; j < 4; ++j) {
        const double factor = right[t * kBlock + j];
        upper.data()[j] -= leftUpper * factor;
        lower.data()[j] -= leftLower * factor;
      }
    }
    for (Index j = 0; j < 4; ++j) {
      store(tile + j * stride + row, upper.data()[j]);
      store(tile + j * stride + row + lanes, lower.data()[j]);
    }
  }
}

/// All columns behind the panel, in bands of eight row blocks, whose part of L stays in the
/// innermost cache. Where the panel ends inside a block, the packed zeros keep the block's finished
/// columns as they are.
template <typename Vectors>
QUOR_INLINE void DenseFront::updateRest(Index begin, Index end) {
  constexpr Index band = 8 * kBlock;
  const Index first = end / kBlock * kBlock;
  for (Index bandBegin = first; bandBegin < size_; bandBegin += band) {
    const Index bandEnd = std::min(bandBegin + band, size_);
    for (Index columns = first; columns < bandEnd; columns += kBlock) {
      for (Index half = 0; half < kBlock; half += 4) {
        const double* const right = unscaled_.data() + columns * kPanel + half;
        for (Index rows = std::max(bandBegin, columns); rows < bandEnd; rows += kBlock) {
          updateTile<Vectors>(column(columns + half) + rows, stride_,
                              scaled_.data() + rows * kPanel, right, end - begin);
        }
      }
    }
  }
}

template <typename Vectors>
QUOR_INLINE bool DenseFront::eliminateWith(Index pivots) {
  for (Index begin = 0; begin < pivots; begin += kPanel) {
    const Index end = std::min(begin + kPanel, pivots);
    if (!factorizeDiagonal(begin, end)) {
      return false;
    }
    solveRows<Vectors>(begin, end);
    updateRest<Vectors>(begin, end);
  }
  return true;
}

#if defined(QUOR_WIDE_VECTORS)
// Without fused multiply-add, which would round once where the others round twice.
__attribute__((target("avx2"))) bool DenseFront::eliminateWithFour(Index pivots) {
  return eliminateWith<Vectors4>(pivots);
}
#else
bool DenseFront::eliminateWithFour(Index pivots) {
  return eliminateWith<Vectors2>(pivots);
}
#endif

bool DenseFront::eliminate(Index pivots) {
  return width_ == VectorWidth::four ? eliminateWithFour(pivots) : eliminateWith<Vectors2>(pivots);
}

}  // namespace quor
