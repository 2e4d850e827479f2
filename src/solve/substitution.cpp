#include "solve/substitution.h"

#include "solve/ahead.h"
#include "solve/factor_view.h"
#include "util/exact_arithmetic.h"
#include "util/machine.h"
#include "util/vectors.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace quor {
namespace {

/// Columns first .. first+kColumns-1, each nested in the next. What they have in common are the
/// rows of the last one.
template <int kColumns>
struct Group {
  QUOR_ALWAYS_INLINE Group(const FactorView& factor, int first)
      : rows(factor.rows + factor.starts[first + kColumns - 1]),
        shared(factor.count(first + kColumns - 1)) {
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      inner.data()[c] = factor.values + factor.starts[first + c];
      values.data()[c] = inner.data()[c] + (kColumns - 1 - c);
    }
  }

  const int* rows;
  int shared;                                    ///< number of rows
  std::array<const double*, kColumns> inner{};   ///< of each column, the entries in later columns
  std::array<const double*, kColumns> values{};  ///< of each column, the entries in the shared rows
};

// Four rows at once, and so four partial sums of a column, in as many vectors as it takes. Wider
// vectors than every processor has would be faster by 6 % only, since memory is waited for.
using Vector = Vectors2::Type;
constexpr int kWidth = sizeof(Vector) / sizeof(double);
constexpr int kRows = 4;
constexpr int kParts = kRows / kWidth;

/// Eliminates the group's entries of x from all rows below.
template <int kColumns>
void forward(const FactorView& factor, int first, double* x, Ahead<kLine>& values,
             Ahead<kLine>& rowNumbers) {
  const Group<kColumns> group(factor, first);
  std::array<double, kColumns> own;
  QUOR_UNROLL
  for (int c = 0; c < kColumns; ++c) {
    own.data()[c] = x[first + c];
    for (int e = 0; e < c; ++e) {
      own.data()[c] -= group.inner.data()[e][c - e - 1] * own.data()[e];
    }
    x[first + c] = own.data()[c];
  }
  rowNumbers.skipTo(factor.rows + factor.starts[first]);
  rowNumbers.askBeyond(factor.rows + factor.starts[first + kColumns]);
  values.skipTo(group.inner[0]);
  int r = 0;
  for (; r + kRows <= group.shared; r += kRows) {
    QUOR_UNROLL
    for (int line = 0; line < (kColumns + 1) / 2; ++line) {
      values.askForLine();
    }
    QUOR_UNROLL
    for (int lane = r; lane < r + kRows; lane += kWidth) {
      Vector below;
      Vectors2::gather(below, x, group.rows + lane);
      QUOR_UNROLL
      for (int c = 0; c < kColumns; ++c) {
        Vector entries;
        load(entries, group.values.data()[c] + lane);
        below -= entries * own.data()[c];
      }
      Vectors2::scatter(below, x, group.rows + lane);
    }
  }
  for (; r < group.shared; ++r) {
    double below = x[group.rows[r]];
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      below -= group.values.data()[c][r] * own.data()[c];
    }
    x[group.rows[r]] = below;
  }
  values.askBeyond(factor.values + factor.starts[first + kColumns]);
}

/// Computes the group's entries of x from D and from those below.
template <int kColumns>
void backward(const FactorView& factor, int first, double* x, Ahead<-kLine>& values,
              Ahead<-kLine>& rowNumbers) {
  const Group<kColumns> group(factor, first);
  rowNumbers.askBeyond(factor.rows + factor.starts[first]);
  std::array<Vector, std::size_t{kColumns} * kParts> sums{};
  int r = 0;
  for (; r + kRows <= group.shared; r += kRows) {
    QUOR_UNROLL
    for (int line = 0; line < (kColumns + 1) / 2; ++line) {
      values.askForLine();
    }
    QUOR_UNROLL
    for (int part = 0; part < kParts; ++part) {
      Vector below;
      Vectors2::gather(below, x, group.rows + r + part * kWidth);
      QUOR_UNROLL
      for (int c = 0; c < kColumns; ++c) {
        Vector entries;
        load(entries, group.values.data()[c] + r + part * kWidth);
        sums.data()[c * kParts + part] += entries * below;
      }
    }
  }
  std::array<double, kColumns> sum;
  QUOR_UNROLL
  for (std::ptrdiff_t c = 0; c < kColumns; ++c) {
    std::array<double, kRows> lanes;
    QUOR_UNROLL
    for (std::ptrdiff_t part = 0; part < kParts; ++part) {
      store(lanes.data() + part * kWidth, sums.data()[c * kParts + part]);
    }
    sum.data()[c] = (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]);
  }
  for (; r < group.shared; ++r) {
    const double below = x[group.rows[r]];
    QUOR_UNROLL
    for (int c = 0; c < kColumns; ++c) {
      sum.data()[c] += group.values.data()[c][r] * below;
    }
  }
  QUOR_UNROLL
  for (int c = kColumns - 1; c >= 0; --c) {
    double own = x[first + c] * (1.0 / factor.diagonal[first + c]) - sum.data()[c];
    QUOR_UNROLL
    for (int e = c + 1; e < kColumns; ++e) {
      own -= group.inner.data()[c][e - c - 1] * x[first + e];
    }
    x[first + c] = own;
  }
  values.askBeyond(factor.values + factor.starts[first]);
}

QUOR_ALWAYS_INLINE void forwardGroup(const FactorView& factor, int first, int columns, double* x,
                                     Ahead<kLine>& values, Ahead<kLine>& rows) {
  switch (columns) {
    case 1:
      return forward<1>(factor, first, x, values, rows);
    case 2:
      return forward<2>(factor, first, x, values, rows);
    case 3:
      return forward<3>(factor, first, x, values, rows);
    case 4:
      return forward<4>(factor, first, x, values, rows);
    case 5:
      return forward<5>(factor, first, x, values, rows);
    case 6:
      return forward<6>(factor, first, x, values, rows);
    case 7:
      return forward<7>(factor, first, x, values, rows);
    default:
      return forward<8>(factor, first, x, values, rows);
  }
}

QUOR_ALWAYS_INLINE void backwardGroup(const FactorView& factor, int first, int columns, double* x,
                                      Ahead<-kLine>& values, Ahead<-kLine>& rows) {
  switch (columns) {
    case 1:
      return backward<1>(factor, first, x, values, rows);
    case 2:
      return backward<2>(factor, first, x, values, rows);
    case 3:
      return backward<3>(factor, first, x, values, rows);
    case 4:
      return backward<4>(factor, first, x, values, rows);
    case 5:
      return backward<5>(factor, first, x, values, rows);
    case 6:
      return backward<6>(factor, first, x, values, rows);
    case 7:
      return backward<7>(factor, first, x, values, rows);
    default:
      return backward<8>(factor, first, x, values, rows);
  }
}

}  // namespace

void substitute(const Factorization& factorization, double* x) {
  assert(factorization.isBlocked());
  const FactorView factor(factorization);
  Ahead<kLine> valuesUp(factor.values);
  Ahead<kLine> rowsUp(factor.rows);
  int first = 0;
  for (const int columns : factor.groups) {
    bool isZero = true;
    for (int c = 0; c < columns; ++c) {
      isZero = isZero && x[first + c] == 0.0;
    }
    if (!isZero) {  // most of x is 0 as long as the right-hand side is
      forwardGroup(factor, first, columns, x, valuesUp, rowsUp);
    }
    first += columns;
  }
  Ahead<-kLine> valuesDown(factor.values + factor.starts[first]);
  Ahead<-kLine> rowsDown(factor.rows + factor.starts[first]);
  for (auto group = factor.groups.rbegin(); group != factor.groups.rend(); ++group) {
    first -= *group;
    backwardGroup(factor, first, *group, x, valuesDown, rowsDown);
  }
}

}  // namespace quor
