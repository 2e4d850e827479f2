#include "kit/weighted_system.h"

#include "solve/field_solve.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

namespace quorkit {
namespace {

using quor::SparseMatrix;

/// A symmetric matrix or a block of one, column by column, from entries in any order.
class ColumnBuilder {
 public:
  ColumnBuilder(std::int32_t rows, std::int32_t columns)
      : matrix_(std::make_shared<SparseMatrix>()), next_(toSize(columns) + 1) {
    matrix_->resize(rows, columns);
  }

  void count(std::int32_t column) { ++next_[toSize(column) + 1]; }

  void endCounting() {
    for (std::size_t c = 1; c < next_.size(); ++c) {
      next_[c] += next_[c - 1];
    }
    entries_.resize(toSize(next_.back()));
    start_ = next_;
  }

  void put(std::int32_t row, std::int32_t column, double value) {
    const std::int32_t place = next_[toSize(column)]++;
    entries_[toSize(place)] = {row, place, value};
  }

  /// Entries of one place are summed in the order in which they were put.
  /// A matrix of Eigen that is copied loses memory if the copy fails, so it is made in its place.
  std::shared_ptr<const SparseMatrix> finish() {
    matrix_->reserve(toIndex(entries_.size()));
    for (Eigen::Index c = 0; c < matrix_->cols(); ++c) {
      matrix_->startVec(c);
      const auto first = entries_.begin() + start_[toSize(c)];
      const auto last = entries_.begin() + start_[toSize(c + 1)];
      std::sort(first, last, [](const Entry& a, const Entry& b) {
        return std::pair(a.row, a.order) < std::pair(b.row, b.order);
      });
      for (auto entry = first; entry != last;) {
        double sum = 0.0;
        const std::int32_t row = entry->row;
        for (; entry != last && entry->row == row; ++entry) {
          sum += entry->value;
        }
        matrix_->insertBack(row, c) = sum;
      }
    }
    matrix_->finalize();
    return matrix_;
  }

 private:
  struct Entry {
    std::int32_t row;
    std::int32_t order;
    double value;
  };

  std::shared_ptr<SparseMatrix> matrix_;
  std::vector<std::int32_t> next_;
  std::vector<std::int32_t> start_;
  std::vector<Entry> entries_;
};

}  // namespace

WeightedSystem::WeightedSystem(const std::vector<WeightedEdge>& edges,
                               const std::vector<double>& values, const quor::Progress& progress) {
  const std::int32_t n = toIndex(values.size());
  std::vector<std::int32_t> place(values.size());
  std::int32_t prescribed = 0;
  std::int32_t free = 0;
  for (std::size_t v = 0; v < values.size(); ++v) {
    place[v] = std::isnan(values[v]) ? free++ : ~prescribed++;  // complements mark the prescribed
  }
  handle_.vertexCount = toSize(n);
  handle_.prescribedCount = toSize(prescribed);
  handle_.solverToCaller.resize(values.size());
  for (std::int32_t v = 0; v < n; ++v) {
    const std::int32_t p = place[toSize(v)];
    handle_.solverToCaller[toSize(p < 0 ? ~p : prescribed + p)] = v;
  }
  ColumnBuilder ff(free, free);
  ColumnBuilder fp(free, prescribed);
  for (const WeightedEdge& edge : edges) {
    for (const auto& [p, q] : {std::pair{place[toSize(edge.u)], place[toSize(edge.v)]},
                               std::pair{place[toSize(edge.v)], place[toSize(edge.u)]}}) {
      if (p >= 0) {  // row p
        ff.count(p);
        (q >= 0 ? ff : fp).count(q >= 0 ? q : ~q);
      }
    }
  }
  ff.endCounting();
  fp.endCounting();
  for (const WeightedEdge& edge : edges) {
    for (const auto& [p, q] : {std::pair{place[toSize(edge.u)], place[toSize(edge.v)]},
                               std::pair{place[toSize(edge.v)], place[toSize(edge.u)]}}) {
      if (p >= 0) {
        ff.put(p, p, edge.weight);
        (q >= 0 ? ff : fp).put(p, q >= 0 ? q : ~q, -edge.weight);
      }
    }
  }
  handle_.stiffnessFF = ff.finish();
  handle_.stiffnessFP = fp.finish();
  handle_.factorFF = std::make_shared<const quor::Factorization>(*handle_.stiffnessFF, progress);
}

bool WeightedSystem::isRegular() const {
  return handle_.factorFF->info() == Eigen::Success;
}

std::vector<double> WeightedSystem::solve(const std::vector<double>& values,
                                          const std::vector<double>& sources) const {
  assert(values.size() == handle_.vertexCount);
  std::vector<double> field(values.size());
  quor::solveField(handle_, values.data(), sources.empty() ? nullptr : sources.data(),
                   field.data());
  return field;
}

}  // namespace quorkit
