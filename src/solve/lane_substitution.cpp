#include "solve/lane_substitution.h"

#include "solve/ahead.h"
#include "solve/factor_view.h"
#include "util/exact_arithmetic.h"
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

constexpr int kParts = 4;  ///< of a sum

/// One number for each right-hand side, in as many vectors as it takes.
template <typename Vectors>
class Lanes {
 public:
  /// How many columns find registers for their numbers at once.
  static constexpr int kColumns = sizeof(typename Vectors::Type) / sizeof(double);

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
  static constexpr int kWidth = sizeof(Vector) / sizeof(double);
  static constexpr int kVectors = kLanes / kWidth;
  std::array<Vector, kVectors> vectors_;
};

QUOR_ALWAYS_INLINE double* rowOf(double* x, int row) {
  return x + std::ptrdiff_t{kLanes} * row;
}

/// 1 for each lane that has anything but zeros in the rows of a group, else 0.
using Shown = std::array<double, kLanes>;

template <int kColumns>
QUOR_ALWAYS_INLINE Shown shownLanes(const double* own) {
  std::array<std::uint64_t, kLanes> bits{};
  for (int c = 0; c < kColumns; ++c) {
    std::array<std::uint64_t, kLanes> entries;
    std::memcpy(entries.data(), own + c * kLanes, sizeof entries);
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

/// Subtracts from the rows below a group what up to Lanes::kColumns of its columns have there.
/// @param values  of each column, its entries in these rows
/// @param own     of the first column, its entries of x
/// @param shown   lanes to work on, unless kIsWhole
template <typename Vectors, int kColumns, bool kIsWhole>
QUOR_ALWAYS_INLINE void forwardRows(const double* const* values, const double* own, const int* rows,
                                    int count, const Shown& shown, double* x) {
  Lanes<Vectors> mask;
  mask.load(shown.data());
  std::array<Lanes<Vectors>, kColumns> factors;
  QUOR_UNROLL
  for (int c = 0; c < kColumns; ++c) {
    factors.data()[c].load(own + c * kLanes);
  }
  for (int r = 0; r < count; ++r) {
    Lanes<Vectors> below;
    below.load(rowOf(x, rows[r]));
    const Lanes<Vectors> before = below;
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      below.subtractProduct(values[c][r], factors.data()[c]);
    }
    if constexpr (!kIsWhole) {
      below.restoreHidden(mask, before);
    }
    below.store(rowOf(x, rows[r]));
  }
}

/// Eliminates the group's entries of x from each other, and from all rows below.
template <typename Vectors, int kColumns, bool kIsWhole>
QUOR_ALWAYS_INLINE void forward(const FactorView& factor, int first, const Shown& shown,
                                double* x) {
  const Group<kColumns> group(factor, first);
  double* const own = rowOf(x, first);
  Lanes<Vectors> mask;
  mask.load(shown.data());
  for (int c = 1; c < kColumns; ++c) {
    Lanes<Vectors> entry;
    entry.load(rowOf(own, c));
    const Lanes<Vectors> before = entry;
    for (int e = 0; e < c; ++e) {
      Lanes<Vectors> earlier;
      earlier.load(rowOf(own, e));
      entry.subtractProduct(group.inner.data()[e][c - e - 1], earlier);
    }
    if constexpr (!kIsWhole) {
      entry.restoreHidden(mask, before);
    }
    entry.store(rowOf(own, c));
  }
  constexpr int kTile = Lanes<Vectors>::kColumns;
  constexpr int kRest = kColumns % kTile;
  QUOR_UNROLL
  for (int c = 0; c + kTile <= kColumns; c += kTile) {
    forwardRows<Vectors, kTile, kIsWhole>(group.values.data() + c, rowOf(own, c), group.rows,
                                          group.shared, shown, x);
  }
  if constexpr (kRest != 0) {
    constexpr int c = kColumns - kRest;
    forwardRows<Vectors, kRest, kIsWhole>(group.values.data() + c, rowOf(own, c), group.rows,
                                          group.shared, shown, x);
  }
}

template <typename Vectors, int kColumns>
QUOR_ALWAYS_INLINE void forwardGroup(const FactorView& factor, int first, double* x) {
  const Shown shown = shownLanes<kColumns>(rowOf(x, first));
  double count = 0.0;
  for (const double lane : shown) {
    count += lane;
  }
  if (count == kLanes) {
    forward<Vectors, kColumns, true>(factor, first, shown, x);
  } else if (count > 0.0) {  // most of x is 0 as long as the right-hand side is
    forward<Vectors, kColumns, false>(factor, first, shown, x);
  }
}

/// Sums what up to Lanes::kColumns columns of a group have in the rows below, in parts.
/// @param values  of each column, its entries in these rows
/// @param count   number of rows, a multiple of kParts
/// @param sums    receives kParts * kLanes numbers for each column
template <typename Vectors, int kColumns>
QUOR_ALWAYS_INLINE void sumRows(const double* const* values, const int* rows, int count, double* x,
                                double* sums) {
  for (int part = 0; part < kParts; ++part) {
    std::array<Lanes<Vectors>, kColumns> sum;
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      sum.data()[c].clear();
    }
    for (int r = part; r < count; r += kParts) {
      Lanes<Vectors> below;
      below.load(rowOf(x, rows[r]));
      QUOR_UNROLL
      for (int c = 0; c < kColumns; ++c) {
        sum.data()[c].addProduct(values[c][r], below);
      }
    }
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      sum.data()[c].store(sums + (c * kParts + part) * kLanes);
    }
  }
}

/// Computes the group's entries of x from D and from those below.
template <typename Vectors, int kColumns>
QUOR_ALWAYS_INLINE void backward(const FactorView& factor, int first, double* x) {
  const Group<kColumns> group(factor, first);
  const int whole = group.shared / kParts * kParts;
  std::array<double, std::size_t{kColumns} * kParts * kLanes> sums;
  constexpr int kTile = Lanes<Vectors>::kColumns;
  constexpr int kRest = kColumns % kTile;
  QUOR_UNROLL
  for (int c = 0; c + kTile <= kColumns; c += kTile) {
    sumRows<Vectors, kTile>(group.values.data() + c, group.rows, whole, x,
                            sums.data() + c * kParts * kLanes);
  }
  if constexpr (kRest != 0) {
    constexpr int c = kColumns - kRest;
    sumRows<Vectors, kRest>(group.values.data() + c, group.rows, whole, x,
                            sums.data() + c * kParts * kLanes);
  }
  for (int c = kColumns - 1; c >= 0; --c) {
    std::array<Lanes<Vectors>, kParts> parts;
    QUOR_UNROLL
    for (int part = 0; part < kParts; ++part) {
      parts.data()[part].load(sums.data() + (c * kParts + part) * kLanes);
    }
    auto& [sum, second, third, fourth] = parts;
    sum.add(second);
    third.add(fourth);
    sum.add(third);
    Lanes<Vectors> later;
    for (int r = whole; r < group.shared; ++r) {
      later.load(rowOf(x, group.rows[r]));
      sum.addProduct(group.values.data()[c][r], later);
    }
    double* const row = rowOf(x, first + c);
    Lanes<Vectors> own;
    own.load(row);
    own.multiply(1.0 / factor.diagonal[first + c]);
    own.subtract(sum);
    for (int e = c + 1; e < kColumns; ++e) {
      later.load(rowOf(x, first + e));
      own.subtractProduct(group.inner.data()[c][e - c - 1], later);
    }
    own.store(row);
  }
}

/// The entry of x of one column, in the order of Eigen's sums.
template <typename Vectors>
QUOR_ALWAYS_INLINE void backwardPlain(const FactorView& factor, int column, double* x) {
  const Group<1> group(factor, column);
  Lanes<Vectors> own;
  own.load(rowOf(x, column));
  own.multiply(1.0 / factor.diagonal[column]);
  for (int r = 0; r < group.shared; ++r) {
    Lanes<Vectors> below;
    below.load(rowOf(x, group.rows[r]));
    own.subtractProduct(group.values[0][r], below);
  }
  own.store(rowOf(x, column));
}

template <typename Vectors>
QUOR_ALWAYS_INLINE void forwardGroup(const FactorView& factor, int first, int columns, double* x) {
  switch (columns) {
    case 1:
      return forwardGroup<Vectors, 1>(factor, first, x);
    case 2:
      return forwardGroup<Vectors, 2>(factor, first, x);
    case 3:
      return forwardGroup<Vectors, 3>(factor, first, x);
    case 4:
      return forwardGroup<Vectors, 4>(factor, first, x);
    case 5:
      return forwardGroup<Vectors, 5>(factor, first, x);
    case 6:
      return forwardGroup<Vectors, 6>(factor, first, x);
    case 7:
      return forwardGroup<Vectors, 7>(factor, first, x);
    default:
      return forwardGroup<Vectors, 8>(factor, first, x);
  }
}

template <typename Vectors>
QUOR_ALWAYS_INLINE void backwardGroup(const FactorView& factor, int first, int columns, double* x) {
  switch (columns) {
    case 1:
      return backward<Vectors, 1>(factor, first, x);
    case 2:
      return backward<Vectors, 2>(factor, first, x);
    case 3:
      return backward<Vectors, 3>(factor, first, x);
    case 4:
      return backward<Vectors, 4>(factor, first, x);
    case 5:
      return backward<Vectors, 5>(factor, first, x);
    case 6:
      return backward<Vectors, 6>(factor, first, x);
    case 7:
      return backward<Vectors, 7>(factor, first, x);
    default:
      return backward<Vectors, 8>(factor, first, x);
  }
}

template <typename Vectors>
QUOR_ALWAYS_INLINE void substituteWith(const FactorView& factor, double* x) {
  if (factor.groups.empty()) {
    for (int j = 0; j < factor.columns; ++j) {
      forwardGroup<Vectors, 1>(factor, j, x);
    }
    for (int j = factor.columns; j-- > 0;) {
      backwardPlain<Vectors>(factor, j, x);
    }
    return;
  }
  int first = 0;
  Ahead<kLine> up(factor.values);
  for (const int columns : factor.groups) {
    up.askBeyond(factor.values + factor.starts[first + columns]);
    forwardGroup<Vectors>(factor, first, columns, x);
    first += columns;
  }
  Ahead<-kLine> down(factor.values + factor.starts[first]);
  for (auto group = factor.groups.rbegin(); group != factor.groups.rend(); ++group) {
    first -= *group;
    down.askBeyond(factor.values + factor.starts[first]);
    backwardGroup<Vectors>(factor, first, *group, x);
  }
}

#if defined(QUOR_WIDE_VECTORS)
// Without fused multiply-add, which would round once where the others round twice.
__attribute__((target("avx2"))) void substituteFour(const FactorView& factor, double* x) {
  substituteWith<Vectors4>(factor, x);
}
__attribute__((target("avx512f"))) void substituteEight(const FactorView& factor, double* x) {
  substituteWith<Vectors8>(factor, x);
}
#endif

}  // namespace

void substituteLanes(const Factorization& factorization, VectorWidth width, double* x) {
  const FactorView factor(factorization);
  switch (width) {
#if defined(QUOR_WIDE_VECTORS)
    case VectorWidth::eight:
      return substituteEight(factor, x);
    case VectorWidth::four:
      return substituteFour(factor, x);
#endif
    default:
      return substituteWith<Vectors2>(factor, x);
  }
}

}  // namespace quor
