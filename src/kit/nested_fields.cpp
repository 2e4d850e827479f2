#include "kit/nested_fields.h"

#include "kit/edge_pairs.h"
#include "kit/intrinsic_delaunay.h"
#include "kit/refine.h"
#include "kit/split_once.h"
#include "kit/weighted_system.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace quorkit {
namespace {

/// The sides that must stay what they are: those with prescribed values along them.
std::vector<bool> prescribedSides(const Level& level) {
  const std::vector<std::int32_t>& corners = level.mesh.triangles;
  std::vector<bool> isFixed(corners.size());
  const std::vector<double>& values = level.prescription.values();
  for (std::size_t side = 0; side < corners.size(); ++side) {
    const std::int32_t u = corners[side];
    const std::int32_t v = corners[toSize(nextSide(toIndex(side)))];
    isFixed[side] = !std::isnan(values[toSize(u)]) && !std::isnan(values[toSize(v)]) &&
                    level.prescription.isPrescribed(u, v);
  }
  return isFixed;
}

/// The source value of each vertex: a third of density times area of each of its triangles.
std::vector<double> sourceValues(const Problem& problem, const Level& level) {
  std::vector<double> sources;
  if (problem.sources == nullptr) {
    return sources;
  }
  const MeshView mesh = level.view();
  sources.assign(mesh.vertexCount(), 0.0);
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const c = mesh.triangles + 3 * t;
    const double third = problem.sources[level.mesh.triangleOrigins[t]] *
                         doubledArea(pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                                     pointAt(mesh.vertices, c[2])) /
                         6.0;
    for (std::size_t k = 0; k < 3; ++k) {
      sources[toSize(c[k])] += third;
    }
  }
  return sources;
}

WeightedSystem systemOf(const Level& level, const quor::Progress& progress) {
  return WeightedSystem(intrinsicDelaunayEdges(level.view(), prescribedSides(level)),
                        level.prescription.values(), progress);
}

/// origins[t] becomes the origin of the triangle that t is part of.
void compose(std::vector<std::int32_t>& origins, const std::vector<std::int32_t>& earlier) {
  for (std::int32_t& origin : origins) {
    origin = earlier[toSize(origin)];
  }
}

/// How often the edges at a singular vertex are to be halved so that the error there becomes as
/// small beside the difference as elsewhere.
int halvings(double exponent) {
  return static_cast<int>(std::ceil(2.0 / exponent));
}

/// Lengths for the edges at each vertex, infinite but at singular ones.
std::vector<double> sizesNear(const MeshView& mesh, const std::vector<SingularVertex>& singular) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<double> sizes(mesh.vertexCount(), kInfinity);
  std::vector<int> wanted(mesh.vertexCount());
  for (const SingularVertex& s : singular) {
    wanted[toSize(s.vertex)] = halvings(s.exponent);
  }
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    for (const std::size_t other : {k / 3 * 3 + (k + 1) % 3, k / 3 * 3 + (k + 2) % 3}) {
      const std::size_t v = toSize(mesh.triangles[k]);
      if (wanted[v] > 1) {
        const double edge = distance(pointAt(mesh.vertices, mesh.triangles[k]),
                                     pointAt(mesh.vertices, mesh.triangles[other]));
        sizes[v] = std::min(sizes[v], std::ldexp(edge, 1 - wanted[v]));
      }
    }
  }
  return sizes;
}

/// @return nothing if there would be more than `most` triangles
std::optional<NestedFields> refineNested(const Level& coarse,
                                         const std::vector<SingularVertex>& singular,
                                         std::int32_t most) {
  const MeshView view = coarse.view();
  if (view.m > most / 4) {
    return std::nullopt;
  }
  NestedFields nested{{splitOnce(view), coarse.prescription}, {}, {}, {}, {}, 0, false};
  MeshData& split = nested.fine.mesh;
  std::copy(coarse.mesh.vertexOrigins.begin(), coarse.mesh.vertexOrigins.end(),
            split.vertexOrigins.begin());
  nested.coarseTriangles = split.triangleOrigins;
  compose(split.triangleOrigins, coarse.mesh.triangleOrigins);
  nested.fine.prescription.follow(split, split.triangleOrigins);
  const std::vector<double> sizes = sizesNear(nested.fine.view(), singular);
  constexpr double kLongest = 1e300;  // no edge is split for its length alone
  std::optional<MeshData> graded =
      refineUnlessMore(nested.fine.view(), {kLongest, sizes.data()}, most);
  if (!graded) {
    return std::nullopt;
  }
  std::copy(split.vertexOrigins.begin(), split.vertexOrigins.end(), graded->vertexOrigins.begin());
  std::vector<std::int32_t> coarseTriangles = graded->triangleOrigins;
  compose(coarseTriangles, nested.coarseTriangles);
  compose(graded->triangleOrigins, split.triangleOrigins);
  nested.coarseTriangles = std::move(coarseTriangles);
  nested.fine.prescription.follow(*graded, graded->triangleOrigins);
  split = std::move(*graded);
  return nested;
}

/// The field less the coarse one, which is linear between the origins of each vertex.
void subtractInterpolated(NestedFields& nested, std::vector<double> coarse) {
  const std::vector<std::int32_t>& origins = nested.fine.mesh.vertexOrigins;
  const std::size_t first = coarse.size();
  coarse.resize(nested.field.size());
  for (std::size_t v = first; v < coarse.size(); ++v) {
    coarse[v] = 0.5 * coarse[toSize(origins[2 * v])] + 0.5 * coarse[toSize(origins[2 * v + 1])];
  }
  nested.difference.resize(nested.field.size());
  for (std::size_t v = 0; v < coarse.size(); ++v) {
    nested.difference[v] = nested.field[v] - coarse[v];
  }
}

void clearExempt(NestedFields& nested, const Exemption& exempt) {
  for (std::size_t v = 0; !exempt.centers.empty() && v < nested.difference.size(); ++v) {
    if (exempt.contains(pointAt(nested.fine.mesh.vertices.data(), toIndex(v)))) {
      nested.difference[v] = 0.0;
    }
  }
}

}  // namespace

bool Exemption::contains(Vec3 p) const {
  return std::any_of(centers.begin(), centers.end(), [&](Vec3 center) {
    return squaredDistance(center, p) < radius * radius;
  });
}

std::optional<NestedFields> solveNested(const Problem& problem, const Level& coarse,
                                        const std::vector<SingularVertex>& singular,
                                        std::int32_t most, const Exemption& exempt,
                                        const quor::Progress& progress) {
  std::optional<NestedFields> nested = refineNested(coarse, singular, most);
  if (!nested) {
    return nested;
  }
  const WeightedSystem coarseSystem = systemOf(coarse, progress.part(0.0, 0.2));
  std::vector<double> coarseField = coarseSystem.solve(coarse.prescription.values(),
                                                       sourceValues(problem, coarse));
  const std::size_t coarseCount = coarseField.size();
  const WeightedSystem system = systemOf(nested->fine, progress.part(0.2, 1.0));
  const std::vector<double>& values = nested->fine.prescription.values();
  nested->field = system.solve(values, sourceValues(problem, nested->fine));
  nested->isRegular = coarseSystem.isRegular() && system.isRegular();
  subtractInterpolated(*nested, std::move(coarseField));
  clearExempt(*nested, exempt);
  const auto isLess = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto begin = nested->difference.begin();
  nested->worstVertex = toIndex(
      std::max_element(begin, begin + static_cast<std::ptrdiff_t>(coarseCount), isLess) - begin);
  std::vector<double> point(values.size(), 0.0);
  point[toSize(nested->worstVertex)] = -1.0;
  std::vector<double> nothing = values;
  std::transform(values.begin(), values.end(), nothing.begin(), [](double) { return 0.0; });
  nested->green = system.solve(nothing, point);
  return nested;
}

}  // namespace quorkit
