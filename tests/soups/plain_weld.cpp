#include "plain_weld.h"

#include <algorithm>
#include <array>
#include <nanoflann.hpp>
#include <numeric>
#include <set>

namespace bench {
namespace {

struct Cloud {
  struct Point {
    double x, y, z;
  };
  std::vector<Point> points;
  std::array<double, 3> low;
  std::array<double, 3> high;

  std::size_t kdtree_get_point_count() const { return points.size(); }
  double kdtree_get_pt(std::size_t i, std::size_t axis) const {
    return axis == 0 ? points[i].x : axis == 1 ? points[i].y : points[i].z;
  }
  template <typename Box>
  bool kdtree_get_bbox(Box& box) const {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      box[axis].low = low[axis];
      box[axis].high = high[axis];
    }
    return true;
  }
};

Cloud makeCloud(std::int32_t count, const double* points) {
  Cloud cloud{{}, {points[0], points[1], points[2]}, {points[0], points[1], points[2]}};
  cloud.points.reserve(static_cast<std::size_t>(count));
  for (std::int32_t i = 0; i < count; ++i) {
    const double* p = points + 3 * static_cast<std::size_t>(i);
    cloud.points.push_back({p[0], p[1], p[2]});
    for (std::size_t axis = 0; axis < 3; ++axis) {
      cloud.low[axis] = std::min(cloud.low[axis], p[axis]);
      cloud.high[axis] = std::max(cloud.high[axis], p[axis]);
    }
  }
  return cloud;
}

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud,
                                                 3, std::uint32_t>;

std::int32_t rootOf(std::vector<std::int32_t>& parent, std::int32_t i) {
  while (parent[static_cast<std::size_t>(i)] != i) {
    std::int32_t& up = parent[static_cast<std::size_t>(i)];
    up = parent[static_cast<std::size_t>(up)];
    i = up;
  }
  return i;
}

}  // namespace

void plainWeld(std::int32_t pointCount, const double* points, std::int32_t triangleCount,
               const std::int32_t* triangles, double tolerance, Welded& out) {
  const Cloud cloud = makeCloud(pointCount, points);
  const Tree tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
  std::vector<std::int32_t> parent(static_cast<std::size_t>(pointCount));
  std::iota(parent.begin(), parent.end(), 0);
  const double reach = tolerance * tolerance;
  // The tree prunes with rounded sums and would miss pairs at the very edge: ask for a little more.
  const double asked = reach * (1.0 + 1e-9);
  std::vector<std::pair<std::uint32_t, double>> neighbours;
  for (std::int32_t i = 0; i < pointCount; ++i) {
    neighbours.clear();
    nanoflann::RadiusResultSet<double, std::uint32_t> found(asked, neighbours);
    tree.findNeighbors(found, points + 3 * static_cast<std::size_t>(i),
                       nanoflann::SearchParams(32, 0.0F, false));
    for (const auto& [neighbour, distance] : neighbours) {
      const auto j = static_cast<std::int32_t>(neighbour);
      if (j > i && distance < reach) {
        const std::int32_t ri = rootOf(parent, i);
        const std::int32_t rj = rootOf(parent, j);
        parent[static_cast<std::size_t>(std::max(ri, rj))] = std::min(ri, rj);
      }
    }
  }

  std::vector<std::int32_t> vertexOfRoot(parent.size(), -1);
  std::vector<std::int32_t> roots;
  for (std::int32_t i = 0; i < pointCount; ++i) {
    const std::int32_t root = rootOf(parent, i);
    std::int32_t& vertex = vertexOfRoot[static_cast<std::size_t>(root)];
    if (vertex < 0) {
      vertex = static_cast<std::int32_t>(roots.size());
      roots.push_back(root);
    }
    out.map[static_cast<std::size_t>(i)] = vertex;
  }
  out.vertexCount = static_cast<std::int32_t>(roots.size());
  for (std::size_t k = 0; k < roots.size(); ++k) {
    std::copy_n(points + 3 * static_cast<std::size_t>(roots[k]), 3, out.vertices.data() + 3 * k);
  }

  std::set<std::array<std::int32_t, 3>> seen;
  out.triangleCount = 0;
  for (std::size_t t = 0; t < static_cast<std::size_t>(triangleCount); ++t) {
    std::array<std::int32_t, 3> corners{};
    for (std::size_t k = 0; k < 3; ++k) {
      corners[k] = out.map[static_cast<std::size_t>(triangles[3 * t + k])];
    }
    std::array<std::int32_t, 3> key = corners;
    std::sort(key.begin(), key.end());
    if (key[0] != key[1] && key[1] != key[2] && seen.insert(key).second) {
      std::copy(corners.begin(), corners.end(),
                out.triangles.data() + 3 * static_cast<std::size_t>(out.triangleCount++));
    }
  }
}

}  // namespace bench
