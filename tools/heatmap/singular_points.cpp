#include "singular_points.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

namespace heatmap {
namespace {

constexpr double kHalfTurn = 3.14159265358979;
// Curved surfaces have small excesses everywhere, which do not matter.
constexpr double kExcess = 0.3;

// Of the sides at corner p.
double angleAt(const double* p, const double* q, const double* r) {
  const double a = squaredDistance(p, q);
  const double b = squaredDistance(p, r);
  const double cosine = (a + b - squaredDistance(q, r)) / (2.0 * std::sqrt(a * b));
  return std::acos(std::clamp(cosine, -1.0, 1.0));
}

// Around each vertex, the angles of the triangles that count.
template <typename Counts>
std::vector<double> turns(const Mesh& mesh, const Counts& counts) {
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
std::vector<Point> verticesWhere(const Mesh& mesh, const Predicate& predicate) {
  std::vector<Point> points;
  for (std::int32_t i = 0; i < mesh.vertexCount(); ++i) {
    if (predicate(static_cast<std::size_t>(i))) {
      const double* const p = mesh.vertex(i);
      points.push_back({p[0], p[1], p[2]});
    }
  }
  return points;
}

}  // namespace

std::vector<Point> cornersOfSurface(const Mesh& part) {
  const std::vector<double> turn = turns(part, [](std::int32_t /*t*/) { return true; });
  return verticesWhere(part, [&](std::size_t i) { return turn[i] > 2.0 * kHalfTurn + kExcess; });
}

std::vector<Point> cornersOfPrescribed(const Mesh& part, const std::vector<bool>& isFace,
                                       const std::vector<bool>& isVertex) {
  const std::vector<double> turn =
      turns(part, [&](std::int32_t t) { return !isFace[static_cast<std::size_t>(t)]; });
  return verticesWhere(part,
                       [&](std::size_t i) { return isVertex[i] && turn[i] > kHalfTurn + kExcess; });
}

std::vector<double> sizesNear(std::vector<Point> points, const Mesh& mesh, double length) {
  constexpr double kSmallest = 1.0 / 16.0;
  constexpr double kGrowth = 0.3;
  std::vector<double> sizes(mesh.vertices.size() / 3, std::numeric_limits<double>::infinity());
  const double reach = (1.0 - kSmallest) * length / kGrowth;
  const NearestPoint tree(std::move(points));
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const double nearest =
        tree.squaredDistanceFrom(mesh.vertex(static_cast<std::int32_t>(i)), reach * reach);
    if (nearest < reach * reach) {
      sizes[i] = kSmallest * length + kGrowth * std::sqrt(nearest);
    }
  }
  const bool isAnySmall =
      std::any_of(sizes.begin(), sizes.end(), [length](double size) { return size < length; });
  return isAnySmall ? sizes : std::vector<double>();
}

}  // namespace heatmap
