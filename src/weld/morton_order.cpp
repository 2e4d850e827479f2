#include "weld/morton_order.h"

#include "util/index.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>

namespace quor {
namespace {

constexpr std::size_t kSamples = 1024;
constexpr std::size_t kMaxBitsPerAxis = 12;
constexpr std::size_t kMaxBits = 28;

/// One axis of the grid: `bitsOfSlab.size()` slabs of equal width between two planes.
struct GridAxis {
  double low = 0.0;
  double high = 0.0;
  double slabsPerUnit = 0.0;
  std::vector<std::uint32_t> bitsOfSlab;  ///< the slab's number, its bits spread to their places

  bool covers(double coordinate) const { return coordinate >= low && coordinate <= high; }

  /// @param coordinate  one that the axis covers
  std::uint32_t bitsAt(double coordinate) const {
    const double slab = (coordinate - low) * slabsPerUnit;  // NaN if an infinite range is undivided
    return bitsOfSlab[slab > 0.0 ? std::min(static_cast<std::size_t>(slab), bitsOfSlab.size() - 1)
                                 : 0];
  }
};

/// A grid over the bulk of some points.
class Grid {
 public:
  /// @param voxels  how many to make, about
  Grid(const std::vector<std::int32_t>& selected, PointArray points, std::size_t voxels) {
    std::size_t bits = 0;
    while ((std::size_t{1} << bits) < voxels && bits < kMaxBits) {
      ++bits;
    }
    coverBulk(selected, points);
    divide(bits);
  }

  unsigned bits() const { return bits_; }
  std::uint32_t outside() const { return std::uint32_t{1} << bits_; }

  std::uint32_t voxelOf(Point p) const {
    const bool covered = axes_[0].covers(p[0]) && axes_[1].covers(p[1]) && axes_[2].covers(p[2]);
    return covered ? axes_[0].bitsAt(p[0]) | axes_[1].bitsAt(p[1]) | axes_[2].bitsAt(p[2])
                   : outside();
  }

 private:
  void coverBulk(const std::vector<std::int32_t>& selected, PointArray points) {
    const std::vector<std::int32_t> sampled = sample(selected);
    std::vector<double> coordinates(sampled.size());
    for (std::size_t axis = 0; axis < 3; ++axis) {
      std::transform(sampled.begin(), sampled.end(), coordinates.begin(),
                     [&](std::int32_t i) { return points[i][axis]; });
      coverBulk(coordinates, axes_[axis]);
    }
  }

  /// One out of every equal share, at a place in it that no regular pattern of points follows.
  static std::vector<std::int32_t> sample(const std::vector<std::int32_t>& selected) {
    const std::size_t share = std::max<std::size_t>(1, selected.size() / kSamples);
    std::vector<std::int32_t> sampled;
    std::uint32_t noise = 1;
    for (std::size_t first = 0; first + share <= selected.size(); first += share) {
      noise = noise * 1664525U + 1013904223U;  // Knuth's linear congruential generator
      sampled.push_back(selected[first + toSize(std::uint64_t{noise} * share >> 32U)]);
    }
    return sampled;
  }

  /// The range of the sample without the outermost 1/64 on either side, and 1/16 more.
  static void coverBulk(std::vector<double>& coordinates, GridAxis& axis) {
    std::sort(coordinates.begin(), coordinates.end());
    const std::size_t trimmed = coordinates.size() / 64;
    axis.low = coordinates[trimmed];
    axis.high = coordinates[coordinates.size() - 1 - trimmed];
    const double extent = axis.high - axis.low;
    axis.low -= extent / 16;
    axis.high += extent / 16;
  }

  /// Halves the widest side of a voxel again and again. The first halving gets the uppermost bit of
  /// the voxel number.
  void divide(std::size_t bits) {
    std::array<double, 3> width{};
    for (std::size_t a = 0; a < 3; ++a) {
      const double extent = axes_[a].high - axes_[a].low;
      if (!(extent < 1e290)) {  // slab arithmetic would overflow, and no other axis is worth it
        bits = 0;
      }
      width[a] = extent > 1e-290 ? extent : 0.0;  // below, the axis stays in one piece
    }
    std::array<std::size_t, 3> halvings{};
    std::vector<std::size_t> axisOfBit;
    while (axisOfBit.size() < bits) {
      const std::size_t widest =
          toSize(std::max_element(width.begin(), width.end()) - width.begin());
      if (!(width[widest] > 0.0) || halvings[widest] == kMaxBitsPerAxis) {
        break;
      }
      axisOfBit.push_back(widest);
      ++halvings[widest];
      width[widest] /= 2;
    }
    std::reverse(axisOfBit.begin(), axisOfBit.end());
    bits_ = static_cast<unsigned>(axisOfBit.size());
    for (std::size_t a = 0; a < 3; ++a) {
      spreadBits(a, axisOfBit, axes_[a]);
    }
  }

  static void spreadBits(std::size_t number, const std::vector<std::size_t>& axisOfBit,
                         GridAxis& axis) {
    axis.bitsOfSlab = {0};
    for (std::size_t bit = 0; bit < axisOfBit.size(); ++bit) {
      if (axisOfBit[bit] == number) {  // the next bit of the slab number: twice as many slabs
        const std::size_t slabs = axis.bitsOfSlab.size();
        for (std::size_t slab = 0; slab < slabs; ++slab) {
          axis.bitsOfSlab.push_back(axis.bitsOfSlab[slab] | std::uint32_t{1} << bit);
        }
      }
    }
    if (axis.bitsOfSlab.size() > 1) {
      axis.slabsPerUnit = static_cast<double>(axis.bitsOfSlab.size()) / (axis.high - axis.low);
    }
  }

  std::array<GridAxis, 3> axes_;
  unsigned bits_ = 0;
};

}  // namespace

MortonOrder orderAlongMortonCurve(const std::vector<std::int32_t>& selected, PointArray points) {
  MortonOrder order;
  if (selected.empty()) {
    return order;
  }
  const Grid grid(selected, points, selected.size() / 2);
  order.voxelBits = grid.bits() + 1;

  // Counting sort. The counts stand one place further on than the starts that they add up to, and
  // filling a voxel moves its start to its end, that is to where the next one's belongs.
  order.voxelStart.resize(toSize(grid.outside()) + 3);
  std::vector<std::uint32_t> voxelOf(selected.size());
  for (std::size_t i = 0; i < selected.size(); ++i) {
    voxelOf[i] = grid.voxelOf(points[selected[i]]);
    ++order.voxelStart[voxelOf[i] + 2];
  }
  for (std::size_t voxel = 2; voxel < order.voxelStart.size(); ++voxel) {
    order.voxelStart[voxel] += order.voxelStart[voxel - 1];
  }
  order.points.resize(selected.size());
  for (std::size_t i = 0; i < selected.size(); ++i) {
    assert(voxelOf[i] <= grid.outside());
    order.points[order.voxelStart[voxelOf[i] + 1]++] = selected[i];
  }
  return order;
}

}  // namespace quor
