#include "solve/lane_substitution.h"

#include "operator/factor/column_groups.h"
#include "solve/ahead.h"
#include "solve/factor_view.h"
#include "util/exact_arithmetic.h"
#include "util/index.h"
#include "util/machine.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Every lane goes through the operations of the single substitution, in their order. So sums have
// four parts here too, and a lane whose entries of a group are all 0 is left alone as it is there:
// subtracting a product that is 0 would still turn a -0 into a 0.

namespace quor {
namespace {

constexpr int kPartialSums = 4;

/// One number for each right-hand side, in as many vectors as it takes.
template <typename Vectors>
class Lanes {
 public:
  /// How many columns find registers for their numbers at once.
  static constexpr int kColumns = sizeof(typename Vectors::Type) > 2 * sizeof(double) ? 4 : 2;

  QUOR_ALWAYS_INLINE void load(const double* from) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      quor::load(vectors_.data()[k], from + k * kWidth);
    }
  }
  QUOR_ALWAYS_INLINE void store(double* to) const {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      quor::store(to + k * kWidth, vectors_.data()[k]);
    }
  }
  QUOR_ALWAYS_INLINE void clear() {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] = Vector{};
    }
  }
  QUOR_ALWAYS_INLINE void add(const Lanes& other) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] += other.vectors_.data()[k];
    }
  }
  QUOR_ALWAYS_INLINE void subtract(const Lanes& other) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] -= other.vectors_.data()[k];
    }
  }
  QUOR_ALWAYS_INLINE void multiply(double factor) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] *= factor;
    }
  }
  QUOR_ALWAYS_INLINE void addProduct(double factor, const Lanes& other) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] += factor * other.vectors_.data()[k];
    }
  }
  QUOR_ALWAYS_INLINE void subtractProduct(double factor, const Lanes& other) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] -= factor * other.vectors_.data()[k];
    }
  }

  /// Takes the numbers of the lanes back that are 0 in `shown`.
  QUOR_ALWAYS_INLINE void restoreHidden(const Lanes& shown, const Lanes& before) {
    QUOR_UNROLL
    for (int k = 0; k < kVectors; ++k) {
      vectors_.data()[k] =
          shown.vectors_.data()[k] == Vector{} ? before.vectors_.data()[k] : vectors_.data()[k];
    }
  }

 private:
  using Vector = typename Vectors::Type;
  static constexpr std::ptrdiff_t kWidth = sizeof(Vector) / sizeof(double);
  static constexpr std::ptrdiff_t kVectors = kLanes / kWidth;
  std::array<Vector, kVectors> vectors_;
};

template <typename Number>
QUOR_ALWAYS_INLINE Number* rowOf(Number* x, int row) {
  return x + std::ptrdiff_t{kLanes} * row;
}

/// Columns of L that are nested in each other, see groupColumns.
struct NestedColumns {
  NestedColumns(const FactorView& factor, int firstColumn, int columnCount)
      : first(firstColumn),
        count(columnCount),
        rows(factor.rows + factor.starts[first + count - 1]),
        shared(factor.count(first + count - 1)) {
    for (int c = 0; c < count; ++c) {
      inner[toSize(c)] = factor.values + factor.starts[first + c];
      values[toSize(c)] = inner[toSize(c)] + (count - 1 - c);
    }
  }

  int first;
  int count;
  const int* rows;                                          ///< below all of them
  int shared;                                               ///< number of these rows
  std::array<const double*, kMostGroupedColumns> inner{};   ///< entries in later columns
  std::array<const double*, kMostGroupedColumns> values{};  ///< entries in the shared rows
};

/// 1 for each lane that has anything but zeros in the rows of the columns, else 0.
using Shown = std::array<double, kLanes>;

Shown shownLanes(const double* own, int count) {
  std::array<std::uint64_t, kLanes> bits{};
  for (int c = 0; c < count; ++c) {
    std::array<std::uint64_t, kLanes> entries;
    std::memcpy(entries.data(), rowOf(own, c), sizeof entries);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      bits[lane] |= entries[lane] << 1U;  // without the sign
    }
  }
  Shown shown;
  for (std::size_t lane = 0; lane < kLanes; ++lane) {
    shown[lane] = bits[lane] != 0 ? 1.0 : 0.0;
  }
  return shown;
}

/// Subtracts from the rows below what kColumns columns have there.
/// @param from   of the columns, the first
/// @param shown  lanes to work on, unless kIsWhole
template <typename Vectors, int kColumns, bool kIsWhole>
QUOR_ALWAYS_INLINE void forwardRows(const NestedColumns& columns, int from, const Shown& shown,
                                    double* x) {
  Lanes<Vectors> mask;
  mask.load(shown.data());
  std::array<Lanes<Vectors>, kColumns> factors;
  QUOR_UNROLL
  for (int c = 0; c < kColumns; ++c) {
    factors.data()[c].load(rowOf(x, columns.first + from + c));
  }
  const double* const* const values = columns.values.data() + from;
  for (int r = 0; r < columns.shared; ++r) {
    double* const row = rowOf(x, columns.rows[r]);
    Lanes<Vectors> below;
    below.load(row);
    const Lanes<Vectors> before = below;
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      below.subtractProduct(values[c][r], factors.data()[c]);
    }
    if constexpr (!kIsWhole) {
      below.restoreHidden(mask, before);
    }
    below.store(row);
  }
}

/// Eliminates the columns' entries of x from each other, and from all rows below.
template <typename Vectors, bool kIsWhole>
QUOR_ALWAYS_INLINE void forward(const NestedColumns& columns, const Shown& shown, double* x) {
  Lanes<Vectors> mask;
  mask.load(shown.data());
  double* const own = rowOf(x, columns.first);
  for (int c = 1; c < columns.count; ++c) {
    Lanes<Vectors> entry;
    entry.load(rowOf(own, c));
    const Lanes<Vectors> before = entry;
    for (int e = 0; e < c; ++e) {
      Lanes<Vectors> earlier;
      earlier.load(rowOf(own, e));
      entry.subtractProduct(columns.inner[toSize(e)][c - e - 1], earlier);
    }
    if constexpr (!kIsWhole) {
      entry.restoreHidden(mask, before);
    }
    entry.store(rowOf(own, c));
  }
  constexpr int kTile = Lanes<Vectors>::kColumns;
  int c = 0;
  for (; c + kTile <= columns.count; c += kTile) {
    forwardRows<Vectors, kTile, kIsWhole>(columns, c, shown, x);
  }
  if constexpr (kTile > 2) {
    if (columns.count - c == 3) {
      return forwardRows<Vectors, 3, kIsWhole>(columns, c, shown, x);
    }
    if (columns.count - c == 2) {
      return forwardRows<Vectors, 2, kIsWhole>(columns, c, shown, x);
    }
  }
  if (columns.count > c) {
    forwardRows<Vectors, 1, kIsWhole>(columns, c, shown, x);
  }
}

template <typename Vectors>
QUOR_ALWAYS_INLINE void forward(const NestedColumns& columns, double* x) {
  const Shown shown = shownLanes(rowOf(x, columns.first), columns.count);
  double count = 0.0;
  for (const double lane : shown) {
    count += lane;
  }
  if (count == kLanes) {
    forward<Vectors, true>(columns, shown, x);
  } else if (count > 0.0) {  // most of x is 0 as long as the right-hand side is
    forward<Vectors, false>(columns, shown, x);
  }
}

/// Sums what kColumns columns have in the rows below, in parts.
/// @param from   of the columns, the first
/// @param count  number of rows, a multiple of kPartialSums
/// @param sums   receives kPartialSums * kLanes numbers for each column
template <typename Vectors, int kColumns>
QUOR_ALWAYS_INLINE void sumRows(const NestedColumns& columns, int from, int count, double* x,
                                double* sums) {
  const double* const* const values = columns.values.data() + from;
  for (int part = 0; part < kPartialSums; ++part) {
    std::array<Lanes<Vectors>, kColumns> sum;
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      sum.data()[c].clear();
    }
    for (int r = part; r < count; r += kPartialSums) {
      Lanes<Vectors> below;
      below.load(rowOf(x, columns.rows[r]));
      QUOR_UNROLL
      for (int c = 0; c < kColumns; ++c) {
        sum.data()[c].addProduct(values[c][r], below);
      }
    }
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      sum.data()[c].store(rowOf(sums, (from + c) * kPartialSums + part));
    }
  }
}

/// The same for all columns of a group.
template <typename Vectors>
QUOR_ALWAYS_INLINE void sumRows(const NestedColumns& columns, int count, double* x, double* sums) {
  constexpr int kTile = Lanes<Vectors>::kColumns;
  int c = 0;
  for (; c + kTile <= columns.count; c += kTile) {
    sumRows<Vectors, kTile>(columns, c, count, x, sums);
  }
  if constexpr (kTile > 2) {
    if (columns.count - c == 3) {
      return sumRows<Vectors, 3>(columns, c, count, x, sums);
    }
    if (columns.count - c == 2) {
      return sumRows<Vectors, 2>(columns, c, count, x, sums);
    }
  }
  if (columns.count > c) {
    sumRows<Vectors, 1>(columns, c, count, x, sums);
  }
}

/// Computes the columns' entries of x from D and from those below.
template <typename Vectors>
QUOR_ALWAYS_INLINE void backward(const NestedColumns& columns, const double* diagonal, double* x) {
  const int whole = columns.shared / kPartialSums * kPartialSums;
  std::array<double, std::size_t{kMostGroupedColumns} * kPartialSums * kLanes> sums;
  sumRows<Vectors>(columns, whole, x, sums.data());
  for (int c = columns.count - 1; c >= 0; --c) {
    std::array<Lanes<Vectors>, kPartialSums> parts;
    QUOR_UNROLL
    for (int part = 0; part < kPartialSums; ++part) {
      parts.data()[part].load(rowOf(sums.data(), c * kPartialSums + part));
    }
    auto& [sum, second, third, fourth] = parts;
    sum.add(second);
    third.add(fourth);
    sum.add(third);
    Lanes<Vectors> later;
    for (int r = whole; r < columns.shared; ++r) {
      later.load(rowOf(x, columns.rows[r]));
      sum.addProduct(columns.values[toSize(c)][r], later);
    }
    double* const row = rowOf(x, columns.first + c);
    Lanes<Vectors> own;
    own.load(row);
    own.multiply(1.0 / diagonal[columns.first + c]);
    own.subtract(sum);
    for (int e = c + 1; e < columns.count; ++e) {
      later.load(rowOf(x, columns.first + e));
      own.subtractProduct(columns.inner[toSize(c)][e - c - 1], later);
    }
    own.store(row);
  }
}

/// The entry of x of a single column, in the order of Eigen's sums.
template <typename Vectors>
QUOR_ALWAYS_INLINE void backwardPlain(const NestedColumns& column, const double* diagonal,
                                      double* x) {
  double* const row = rowOf(x, column.first);
  Lanes<Vectors> own;
  own.load(row);
  own.multiply(1.0 / diagonal[column.first]);
  for (int r = 0; r < column.shared; ++r) {
    Lanes<Vectors> below;
    below.load(rowOf(x, column.rows[r]));
    own.subtractProduct(column.values[0][r], below);
  }
  own.store(row);
}

template <typename Vectors>
QUOR_ALWAYS_INLINE void substituteWith(const FactorView& factor, double* x) {
  const bool isBlocked = !factor.groups.empty();
  const int end = factor.columns;
  Ahead<kLine> up(factor.values);
  auto group = factor.groups.begin();
  for (int first = 0; first < end;) {
    const int count = isBlocked ? *group++ : 1;
    up.askBeyond(factor.values + factor.starts[first + count]);
    forward<Vectors>(NestedColumns(factor, first, count), x);
    first += count;
  }
  Ahead<-kLine> down(factor.values + factor.starts[end]);
  for (int first = end; first > 0;) {
    const int count = isBlocked ? *--group : 1;
    first -= count;
    down.askBeyond(factor.values + factor.starts[first]);
    const NestedColumns columns(factor, first, count);
    if (isBlocked) {
      backward<Vectors>(columns, factor.diagonal, x);
    } else {
      backwardPlain<Vectors>(columns, factor.diagonal, x);
    }
  }
}

#if defined(QUOR_WIDE_VECTORS)
// Without fused multiply-add, which would round once where the others round twice.
__attribute__((target("avx2"))) void substituteFour(const FactorView& factor, double* x) {
  substituteWith<Vectors4>(factor, x);
}
#endif

}  // namespace

void substituteLanes(const Factorization& factorization, VectorWidth width, double* x) {
  const FactorView factor(factorization);
#if defined(QUOR_WIDE_VECTORS)
  if (width != VectorWidth::two) {  // vectors of eight would wait for memory most of the time
    return substituteFour(factor, x);
  }
#else
  static_cast<void>(width);
#endif
  substituteWith<Vectors2>(factor, x);
}

}  // namespace quor
