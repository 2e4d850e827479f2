#include "solve/singular_points.h"

#include "part/point_tree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace heatmap {
namespace {

constexpr double kHalfTurn = 3.14159265358979;
// Curved surfaces have small excesses everywhere, which do not matter.
constexpr double kExcess = 0.3;

double squaredDistance(const double* p, const double* q) {
  const double dx = p[0] - q[0];
  const double dy = p[1] - q[1];
  const double dz = p[2] - q[2];
  return dx * dx + dy * dy + dz * dz;
}

// Of the sides at corner p.
double angleAt(const double* p, const double* q, const double* r) {
  const double a = squaredDistance(p, q);
  const double b = squaredDistance(p, r);
  const double cosine = (a + b - squaredDistance(q, r)) / (2.0 * std::sqrt(a * b));
  return std::acos(std::clamp(cosine, -1.0, 1.0));
}

// Around each vertex, the angles of the triangles that count.
template <typename Counts>
std::vector<double> turns(const Surface& mesh, const Counts& counts) {
  std::vector<double> turn(static_cast<std::size_t>(mesh.vertexCount()));
  for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const corner = mesh.triangle(t);
    for (std::size_t k = 0; k < 3 && counts(t); ++k) {
      turn[static_cast<std::size_t>(corner[k])] +=
          angleAt(mesh.vertex(corner[k]), mesh.vertex(corner[(k + 1) % 3]),
                  mesh.vertex(corner[(k + 2) % 3]));
    }
  }
  return turn;
}

template <typename Predicate>
std::vector<Position> verticesWhere(const Surface& mesh, const Predicate& predicate) {
  std::vector<Position> points;
  for (std::int32_t i = 0; i < mesh.vertexCount(); ++i) {
    if (predicate(static_cast<std::size_t>(i))) {
      const double* const p = mesh.vertex(i);
      points.push_back({p[0], p[1], p[2]});
    }
  }
  return points;
}

}  // namespace

std::vector<Position> cornersOfSurface(const Surface& part) {
  const std::vector<double> turn = turns(part, [](std::int32_t /*t*/) { return true; });
  return verticesWhere(part, [&](std::size_t i) { return turn[i] > 2.0 * kHalfTurn + kExcess; });
}

std::vector<Position> cornersOfPrescribed(const Surface& part, const std::vector<bool>& isFace,
                                          const std::vector<bool>& isVertex) {
  const std::vector<double> turn =
      turns(part, [&](std::int32_t t) { return !isFace[static_cast<std::size_t>(t)]; });
  return verticesWhere(part,
                       [&](std::size_t i) { return isVertex[i] && turn[i] > kHalfTurn + kExcess; });
}

std::vector<double> sizesNear(const std::vector<Position>& points, const Surface& mesh,
                              double length) {
  constexpr double kSmallest = 1.0 / 16.0;
  constexpr double kGrowth = 0.3;
  const double reach = (1.0 - kSmallest) * length / kGrowth;
  std::vector<double> sizes(mesh.vertices.size() / 3, std::numeric_limits<double>::infinity());
  const PointCloud cloud{points};
  const PointTree tree(3, cloud);
  bool isAnySmall = false;
  for (std::size_t i = 0; i < sizes.size() && !points.empty(); ++i) {
    std::size_t nearest = 0;
    double squared = 0.0;
    tree.knnSearch(mesh.vertex(toIndex(i)), 1, &nearest, &squared);
    const double size = kSmallest * length + kGrowth * std::sqrt(squared);
    if (squared < reach * reach && size < length) {
      sizes[i] = size;
      isAnySmall = true;
    }
  }
  return isAnySmall ? sizes : std::vector<double>();
}

}  // namespace heatmap
