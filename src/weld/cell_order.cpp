#include "weld/cell_order.h"

#include "weld/machine.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace quor {
namespace {

/// One axis of the grid: `cells.size()` slabs of equal width from `origin` on.
struct GridAxis {
  double origin = 0.0;
  double extent = 0.0;
  double slabsPerUnit = 0.0;
  std::vector<std::uint32_t> bitsOfSlab;  ///< the slab's number, its bits spread to their places

  std::uint32_t bitsAt(double coordinate) const {
    const auto last = static_cast<double>(bitsOfSlab.size() - 1);
    const double slab = (coordinate - origin) * slabsPerUnit;  // NaN (infinity times 0) gives 0
    return bitsOfSlab[static_cast<std::size_t>(std::min(std::max(0.0, slab), last))];
  }
};

constexpr std::size_t kSamples = 1024;
constexpr std::size_t kMaxBitsPerAxis = 12;
constexpr std::size_t kMaxBits = 28;
constexpr std::size_t kAhead = 32;  ///< points asked for before their turn

/// Covers the bulk of the coordinates along one axis: the range of a sample without the outermost
/// 1/64 on either side, and a little more, but not beyond the sample's own range. An outlier far
/// away must not shrink everything else into one cell.
void coverBulk(std::vector<double>& sample, GridAxis& axis) {
  std::sort(sample.begin(), sample.end());
  const std::size_t trimmed = sample.size() / 64;
  const double low = sample[trimmed];
  const double high = sample[sample.size() - 1 - trimmed];
  const double more = (high - low) / 16;
  axis.origin = std::max(low - more, sample.front());
  axis.extent = std::min(high + more, sample.back()) - axis.origin;
  // Extents that would overflow or underflow the slab arithmetic leave the axis undivided.
  if (!(axis.extent > 1e-290 && axis.extent < 1e290)) {
    axis.extent = 0.0;
  }
}

std::array<GridAxis, 3> coverBulk(const std::vector<std::int32_t>& selected, PointArray points) {
  std::array<GridAxis, 3> axes;
  std::vector<double> sample;
  const std::size_t step = std::max<std::size_t>(1, selected.size() / kSamples);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    sample.clear();
    for (std::size_t i = 0; i < selected.size(); i += step) {
      sample.push_back(points[selected[i]][axis]);
    }
    coverBulk(sample, axes[axis]);
  }
  return axes;
}

/// Halves the widest side again and again until there are `bits` halvings, the first of which gets
/// the uppermost bit of the cell number.
/// @return the number of halvings made: fewer if no side can be halved further
unsigned divide(std::array<GridAxis, 3>& axes, std::size_t bits) {
  std::array<double, 3> width{axes[0].extent, axes[1].extent, axes[2].extent};
  std::array<std::size_t, 3> halvings{};
  std::vector<std::size_t> axisOfBit;
  while (axisOfBit.size() < bits) {
    const auto widest =
        static_cast<std::size_t>(std::max_element(width.begin(), width.end()) - width.begin());
    if (!(width[widest] > 0.0)) {
      break;
    }
    axisOfBit.push_back(widest);
    ++halvings[widest];
    width[widest] = halvings[widest] < kMaxBitsPerAxis ? width[widest] / 2 : 0.0;
  }
  std::reverse(axisOfBit.begin(), axisOfBit.end());

  for (std::size_t a = 0; a < 3; ++a) {
    GridAxis& axis = axes[a];
    axis.bitsOfSlab.assign(std::size_t{1} << halvings[a], 0);
    for (std::size_t slab = 0; slab < axis.bitsOfSlab.size(); ++slab) {
      std::size_t rest = slab;
      for (std::size_t bit = 0; bit < axisOfBit.size(); ++bit) {
        if (axisOfBit[bit] == a) {
          axis.bitsOfSlab[slab] |= static_cast<std::uint32_t>((rest & 1U) << bit);
          rest >>= 1U;
        }
      }
    }
    axis.slabsPerUnit =
        halvings[a] > 0 ? static_cast<double>(axis.bitsOfSlab.size()) / axis.extent : 0.0;
  }
  return static_cast<unsigned>(axisOfBit.size());
}

std::size_t bitsToNumber(std::size_t count) {
  std::size_t bits = 0;
  while ((std::size_t{1} << bits) < count && bits < kMaxBits) {
    ++bits;
  }
  return bits;
}

}  // namespace

CellOrder orderByCell(const std::vector<std::int32_t>& selected, PointArray points) {
  CellOrder order;
  if (selected.empty()) {
    order.cellStart.assign(2, 0);
    return order;
  }
  std::array<GridAxis, 3> axes = coverBulk(selected, points);
  order.cellBits = divide(axes, bitsToNumber(selected.size()));

  // Counting sort. The counts are kept one place further on than the starts that they add up to,
  // and filling a cell moves its start to its end, that is to where the next one's belongs.
  const std::size_t cells = std::size_t{1} << order.cellBits;
  order.cellStart.assign(cells + 2, 0);
  std::vector<std::uint32_t> cellOf(selected.size());
  for (std::size_t i = 0; i < selected.size(); ++i) {
    prefetch(points[selected[std::min(i + kAhead, selected.size() - 1)]]);
    const Point p = points[selected[i]];
    cellOf[i] = axes[0].bitsAt(p[0]) | axes[1].bitsAt(p[1]) | axes[2].bitsAt(p[2]);
    ++order.cellStart[cellOf[i] + 2];
  }
  for (std::size_t cell = 2; cell < order.cellStart.size(); ++cell) {
    order.cellStart[cell] += order.cellStart[cell - 1];
  }
  order.points.resize(selected.size());
  for (std::size_t i = 0; i < selected.size(); ++i) {
    order.points[order.cellStart[cellOf[i] + 1]++] = selected[i];
  }
  order.cellStart.pop_back();
  return order;
}

}  // namespace quor
