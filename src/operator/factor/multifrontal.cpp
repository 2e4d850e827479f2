#include "operator/factor/multifrontal.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>
#include <vector>

namespace quor {
namespace {

/// The diagonal of the matrix, and with which column each of its entries is added.
///
/// The pivot of row i is what A(i, i) leaves when every earlier column j with an entry in the row
/// has taken its term away, L(i, j)^2 D(j). At a sliver one term, that of the short edge, is nearly
/// as large as A(i, i): the two cancel, and the pivot is small beside both. If A(i, i) came last,
/// with its own column, the terms would by then have added up to a sum of its size, rounded at that
/// size once per term, and all these errors would stay in the small difference. So A(i, i) is added
/// as soon as the column with the row's largest entry is eliminated: it meets the large term first,
/// the difference of two numbers so near to each other has hardly any rounding error, and what
/// comes after is added to a small sum, with small errors.
class Diagonal {
 public:
  static constexpr int kNone = -1;

  explicit Diagonal(const SparseMatrix& upper)
      : values_(upper.cols()),
        first_(Eigen::VectorXi::Constant(upper.cols(), kNone)),
        next_(upper.cols()) {
    for (int i = 0; i < upper.cols(); ++i) {
      double value = 0.0;
      double largest = 0.0;
      int with = i;
      for (SparseMatrix::InnerIterator entry(upper, i); entry; ++entry) {
        const bool isDiagonal = entry.index() == i;
        value = isDiagonal ? entry.value() : value;
        const double size = isDiagonal ? 0.0 : std::abs(entry.value());
        with = size > largest ? entry.index() : with;
        largest = size > largest ? size : largest;
      }
      values_[i] = value;
      next_[i] = std::exchange(first_[with], i);
    }
  }

  double value(int i) const { return values_[i]; }
  /// The first entry that is added with column j, or kNone.
  int first(int j) const { return first_[j]; }
  /// The next entry that is added with the same column as entry i, or kNone.
  int next(int i) const { return next_[i]; }

 private:
  Eigen::VectorXd values_;
  Eigen::VectorXi first_, next_;
};

class Multifrontal {
 public:
  Multifrontal(const SparseMatrix& lower, Diagonal diagonal, const Supernodes& supernodes,
               const FrontTree& tree, VectorWidth width, const FactorArrays& factor)
      : lower_(lower),
        diagonal_(std::move(diagonal)),
        supernodes_(supernodes),
        tree_(tree),
        factor_(factor),
        dense_(tree.largestFront, width),
        stack_(static_cast<std::ptrdiff_t>(tree.largestStack)),
        stackTop_(stack_.data()),
        places_(lower_.cols()) {
    indices_.reserve(static_cast<std::size_t>(tree.largestFront));
    childPlaces_.reserve(static_cast<std::size_t>(tree.largestFront));
    waiting_.reserve(tree.fronts.size());
  }

  bool run(const Progress& progress) {
    const double operations = progress ? operationsOf(tree_) : 1.0;
    double done = 0.0;  // of the operations; stays 0 if nobody watches
    for (const Front& front : tree_.fronts) {
      listIndices(front);
      dense_.reset(front.size());
      addMatrix(front);
      for (int child = 0; child < front.children; ++child) {
        assert(!waiting_.empty());
        addRemainder(*waiting_.back());
        waiting_.pop_back();
      }
      const double begin = done;
      done += progress ? front.operations() / operations : 0.0;
      if (!dense_.eliminate(front.columns, progress.part(begin, std::min(done, 1.0)))) {
        return false;
      }
      for (int member = front.memberBegin; member < front.memberEnd; ++member) {
        storeColumns(tree_.members[member], front.size());
      }
      keepRemainder(front);
    }
    assert(stackTop_ == stack_.data());  // nothing is left of a root
    return true;
  }

 private:
  static double operationsOf(const FrontTree& tree) {
    double sum = 0.0;
    for (const Front& front : tree.fronts) {
      sum += front.operations();
    }
    return sum;
  }

  /// The front's rows: the columns of its supernodes, each behind its descendants, and below them
  /// the shared rows. The rows of one column of L are a path in the elimination tree, so they stand
  /// in the front in the order of their indices. From now on places_ says where a row is.
  void listIndices(const Front& front) {
    indices_.clear();
    for (int member = front.memberBegin; member < front.memberEnd; ++member) {
      const IndexList columns = supernodes_.columns(tree_.members[member]);
      indices_.insert(indices_.end(), columns.begin(), columns.end());
    }
    const IndexList rows = supernodes_.rows(front.top);
    indices_.insert(indices_.end(), rows.begin(), rows.end());
    int place = 0;
    for (const int index : indices_) {
      places_[index] = place++;
    }
    assert(place == front.size());
  }

  /// Adds the entries of the front's columns below the diagonal, and those of the diagonal that go
  /// with them: all are among the front's rows.
  void addMatrix(const Front& front) {
    for (int place = 0; place < front.columns; ++place) {
      const int j = indices_[static_cast<std::size_t>(place)];
      double* const column = dense_.column(place);
      for (SparseMatrix::InnerIterator entry(lower_, j); entry; ++entry) {
        column[places_[entry.index()]] += entry.value();
      }
      for (int i = diagonal_.first(j); i != Diagonal::kNone; i = diagonal_.next(i)) {
        dense_.column(places_[i])[places_[i]] += diagonal_.value(i);
      }
    }
  }

  /// Takes the topmost remainder off the stack. Its rows are all among the front's, in order.
  void addRemainder(const Front& child) {
    childPlaces_.clear();
    for (const int row : supernodes_.rows(child.top)) {
      assert(indices_[static_cast<std::size_t>(places_[row])] == row);
      childPlaces_.push_back(places_[row]);
    }
    assert(stackTop_ - stack_.data() >= child.remainder());
    stackTop_ -= child.remainder();
    const double* source = stackTop_;
    const int* const end = childPlaces_.data() + child.rows;
    // From some row on the places are most often consecutive.
    const int* tail = end;
    while (tail != childPlaces_.data() && tail[-1] == end[-1] - (end - tail)) {
      --tail;
    }
    for (const int* place = childPlaces_.data(); place != end; ++place) {
      double* const column = dense_.column(*place);
      const int* row = place;
      for (; row < tail; ++row) {
        column[*row] += *source++;
      }
      double* const consecutive = column + *row;
      const std::ptrdiff_t count = end - row;
      for (std::ptrdiff_t i = 0; i < count; ++i) {
        consecutive[i] += source[i];
      }
      source += count;
    }
  }

  /// Stores the columns of one supernode. Other rows of the front hold zeros there.
  void storeColumns(int supernode, int frontSize) {
    const IndexList columns = supernodes_.columns(supernode);
    const IndexList rows = supernodes_.rows(supernode);
    rowPlaces_.clear();
    for (const int column : columns) {
      rowPlaces_.push_back(places_[column]);
    }
    for (const int row : rows) {
      rowPlaces_.push_back(places_[row]);
    }
    const auto count = rowPlaces_.size();
    for (std::size_t c = 0; c < static_cast<std::size_t>(columns.size()); ++c) {
      const int j = columns[static_cast<int>(c)];
      const double* const values = dense_.column(rowPlaces_[c]);
      factor_.diagonal[j] = values[rowPlaces_[c]];
      int* const rowsOut = factor_.rows + factor_.columnStart[j];
      double* const valuesOut = factor_.values + factor_.columnStart[j];
      std::copy(rows.begin(), rows.end(),
                std::copy(columns.begin() + c + 1, columns.end(), rowsOut));
      if (rowPlaces_[c] + static_cast<int>(count - c) == frontSize) {
        std::copy(values + rowPlaces_[c] + 1, values + frontSize, valuesOut);
      } else {
        for (std::size_t i = c + 1; i < count; ++i) {
          valuesOut[i - c - 1] = values[rowPlaces_[i]];
        }
      }
    }
  }

  /// Puts the lower triangle of what the elimination left on the stack, by columns.
  void keepRemainder(const Front& front) {
    assert(stackTop_ - stack_.data() + front.remainder() <= tree_.largestStack);
    for (int j = front.columns; j < front.size(); ++j) {
      const double* const column = dense_.column(j);
      stackTop_ = std::copy(column + j, column + front.size(), stackTop_);
    }
    waiting_.push_back(&front);
  }

  const SparseMatrix& lower_;
  const Diagonal diagonal_;
  const Supernodes& supernodes_;
  const FrontTree& tree_;
  const FactorArrays& factor_;
  DenseFront dense_;
  WorkArray stack_;
  double* stackTop_;
  Eigen::VectorXi places_;             ///< of the current front's rows, by index
  std::vector<int> indices_;           ///< of the current front's rows
  std::vector<int> childPlaces_;       ///< of a child's rows in the current front
  std::vector<int> rowPlaces_;         ///< of a supernode's columns and rows in the current front
  std::vector<const Front*> waiting_;  ///< the fronts whose remainders are on the stack
};

}  // namespace

std::int64_t workSize(const FrontTree& tree) {
  return DenseFront::room(tree.largestFront) + tree.largestStack;
}

bool factorizeFronts(PermutedTriangles& matrix, const Supernodes& supernodes, const FrontTree& tree,
                     VectorWidth width, const FactorArrays& factor, const Progress& progress) {
  Diagonal diagonal(matrix.upper);
  SparseMatrix().swap(matrix.upper);  // an assignment would keep its memory
  return Multifrontal(matrix.lower, std::move(diagonal), supernodes, tree, width, factor)
      .run(progress);
}

}  // namespace quor
