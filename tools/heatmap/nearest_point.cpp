#include "nearest_point.h"

#include <algorithm>
#include <utility>

namespace heatmap {

double squaredDistance(const double* p, const double* q) {
  const double dx = p[0] - q[0];
  const double dy = p[1] - q[1];
  const double dz = p[2] - q[2];
  return dx * dx + dy * dy + dz * dz;
}

NearestPoint::NearestPoint(std::vector<Point> points)
    : points_(std::move(points)), axes_(points_.size()) {
  divide({0, points_.size()});
}

double NearestPoint::squaredDistanceFrom(const double* p, double most) const {
  return look({0, points_.size()}, p, most);
}

// As deep as the number of points has binary digits.
void NearestPoint::divide(Range range) {
  if (range.begin == range.end) {
    return;
  }
  const auto at = [this](std::size_t i) {
    return points_.begin() + static_cast<std::vector<Point>::difference_type>(i);
  };
  Point low = points_[range.begin];
  Point high = low;
  std::for_each(at(range.begin), at(range.end), [&](const Point& p) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], p[axis]);
      high[axis] = std::max(high[axis], p[axis]);
    }
  });
  std::size_t longest = 0;
  for (std::size_t axis = 1; axis < 3; ++axis) {
    longest = high[axis] - low[axis] > high[longest] - low[longest] ? axis : longest;
  }
  const std::size_t middle = range.middle();
  std::nth_element(at(range.begin), at(middle), at(range.end),
                   [&](const Point& a, const Point& b) { return a[longest] < b[longest]; });
  axes_[middle] = static_cast<unsigned char>(longest);
  divide({range.begin, middle});
  divide({middle + 1, range.end});
}

double NearestPoint::look(Range range, const double* p, double nearest) const {
  if (range.begin == range.end) {
    return nearest;
  }
  const std::size_t middle = range.middle();
  const Point& divider = points_[middle];
  nearest = std::min(nearest, squaredDistance(p, divider.data()));
  const double beyond = p[axes_[middle]] - divider[axes_[middle]];
  const Range before{range.begin, middle};
  const Range behind{middle + 1, range.end};
  nearest = look(beyond < 0.0 ? before : behind, p, nearest);
  return beyond * beyond < nearest ? look(beyond < 0.0 ? behind : before, p, nearest) : nearest;
}

}  // namespace heatmap
