#include "kit/singular_vertices.h"

#include "kit/edge_pairs.h"
#include "kit/measure.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorkit {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// The angle of a direction above the x axis, x + iy with y >= 0, by nothing but exactly rounded
/// operations, so that it is the same everywhere. Good to 1e-9: the angle is halved until the
/// series is short.
double angleOf(double x, double y) {
  const double length = std::sqrt(x * x + y * y);
  if (!(length > 0.0)) {
    return 0.0;
  }
  double cosine = x / length;
  double factor = 1.0;
  while (cosine < 0.99) {  // at most six times
    cosine = std::sqrt(0.5 * (1.0 + std::max(cosine, -1.0)));
    factor *= 2.0;
  }
  // acos(1 - z) = sqrt(2z) (1 + z/12 + 3z^2/160 + 5z^3/896 + ...)
  const double z = std::max(1.0 - cosine, 0.0);
  return factor * std::sqrt(2.0 * z) *
         (1.0 + z / 12.0 + 3.0 * z * z / 160.0 + 5.0 * z * z * z / 896.0);
}

/// The angle of triangle side / 3 at the corner from which the side leads.
double angleAt(const MeshView& mesh, std::int32_t side) {
  const Vec3 p = pointAt(mesh.vertices, mesh.triangles[side]);
  const Vec3 u = pointAt(mesh.vertices, mesh.triangles[nextSide(side)]) - p;
  const Vec3 v = pointAt(mesh.vertices, mesh.triangles[previousSide(side)]) - p;
  const Vec3 normal = cross(u, v);
  return angleOf(dot(u, v), std::sqrt(dot(normal, normal)));
}

enum class Bound { kNone, kPrescribed, kBorder };

/// Goes around vertices, sector by sector.
class Sectors {
 public:
  Sectors(const MeshView& mesh, const BoundaryValues& values)
      : mesh_(mesh),
        values_(values),
        pairs_(pairSides(mesh)),
        isSeen_(3 * mesh.triangleCount()),
        exponent_(mesh.vertexCount(), 2.0) {
    for (std::int32_t side = 0; side < 3 * mesh.m; ++side) {
      if (!isSeen_[toSize(side)]) {
        measureSector(side);
      }
    }
  }

  double exponent(std::size_t vertex) const { return exponent_[vertex]; }

 private:
  /// What bounds a sector at a side.
  Bound boundAt(std::int32_t side) const {
    if (values_.isPrescribed(mesh_.triangles[side], mesh_.triangles[nextSide(side)])) {
      return Bound::kPrescribed;
    }
    return pairs_[toSize(side)] == kNoSide ? Bound::kBorder : Bound::kNone;
  }

  /// The sector around the corner from which the side leads, with all triangles in it.
  void measureSector(std::int32_t start) {
    double angle = angleAt(mesh_, start);
    isSeen_[toSize(start)] = true;
    // To one hand across the side itself, to the other across the one before it.
    std::int32_t side = start;
    Bound first = boundAt(side);
    while (first == Bound::kNone) {
      side = nextSide(pairs_[toSize(side)]);
      if (side == start) {
        note(mesh_.triangles[start], 2.0 * kPi / angle);
        return;
      }
      angle += angleAt(mesh_, side);
      isSeen_[toSize(side)] = true;
      first = boundAt(side);
    }
    side = previousSide(start);
    Bound second = boundAt(side);
    while (second == Bound::kNone) {
      const std::int32_t next = pairs_[toSize(side)];
      angle += angleAt(mesh_, next);
      isSeen_[toSize(next)] = true;
      side = previousSide(next);
      second = boundAt(side);
    }
    note(mesh_.triangles[start], (first == second ? kPi : 0.5 * kPi) / angle);
  }

  void note(std::int32_t vertex, double exponent) {
    exponent_[toSize(vertex)] = std::min(exponent_[toSize(vertex)], exponent);
  }

  const MeshView& mesh_;
  const BoundaryValues& values_;
  std::vector<std::int32_t> pairs_;
  std::vector<bool> isSeen_;  ///< corners, by the side that leads from them
  std::vector<double> exponent_;
};

}  // namespace

std::vector<SingularVertex> singularVertices(const MeshView& mesh, const BoundaryValues& values) {
  const Sectors sectors(mesh, values);
  std::vector<SingularVertex> found;
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    if (sectors.exponent(toSize(v)) < kRegular) {
      found.push_back({v, sectors.exponent(toSize(v))});
    }
  }
  return found;
}

}  // namespace quorkit
