// Points that are searched for the nearest, by nanoflann.
#pragma once

#include "part/surface.h"

#include <nanoflann.hpp>

#include <cstddef>
#include <vector>

namespace heatmap {

// What nanoflann wants to know of them.
struct PointCloud {
  std::vector<Position> points;

  std::size_t kdtree_get_point_count() const { return points.size(); }
  double kdtree_get_pt(std::size_t i, std::size_t axis) const { return points[i][axis]; }
  template <typename Box>
  bool kdtree_get_bbox(Box& /*box*/) const {
    return false;  // none is known beforehand
  }
};

// Made of a cloud, which must outlive it and not change.
using PointTree =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, PointCloud>,
                                        PointCloud, 3, std::size_t>;

}  // namespace heatmap
