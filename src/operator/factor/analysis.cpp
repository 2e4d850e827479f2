#include "operator/factor/analysis.h"

#include "operator/factor/elimination_tree.h"
#include "operator/factor/multifrontal.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace quor {
namespace {

/// Products and sums from which on blocks pay, by measurement. In all: those of a square grid of
/// 65 x 65 vertices; it hardly matters, up to twice as many either way takes about the same time.
/// For each column, since a front costs its setting up: those of a strip some twenty vertices wide;
/// a narrow one takes several times longer with blocks.
constexpr double kBlocksPay = 4e6;
constexpr double kBlocksPayPerColumn = 400;

constexpr std::int64_t kMaxIndex = std::numeric_limits<int>::max();

/// The floating-point operations of the numeric step.
double operations(const Eigen::VectorXi& columnCounts) {
  return columnCounts.cast<double>().array().square().sum();
}

/// Eigen's own analysis sums the counts in 32 bits, whatever they come to.
std::int64_t entriesOf(const Eigen::VectorXi& columnCounts) {
  return columnCounts.cast<std::int64_t>().sum();
}

bool doBlocksPay(const Eigen::VectorXi& columnCounts) {
  const double all = operations(columnCounts);
  return all >= kBlocksPay && all >= kBlocksPayPerColumn * static_cast<double>(columnCounts.size());
}

/// Whether the fronts need no more working memory than L.
bool isWorkSmall(const FrontTree& fronts, std::int64_t entriesOfL) {
  constexpr std::int64_t entrySize = sizeof(double) + sizeof(int);  // in L
  return workSize(fronts) * std::int64_t{sizeof(double)} <= entriesOfL * entrySize;
}

}  // namespace

Analysis analyze(const PermutedTriangles& matrix) {
  Analysis analysis;
  analysis.parent = eliminationTree(matrix.upper);
  analysis.columnCounts = columnCounts(matrix.lower, analysis.parent);
  const std::int64_t entries = entriesOf(analysis.columnCounts);
  if (entries > kMaxIndex) {
    throw std::length_error("vector");  // GCOVR_EXCL_LINE: takes 3 GB, scripts/steps/check_overflow
  }
  if (doBlocksPay(analysis.columnCounts)) {
    analysis.supernodes = Supernodes(matrix.upper, analysis.parent, analysis.columnCounts);
    analysis.fronts = groupIntoFronts(analysis.supernodes);
    analysis.blocksPay = isWorkSmall(analysis.fronts, entries);
  }
  return analysis;
}

}  // namespace quor
