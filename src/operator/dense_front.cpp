#include "operator/dense_front.h"

#include <algorithm>
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
std::ptrdiff_t strideFor(int size) {
  const std::ptrdiff_t stride = (static_cast<std::ptrdiff_t>(size) + 7) / 8 * 8;
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

DenseFront::DenseFront(int largest, VectorWidth width)
    : width_(width),
      entries_(static_cast<std::size_t>(strideFor(largest) * ((largest + 7) / 8 * 8))),
      scaled_(static_cast<std::size_t>(strideFor(largest) * kPanel)),
      unscaled_(static_cast<std::size_t>(strideFor(largest) * kPanel)) {}

std::size_t DenseFront::room(int largest) {
  return static_cast<std::size_t>(strideFor(largest) * ((largest + 7) / 8 * 8 + 2 * kPanel));
}

void DenseFront::reset(int size) {
  size_ = size;
  stride_ = strideFor(size);
  for (int j = 0; j < blocks() * kBlock; ++j) {
    std::fill(column(j) + j / kBlock * kBlock, column(j) + blocks() * kBlock, 0.0);
  }
}

/// Columns and rows begin .. end-1, one column after the other.
bool DenseFront::factorizeDiagonal(int begin, int end) {
  std::array<double, kPanel> unscaled;
  for (int j = begin; j < end; ++j) {
    double* const pivotColumn = column(j);
    const double pivot = pivotColumn[j];
    if (pivot == 0.0 || !std::isfinite(pivot)) {
      return false;
    }
    for (int i = j + 1; i < end; ++i) {
      unscaled[static_cast<std::size_t>(i - begin)] = pivotColumn[i];
      pivotColumn[i] /= pivot;
      diagonal_[static_cast<std::size_t>(i - begin)][static_cast<std::size_t>(j - begin)] =
          pivotColumn[i];
    }
    for (int k = j + 1; k < end; ++k) {
      const double factor = unscaled[static_cast<std::size_t>(k - begin)];
      double* const target = column(k);
      for (int i = k; i < end; ++i) {
        target[i] -= pivotColumn[i] * factor;
      }
    }
  }
  return true;
}

/// The rows below the diagonal block: L D from the block's L, then L; both into their packed
/// copies, where rows of the block itself are zeros, and L into the columns.
template <typename Vectors>
QUOR_INLINE void DenseFront::solveRows(int begin, int end) {
  using Vector = typename Vectors::Type;
  constexpr int lanes = sizeof(Vector) / sizeof(double);
  constexpr int parts = kBlock / lanes;
  const int width = end - begin;
  for (int block = end / kBlock; block < blocks(); ++block) {
    const int row = block * kBlock;
    double* const x = unscaled_.data() + static_cast<std::ptrdiff_t>(row) * kPanel;
    double* const l = scaled_.data() + static_cast<std::ptrdiff_t>(row) * kPanel;
    const int ownRows = std::max(end - row, 0);
    for (int t = 0; t < width; ++t) {
      double* const source = column(begin + t) + row;
      Vector sum[parts];
      for (int part = 0; part < parts; ++part) {
        load(sum[part], source + part * lanes);
      }
      for (int s = 0; s < t; ++s) {
        const double factor = diagonal_[static_cast<std::size_t>(t)][static_cast<std::size_t>(s)];
        for (int part = 0; part < parts; ++part) {
          Vector earlier;
          load(earlier, x + s * kBlock + part * lanes);
          sum[part] -= earlier * factor;
        }
      }
      const double pivot = column(begin + t)[begin + t];
      for (int part = 0; part < parts; ++part) {
        store(x + t * kBlock + part * lanes, sum[part]);
        store(l + t * kBlock + part * lanes, sum[part] / pivot);
      }
      std::fill(x + t * kBlock, x + t * kBlock + ownRows, 0.0);
      std::fill(l + t * kBlock, l + t * kBlock + ownRows, 0.0);
      std::copy(l + t * kBlock + ownRows, l + (t + 1) * kBlock, source + ownRows);
    }
  }
}

/// A tile of 8 rows and 4 columns: minus the product of 8 rows of L and 4 of L D.
template <typename Vectors>
QUOR_INLINE void DenseFront::updateTile(double* tile, std::ptrdiff_t stride, const double* left,
                                        const double* right, int depth) {
  using Vector = typename Vectors::Type;
  constexpr int lanes = sizeof(Vector) / sizeof(double);
  for (int row = 0; row < kBlock; row += 2 * lanes) {  // as many rows as registers can hold
    Vector sum[4][2];
    for (int j = 0; j < 4; ++j) {
      load(sum[j][0], tile + j * stride + row);
      load(sum[j][1], tile + j * stride + row + lanes);
    }
    for (int t = 0; t < depth; ++t) {
      Vector upper;
      Vector lower;
      load(upper, left + t * kBlock + row);
      load(lower, left + t * kBlock + row + lanes);
      for (int j = 0; j < 4; ++j) {
        sum[j][0] -= upper * right[t * kBlock + j];
        sum[j][1] -= lower * right[t * kBlock + j];
      }
    }
    for (int j = 0; j < 4; ++j) {
      store(tile + j * stride + row, sum[j][0]);
      store(tile + j * stride + row + lanes, sum[j][1]);
    }
  }
}

/// All columns behind the panel, in bands of eight row blocks, whose part of L stays in the
/// innermost cache. Where the panel ends inside a block, the packed zeros keep the block's finished
/// columns as they are.
template <typename Vectors>
QUOR_INLINE void DenseFront::updateRest(int begin, int end) {
  constexpr int kBand = 8;
  const int depth = end - begin;
  const auto packed = [](const WorkArray& rows, int block) {
    return rows.data() + static_cast<std::ptrdiff_t>(block) * kBlock * kPanel;
  };
  const int first = end / kBlock;
  for (int band = first; band < blocks(); band += kBand) {
    const int bandEnd = std::min(band + kBand, blocks());
    for (int columns = first; columns < bandEnd; ++columns) {
      for (int half = 0; half < kBlock; half += 4) {
        const double* const right = packed(unscaled_, columns) + half;
        for (int rows = std::max(band, columns); rows < bandEnd; ++rows) {
          updateTile<Vectors>(column(columns * kBlock + half) + rows * kBlock, stride_,
                              packed(scaled_, rows), right, depth);
        }
      }
    }
  }
}

template <typename Vectors>
QUOR_INLINE bool DenseFront::eliminateWith(int pivots) {
  for (int begin = 0; begin < pivots; begin += kPanel) {
    const int end = std::min(begin + kPanel, pivots);
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
__attribute__((target("avx2"))) bool DenseFront::eliminateWithFour(int pivots) {
  return eliminateWith<Vectors4>(pivots);
}
#else
bool DenseFront::eliminateWithFour(int pivots) {
  return eliminateWith<Vectors2>(pivots);
}
#endif

bool DenseFront::eliminate(int pivots) {
  return width_ == VectorWidth::four ? eliminateWithFour(pivots) : eliminateWith<Vectors2>(pivots);
}

}  // namespace quor
