#include "kit/solve_within.h"

#include "kit/boundary_values.h"
#include "kit/edge_pairs.h"
#include "kit/element_sizes.h"
#include "kit/error_estimate.h"
#include "kit/flip.h"
#include "kit/measure.h"
#include "kit/nested_fields.h"
#include "kit/refine.h"
#include "kit/singular_vertices.h"

#include "util/disjoint_sets.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace quorkit {
namespace {

constexpr double kLongest = 1e300;  // no edge is split for its length alone

/// Diagonal of the box around the triangles, and the largest absolute coordinate.
struct Extent {
  double diagonal = 0.0;
  double largestCoordinate = 0.0;
};

Extent extentOf(const MeshView& mesh) {
  Vec3 low = pointAt(mesh.vertices, mesh.triangles[0]);
  Vec3 high = low;
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const Vec3 p = pointAt(mesh.vertices, mesh.triangles[k]);
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return {distance(low, high), std::max({-low.x, -low.y, -low.z, high.x, high.y, high.z})};
}

/// The lowest vertex of a component without a value; -1 if there is none.
std::int32_t unprescribedVertex(const MeshView& mesh, const std::vector<double>& values) {
  std::vector<std::int32_t> parents = quor::DisjointSets::singletons(mesh.n);
  quor::DisjointSets components(parents.data());
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    components.link(mesh.triangles[k], mesh.triangles[k / 3 * 3]);
  }
  std::vector<bool> hasValue(mesh.vertexCount());
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    if (!std::isnan(values[toSize(v)])) {
      hasValue[toSize(components.root(v))] = true;
    }
  }
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    if (!hasValue[toSize(components.root(v))]) {
      return v;
    }
  }
  return -1;
}

/// Per triangle a label. Triangles with the same face, value and source have the same one; edges
/// between them may be flipped.
std::vector<std::int32_t> labelsOf(const Problem& problem) {
  const auto keyOf = [&problem](std::int32_t t) {
    const double value = problem.triangleValues != nullptr ? problem.triangleValues[t] : 0.0;
    const double source = problem.sources != nullptr ? problem.sources[t] : 0.0;
    const std::int32_t face = problem.faces != nullptr ? problem.faces[t] : 0;
    return std::make_tuple(face, std::isnan(value), std::isnan(value) ? 0.0 : value, source);
  };
  std::vector<std::int32_t> order(problem.mesh.triangleCount());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
    return std::make_pair(keyOf(a), a) < std::make_pair(keyOf(b), b);
  });
  std::vector<std::int32_t> labels(order.size());
  std::int32_t label = 0;
  for (std::size_t k = 0; k < order.size(); ++k) {
    label += k > 0 && keyOf(order[k]) != keyOf(order[k - 1]) ? 1 : 0;
    labels[toSize(order[k])] = label;
  }
  return labels;
}

/// Edges shorter than this many rounding steps of the coordinates have no shape any more.
constexpr double kFinest = 0x1p-40;

class Refinement {
 public:
  explicit Refinement(const Problem& problem)
      : problem_(problem),
        extent_(extentOf(problem.mesh)),
        labels_(labelsOf(problem)),
        level_{copyOf(problem.mesh), BoundaryValues(problem)},
        singular_(singularVertices(problem.mesh, level_.values)),
        estimate_(singular_, problem.mesh.vertexCount()),
        sizes_(singular_, problem.mesh.vertexCount(), kFinest * extent_.largestCoordinate) {}

  Solution run(const quor::Progress& progress) {
    if (isRefused()) {
      return std::move(solution_);
    }
    excludeJumps();
    flip();
    constexpr double kFirst = 1.0 / 12.0;
    refine({kFirst * extent_.diagonal});
    constexpr int kMostRounds = 40;
    double share = 0.0;
    for (int round = 0; round < kMostRounds; ++round) {
      const double next = share + 0.4 * (1.0 - share);
      const NestedFields nested =
          solveNested(problem_, level_, exempt_, progress.part(share, next));
      share = next;
      if (!take(nested) || isGoodEnough() || !refineWhereNeeded(nested)) {
        break;
      }
    }
    return std::move(solution_);
  }

 private:
  bool isRefused() {
    const BoundaryValues& values = level_.values;
    solution_.refusedVertex = values.isolatedVertex();
    solution_.refusal = Refusal::kIsolatedVertex;
    if (solution_.refusedVertex < 0) {
      solution_.refusedVertex = unprescribedVertex(problem_.mesh, values.perVertex());
      solution_.refusal = Refusal::kUnprescribed;
    }
    if (solution_.refusedVertex < 0) {
      solution_.refusal = Refusal::kNone;
    }
    return solution_.refusal != Refusal::kNone;
  }

  void excludeJumps() {
    solution_.jumps = level_.values.jumps();
    solution_.jumpRadius = solution_.jumps.empty() ? 0.0 : 0.01 * extent_.diagonal;
    for (const std::int32_t v : solution_.jumps) {
      const Vec3 p = pointAt(problem_.mesh.vertices, v);
      exempt_.segments.push_back({p, p});
    }
    for (const auto& [u, v] : level_.values.jumpEdges()) {
      exempt_.segments.push_back(
          {pointAt(problem_.mesh.vertices, u), pointAt(problem_.mesh.vertices, v)});
    }
    exempt_.radius = solution_.jumpRadius;
  }

  /// Flips what is flat and alike.
  void flip() {
    const std::size_t m = level_.mesh.triangleOrigins.size();
    std::vector<std::int32_t> labels(m);
    for (std::size_t t = 0; t < m; ++t) {
      labels[t] = labels_[toSize(level_.mesh.triangleOrigins[t])];
    }
    std::vector<bool> isFixed(3 * m);
    for (std::size_t side = 0; side < 3 * m; ++side) {
      isFixed[side] = level_.values.isPrescribed(
          level_.mesh.triangles[side], level_.mesh.triangles[toSize(nextSide(toIndex(side)))]);
    }
    flipFlatEdges(level_.mesh.vertices.data(), level_.view().n, level_.mesh.triangles, labels,
                  isFixed);
  }

  /// @return whether there was room
  bool refine(const EdgeLengths& lengths) {
    std::optional<MeshData> refined =
        refineUnlessMore(level_.view(), lengths, problem_.triangleLimit / 4);
    if (!refined) {
      return false;
    }
    for (std::int32_t& origin : refined->triangleOrigins) {
      origin = level_.mesh.triangleOrigins[toSize(origin)];
    }
    std::copy(level_.mesh.vertexOrigins.begin(), level_.mesh.vertexOrigins.end(),
              refined->vertexOrigins.begin());
    level_.values.follow(*refined, refined->triangleOrigins);
    assert(level_.values.perVertex().size() * 3 == refined->vertices.size());
    sizes_.follow(*refined);
    level_.mesh = std::move(*refined);
    flip();
    return true;
  }

  /// The first mesh knows nothing of the field: it has to be good by a margin.
  bool isGoodEnough() const {
    return solution_.isReached &&
           (solution_.rounds > 1 || solution_.error <= 0.5 * solution_.tolerance ||
            solution_.error == 0.0);
  }

  /// Makes a field the solution. A later one replaces it even with a larger estimate, which is more
  /// reliable on the finer mesh.
  /// @return whether it is one
  bool take(const NestedFields& nested) {
    const auto [low, high] = std::minmax_element(nested.field.begin(), nested.field.end());
    const double error = nested.isRegular ? estimate_.of(nested, level_.view()) : kInfinity;
    if (!std::isfinite(*high - *low) || !std::isfinite(error)) {
      if (solution_.rounds == 0) {
        solution_.refusal = Refusal::kNotSolvable;
      }
      return false;
    }
    ++solution_.rounds;
    if (solution_.rounds > 1) {
      lastError_ = solution_.error;
    }
    solution_.tolerance =
        problem_.isShareOfSpan ? problem_.tolerance * (*high - *low) : problem_.tolerance;
    solution_.error = error;
    // A constant field has no span to share, and no error but rounding.
    constexpr double kRounding = 1e-12;
    const double rounding = kRounding * std::max(std::abs(*low), std::abs(*high));
    solution_.isReached = error <= std::max(solution_.tolerance, rounding);
    solution_.field = nested.field;
    solution_.mesh = nested.fine.mesh;
    return true;
  }

  /// @return whether there was anything to refine, and room
  bool refineWhereNeeded(const NestedFields& nested) {
    if (solution_.error > 0.6 * lastError_) {
      allowed_ *= 0.5;
    }
    sizes_.lower(nested, level_, exempt_, estimate_, solution_.tolerance / ErrorEstimate::kReported,
                 allowed_);
    // Where there is no room for all that, there may be for a part of it.
    for (const double factor : {1.0, 1.5, 2.0, 3.0, 4.0}) {
      std::vector<double> sizes = sizes_.perVertex();
      std::transform(sizes.begin(), sizes.end(), sizes.begin(),
                     [factor](double size) { return factor * size; });
      const std::size_t before = level_.mesh.triangles.size();
      if (refine({kLongest, sizes.data()})) {
        return level_.mesh.triangles.size() > before;
      }
    }
    return false;
  }

  const Problem& problem_;
  const Extent extent_;
  const std::vector<std::int32_t> labels_;
  Level level_;
  const std::vector<SingularVertex> singular_;
  const ErrorEstimate estimate_;
  ElementSizes sizes_;
  Exemption exempt_;
  Solution solution_;
  double allowed_ = 0.5;  ///< surplus, as a part of the difference that is aimed at
  double lastError_ = kInfinity;
};

}  // namespace

Solution solveWithin(const Problem& problem, const quor::Progress& progress) {
  if (problem.mesh.m > kMostTriangles / 4) {
    throw std::length_error("too many triangles");
  }
  return Refinement(problem).run(progress);
}

}  // namespace quorkit
