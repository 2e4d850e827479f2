#include "kit/nested_fields.h"

#include "kit/edge_pairs.h"
#include "kit/intrinsic_delaunay.h"
#include "kit/split_once.h"
#include "kit/weighted_system.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quorkit {
namespace {

/// The sides that must stay what they are: those with prescribed values along them.
std::vector<bool> prescribedSides(const Level& level) {
  const std::vector<std::int32_t>& corners = level.mesh.triangles;
  std::vector<bool> isFixed(corners.size());
  const std::vector<double>& values = level.values.perVertex();
  for (std::size_t side = 0; side < corners.size(); ++side) {
    const std::int32_t u = corners[side];
    const std::int32_t v = corners[toSize(nextSide(toIndex(side)))];
    isFixed[side] = !std::isnan(values[toSize(u)]) && !std::isnan(values[toSize(v)]) &&
                    level.values.isPrescribed(u, v);
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
  return {intrinsicDelaunayEdges(level.view(), prescribedSides(level)), level.values.perVertex(),
          progress};
}

/// origins[t] becomes the origin of the triangle that t is part of.
void compose(std::vector<std::int32_t>& origins, const std::vector<std::int32_t>& earlier) {
  for (std::int32_t& origin : origins) {
    origin = earlier[toSize(origin)];
  }
}

/// The mesh with every triangle in four.
NestedFields splitNested(const Level& coarse) {
  NestedFields nested{{splitOnce(coarse.view()), coarse.values}, {}, {}, {}, {}, 0, false};
  MeshData& split = nested.fine.mesh;
  std::copy(coarse.mesh.vertexOrigins.begin(), coarse.mesh.vertexOrigins.end(),
            split.vertexOrigins.begin());
  compose(split.triangleOrigins, coarse.mesh.triangleOrigins);
  nested.fine.values.follow(split, split.triangleOrigins);
  assert(nested.fine.values.perVertex().size() * 3 == split.vertices.size());
  return nested;
}

/// The field less another one, which is given at the coarse vertices and linear between them.
std::vector<double> lessInterpolated(const NestedFields& nested, std::vector<double> coarse) {
  const std::vector<std::int32_t>& origins = nested.fine.mesh.vertexOrigins;
  const std::size_t first = coarse.size();
  coarse.resize(nested.field.size());
  for (std::size_t v = first; v < coarse.size(); ++v) {
    assert(toSize(origins[2 * v]) < first && toSize(origins[2 * v + 1]) < first);
    coarse[v] = 0.5 * coarse[toSize(origins[2 * v])] + 0.5 * coarse[toSize(origins[2 * v + 1])];
  }
  for (std::size_t v = 0; v < coarse.size(); ++v) {
    coarse[v] = nested.field[v] - coarse[v];
  }
  return coarse;
}

void clearExempt(NestedFields& nested, const Exemption& exempt) {
  for (std::size_t v = 0; !exempt.segments.empty() && v < nested.difference.size(); ++v) {
    if (exempt.contains(pointAt(nested.fine.mesh.vertices.data(), toIndex(v)))) {
      nested.difference[v] = 0.0;
    }
  }
}

}  // namespace

bool Exemption::contains(Vec3 p) const {
  return std::any_of(segments.begin(), segments.end(), [&](const Segment& segment) {
    const Vec3 along = segment.to - segment.from;
    const double squared = dot(along, along);
    const double share =
        squared > 0.0 ? std::clamp(dot(p - segment.from, along) / squared, 0.0, 1.0) : 0.0;
    return squaredDistance(segment.from + share * along, p) < radius * radius;
  });
}

NestedFields solveNested(const Problem& problem, const Level& coarse, const Exemption& exempt,
                         const quor::Progress& progress) {
  NestedFields nested = splitNested(coarse);
  const WeightedSystem coarseSystem = systemOf(coarse, progress.part(0.0, 0.2));
  std::vector<double> coarseField =
      coarseSystem.solve(coarse.values.perVertex(), sourceValues(problem, coarse));
  const std::size_t coarseCount = coarseField.size();
  const WeightedSystem system = systemOf(nested.fine, progress.part(0.2, 1.0));
  const std::vector<double>& values = nested.fine.values.perVertex();
  nested.field = system.solve(values, sourceValues(problem, nested.fine));
  nested.isRegular = coarseSystem.isRegular() && system.isRegular();
  nested.surplus = lessInterpolated(
      nested,
      {nested.field.begin(), nested.field.begin() + static_cast<std::ptrdiff_t>(coarseCount)});
  nested.difference = lessInterpolated(nested, std::move(coarseField));
  clearExempt(nested, exempt);
  const auto isLess = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto begin = nested.difference.begin();
  nested.worstVertex = toIndex(
      std::max_element(begin, begin + static_cast<std::ptrdiff_t>(coarseCount), isLess) - begin);
  std::vector<double> point(values.size(), 0.0);
  point[toSize(nested.worstVertex)] = -1.0;
  std::vector<double> nothing = values;
  std::transform(values.begin(), values.end(), nothing.begin(), [](double) { return 0.0; });
  nested.green = system.solve(nothing, point);
  return nested;
}

}  // namespace quorkit
