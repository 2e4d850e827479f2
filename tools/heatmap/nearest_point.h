// How far the nearest of many points is.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace heatmap {

using Point = std::array<double, 3>;

double squaredDistance(const double* p, const double* q);

// A k-d tree (Bentley, 1975). All points in one plane cost no more than others, since each range is
// divided along the longest side of its box.
class NearestPoint {
 public:
  // Takes the points, all finite, of which there may be none.
  explicit NearestPoint(std::vector<Point> points);

  // The squared distance from p to the nearest point, but at most `most`.
  double squaredDistanceFrom(const double* p, double most) const;

 private:
  // A range of points of which the middle one divides the others: none before it is higher along
  // the axis, none behind it lower.
  struct Range {
    std::size_t begin, end;
    std::size_t middle() const { return begin + (end - begin) / 2; }
  };
  void divide(Range range);
  double look(Range range, const double* p, double nearest) const;

  std::vector<Point> points_;
  std::vector<unsigned char> axes_;  // of each middle point
};

}  // namespace heatmap
