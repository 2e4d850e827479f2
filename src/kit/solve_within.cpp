#include "kit/solve_within.h"

#include "kit/boundary_values.h"
#include "kit/edge_pairs.h"
#include "kit/flip.h"
#include "kit/nested_fields.h"
#include "kit/refine.h"
#include "kit/singular_vertices.h"

#include "util/disjoint_sets.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

namespace quorkit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLongest = 1e300;  // no edge is split for its length alone

/// The error that is told, as a part of the largest difference between the two fields. Where the
/// field is smooth the fine one's true error is a third of it; more than twice that is told.
constexpr double kTold = 0.75;

/// At a singular vertex of exponent a halving the elements leaves 2^-a of the error, so that the
/// fine one's is 1 / (2^a - 1) of the difference. This times as much is told.
constexpr double kSafetyAtSingular = 1.4;

double diagonalOf(const MeshView& mesh) {
  Vec3 low = pointAt(mesh.vertices, mesh.triangles[0]);
  Vec3 high = low;
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const Vec3 p = pointAt(mesh.vertices, mesh.triangles[k]);
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return distance(low, high);
}

/// The lowest vertex of a component without a value; -1 if there is none.
std::int32_t unprescribedVertex(const MeshView& mesh, const std::vector<double>& values) {
  std::vector<std::int32_t> parents = quor::DisjointSets::singletons(mesh.n);
  quor::DisjointSets components(parents.data());
  std::vector<bool> isUsed(mesh.vertexCount());
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    components.link(mesh.triangles[k], mesh.triangles[k / 3 * 3]);
    isUsed[toSize(mesh.triangles[k])] = true;
  }
  std::vector<bool> hasValue(mesh.vertexCount());
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    if (!std::isnan(values[toSize(v)])) {
      hasValue[toSize(components.root(v))] = true;
    }
  }
  for (std::int32_t v = 0; v < mesh.n; ++v) {
    if (isUsed[toSize(v)] && !hasValue[toSize(components.root(v))]) {
      return v;
    }
  }
  return -1;
}

/// ratio^(1/exponent), with the power rounded to halves so that roots and products do.
double inverted(double ratio, double exponent) {
  const int halves = static_cast<int>(std::ceil(2.0 / exponent));
  double power = halves % 2 == 1 ? std::sqrt(ratio) : 1.0;
  for (int k = 0; k < halves / 2; ++k) {
    power *= ratio;
  }
  return power;
}

/// 2^exponent for exponents in 0 .. 1, by square roots.
double powerOfTwo(double exponent) {
  double power = 1.0;
  double root = 2.0;
  for (int bit = 0; bit < 24; ++bit) {
    root = std::sqrt(root);
    exponent *= 2.0;
    if (exponent >= 1.0) {
      power *= root;
      exponent -= 1.0;
    }
  }
  return power;
}

/// Of a triangle: its longest side, and the cotangents of its angles.
struct Shape {
  double longest = 0.0;
  double cotangents[3] = {};
};

Shape shapeAt(const MeshView& mesh, std::size_t t) {
  const std::int32_t* const c = mesh.triangles + 3 * t;
  const Vec3 p[3] = {pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                     pointAt(mesh.vertices, c[2])};
  const double area = doubledArea(p[0], p[1], p[2]);
  Shape shape;
  for (std::size_t k = 0; k < 3; ++k) {
    shape.longest = std::max(shape.longest, distance(p[k], p[(k + 1) % 3]));
    shape.cotangents[k] = dot(p[(k + 1) % 3] - p[k], p[(k + 2) % 3] - p[k]) / area;
  }
  return shape;
}

/// Makes sizes that do not jump from place to place, however thin the triangles between are: at
/// most kGrowth of the distance larger than another. A long needle that begins where the mesh has
/// to be fine would miss, between its ends and its middle, how the field bends there.
void spreadSizes(const MeshView& mesh, std::vector<double>& sizes) {
  constexpr double kGrowth = 1.0;
  constexpr int kSweeps = 3;  // there and back: far enough for what is near
  std::vector<double> sides(3 * mesh.triangleCount());
  const auto end = [&mesh](std::size_t side) {
    return mesh.triangles[side / 3 * 3 + (side + 1) % 3];
  };
  for (std::size_t side = 0; side < sides.size(); ++side) {
    sides[side] =
        distance(pointAt(mesh.vertices, mesh.triangles[side]), pointAt(mesh.vertices, end(side)));
  }
  const auto spread = [&](std::size_t side) {
    double& u = sizes[toSize(mesh.triangles[side])];
    double& v = sizes[toSize(end(side))];
    u = std::min(u, v + kGrowth * sides[side]);
    v = std::min(v, u + kGrowth * sides[side]);
  };
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    for (std::size_t side = 0; side < sides.size(); ++side) {
      spread(side);
    }
    for (std::size_t side = sides.size(); side-- > 0;) {
      spread(side);
    }
  }
}

class Refinement {
 public:
  explicit Refinement(const Problem& problem)
      : problem_(problem), level_{copyOf(problem.mesh), BoundaryValues(problem)} {}

  Solution run(const quor::Progress& progress) {
    if (isRefused()) {
      return std::move(solution_);
    }
    prepare();
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

  void prepare() {
    diagonal_ = diagonalOf(problem_.mesh);
    singular_ = singularVertices(problem_.mesh, level_.values);
    localAt_.assign(problem_.mesh.vertexCount(), 0.0);
    for (const SingularVertex& s : singular_) {
      localAt_[toSize(s.vertex)] =
          std::max(0.0, kSafetyAtSingular / (powerOfTwo(s.exponent) - 1.0) - kTold);
    }
    solution_.jumps = level_.values.jumps();
    solution_.jumpRadius = solution_.jumps.empty() ? 0.0 : 0.01 * diagonal_;
    for (const std::int32_t v : solution_.jumps) {
      const Vec3 p = pointAt(problem_.mesh.vertices, v);
      exempt_.segments.push_back({p, p});
    }
    for (const auto& [u, v] : level_.values.jumpEdges()) {
      exempt_.segments.push_back(
          {pointAt(problem_.mesh.vertices, u), pointAt(problem_.mesh.vertices, v)});
    }
    exempt_.radius = solution_.jumpRadius;
    sizes_.assign(problem_.mesh.vertexCount(), kInfinity);
    flip();
    constexpr double kFirst = 1.0 / 12.0;
    refineTo({kFirst * diagonal_});
  }

  /// Flips what is flat and alike.
  void flip() {
    const std::size_t m = level_.mesh.triangleOrigins.size();
    std::vector<std::int32_t> labels(m);
    for (std::size_t t = 0; t < m; ++t) {
      labels[t] = labelOf(level_.mesh.triangleOrigins[t]);
    }
    std::vector<bool> isFixed(3 * m);
    for (std::size_t side = 0; side < 3 * m; ++side) {
      isFixed[side] = level_.values.isPrescribed(
          level_.mesh.triangles[side], level_.mesh.triangles[toSize(nextSide(toIndex(side)))]);
    }
    flipFlatEdges(level_.mesh.vertices.data(), level_.view().n, level_.mesh.triangles, labels,
                  isFixed);
  }

  /// The same for input triangles between which edges may be flipped.
  std::int32_t labelOf(std::int32_t origin) {
    if (labels_.empty()) {
      makeLabels();
    }
    return labels_[toSize(origin)];
  }

  void makeLabels() {
    const auto keyOf = [this](std::int32_t t) {
      const double value = problem_.triangleValues != nullptr ? problem_.triangleValues[t] : 0.0;
      const double source = problem_.sources != nullptr ? problem_.sources[t] : 0.0;
      const std::int32_t face = problem_.faces != nullptr ? problem_.faces[t] : 0;
      return std::make_tuple(face, std::isnan(value), std::isnan(value) ? 0.0 : value, source);
    };
    std::vector<std::int32_t> order(problem_.mesh.triangleCount());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
      return std::make_pair(keyOf(a), a) < std::make_pair(keyOf(b), b);
    });
    labels_.resize(order.size());
    std::int32_t label = 0;
    for (std::size_t k = 0; k < order.size(); ++k) {
      label += k > 0 && keyOf(order[k]) != keyOf(order[k - 1]) ? 1 : 0;
      labels_[toSize(order[k])] = label;
    }
  }

  /// @return whether there was room
  bool refineTo(const EdgeLengths& lengths) {
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
    sizeNewVertices(*refined);
    level_.mesh = std::move(*refined);
    flip();
    return true;
  }

  /// The size at a midpoint, as refining has it.
  void sizeNewVertices(const MeshData& refined) {
    std::size_t v = sizes_.size();
    sizes_.resize(refined.vertexOrigins.size() / 2, kInfinity);
    for (; v < sizes_.size(); ++v) {
      const std::int32_t p = refined.vertexOrigins[2 * v];
      const std::int32_t q = refined.vertexOrigins[2 * v + 1];
      const double edge =
          distance(pointAt(refined.vertices.data(), p), pointAt(refined.vertices.data(), q));
      sizes_[v] = std::min(sizes_[toSize(p)], sizes_[toSize(q)]) + 0.25 * edge;
    }
  }

  /// The first mesh knows nothing of the field: it has to be good by a margin.
  bool isGoodEnough() const {
    return solution_.isReached &&
           (solution_.rounds > 1 || solution_.error <= 0.5 * solution_.tolerance ||
            solution_.error == 0.0);
  }

  /// Makes a field the solution.
  /// @return whether it is one
  bool take(const NestedFields& nested) {
    const auto [low, high] = std::minmax_element(nested.field.begin(), nested.field.end());
    if (!nested.isRegular || !std::isfinite(*low) || !std::isfinite(*high)) {
      solution_.refusal = Refusal::kNotSolvable;
      return false;
    }
    solution_.tolerance =
        problem_.isShareOfSpan ? problem_.tolerance * (*high - *low) : problem_.tolerance;
    setSurplus(nested);
    solution_.error = errorOf(nested);
    // A constant field has no span to share, and no error but rounding.
    constexpr double kRounding = 1e-12;
    const double rounding = kRounding * std::max(std::abs(*low), std::abs(*high));
    ++solution_.rounds;
    solution_.isReached = solution_.error <= std::max(solution_.tolerance, rounding);
    solution_.field = nested.field;
    solution_.mesh = nested.fine.mesh;
    return true;
  }

  /// How far the field is from the plane through its values at the corners of each coarse triangle.
  void setSurplus(const NestedFields& nested) {
    surplus_.assign(nested.field.begin(), nested.field.end());
    const std::vector<std::int32_t>& origins = nested.fine.mesh.vertexOrigins;
    const std::size_t n = level_.view().vertexCount();
    std::vector<double> plane(nested.field.begin(), nested.field.end());
    for (std::size_t v = n; v < plane.size(); ++v) {
      plane[v] = 0.5 * plane[toSize(origins[2 * v])] + 0.5 * plane[toSize(origins[2 * v + 1])];
    }
    for (std::size_t v = 0; v < plane.size(); ++v) {
      surplus_[v] = nested.field[v] - plane[v];
    }
  }

  /// What the error is told to be: a part of the difference, and at singular vertices a part of its
  /// surplus as well, which is what is local of it.
  double errorOf(const NestedFields& nested) const {
    double error = 0.0;
    for (std::size_t k = 0; k < nested.fine.mesh.triangles.size(); ++k) {
      const std::size_t v = toSize(nested.fine.mesh.triangles[k]);
      error = std::max(error, kTold * std::abs(nested.difference[v]) +
                                  localPart(k / 12) * std::abs(surplus_[v]));
    }
    return error;
  }

  /// The part of the surplus that is told as an error in a coarse triangle besides.
  double localPart(std::size_t t) const {
    double part = 0.0;
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      const std::size_t v = toSize(level_.mesh.triangles[k]);
      part = v < localAt_.size() ? std::max(part, localAt_[v]) : part;
    }
    return part;
  }

  /// @return whether there was anything to refine, and room
  bool refineWhereNeeded(const NestedFields& nested) {
    const double target = solution_.tolerance / kTold;
    if (solution_.error > 0.6 * lastError_) {
      allowed_ *= 0.5;
    }
    lastError_ = solution_.error;
    sizeBySurplus(nested, allowed_ * target, sizes_);
    sizeByResponse(nested, target, sizes_);
    const double smallest = 1e-9 * diagonal_;
    for (double& size : sizes_) {
      size = std::max(size, smallest);
    }
    spreadSizes(level_.view(), sizes_);
    const std::vector<double> sizes = sizes_;  // those of new vertices follow
    const std::size_t before = level_.mesh.triangles.size();
    return refineTo({kLongest, sizes.data()}) && level_.mesh.triangles.size() > before;
  }

  void shorten(std::size_t t, double size, std::vector<double>& sizes) const {
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      double& at = sizes[toSize(level_.mesh.triangles[k])];
      at = std::min(at, size);
    }
  }

  /// Whether a triangle is so small, and so near a jump, that refining it is for nothing.
  bool isExempt(const Shape& shape, std::size_t t) const {
    return !exempt_.segments.empty() && shape.longest < 0.125 * exempt_.radius &&
           exempt_.contains(pointAt(level_.mesh.vertices.data(), level_.mesh.triangles[3 * t]));
  }

  /// Where the fine field leaves the plane through its values at a triangle's corners.
  void sizeBySurplus(const NestedFields& nested, double allowed, std::vector<double>& sizes) {
    const std::size_t n = level_.view().vertexCount();
    std::vector<double> most(level_.view().triangleCount(), 0.0);
    for (std::size_t k = 0; k < nested.fine.mesh.triangles.size(); ++k) {
      double& at = most[k / 12];
      at = std::max(at, std::abs(surplus_[toSize(nested.fine.mesh.triangles[k])]));
    }
    std::vector<double> exponents(n, 2.0);
    for (const SingularVertex& s : singular_) {
      exponents[toSize(s.vertex)] = s.exponent;
    }
    for (std::size_t t = 0; t < most.size(); ++t) {
      const double here = allowed * kTold / (kTold + localPart(t));
      if (!(most[t] > here)) {
        continue;
      }
      const Shape shape = shapeAt(level_.view(), t);
      if (isExempt(shape, t)) {
        continue;
      }
      const double ratio = here / most[t];
      shorten(t, 0.999 * shape.longest * std::clamp(std::sqrt(ratio), 0.25, 0.7), sizes);
      for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
        const std::size_t v = toSize(level_.mesh.triangles[k]);
        if (exponents[v] < 1.0) {
          const double factor = std::clamp(inverted(ratio, exponents[v]), 1e-3, 0.7);
          sizes[v] = std::min(sizes[v], shape.longest * factor);
        }
      }
    }
  }

  /// Where the difference at the worst vertex comes from: the product of the surplus of the field
  /// and that of the response to a source there, in the energy of each triangle.
  void sizeByResponse(const NestedFields& nested, double target, std::vector<double>& sizes) {
    const double worst = std::abs(nested.difference[toSize(nested.worstVertex)]);
    const double wanted = 0.5 * target;
    if (!(worst > wanted)) {
      return;
    }
    const std::size_t m = level_.view().triangleCount();
    std::vector<double> shares(m, 0.0);
    std::vector<double> mids(3 * m, 0.0);
    std::vector<double> responses(3 * m, 0.0);
    collectMidpoints(nested, mids, responses);
    double sum = 0.0;
    for (std::size_t t = 0; t < m; ++t) {
      const Shape shape = shapeAt(level_.view(), t);
      if (isExempt(shape, t)) {
        continue;
      }
      double share = 0.0;
      for (std::size_t e = 0; e < 3; ++e) {  // side e is opposite to corner e + 2, and so on
        const std::size_t f = (e + 1) % 3;
        share += shape.cotangents[(e + 2) % 3] * mids[3 * t + e] * responses[3 * t + e];
        share += shape.cotangents[f] * (mids[3 * t + e] - mids[3 * t + f]) *
                 (responses[3 * t + e] - responses[3 * t + f]);
      }
      shares[t] = std::abs(share);
      sum += shares[t];
    }
    std::vector<std::int32_t> order(m);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
      return shares[toSize(a)] != shares[toSize(b)] ? shares[toSize(a)] > shares[toSize(b)] : a < b;
    });
    // Halving a triangle leaves a quarter of its share; the sum may be larger than what it
    // explains.
    const double enough = std::max(0.3, wanted / worst) * sum;
    double left = sum;
    for (std::size_t k = 0; k < m && left > enough; ++k) {
      const std::size_t t = toSize(order[k]);
      left -= 0.75 * shares[t];
      shorten(t, 0.5 * shapeAt(level_.view(), t).longest, sizes);
    }
  }

  /// The surplus of field and response at the midpoint of each side.
  void collectMidpoints(const NestedFields& nested, std::vector<double>& mids,
                        std::vector<double>& responses) const {
    const std::vector<std::int32_t>& corners = nested.fine.mesh.triangles;
    const std::vector<std::int32_t>& origins = nested.fine.mesh.vertexOrigins;
    const std::int32_t n = level_.view().n;
    for (std::size_t k = 0; k < corners.size(); ++k) {
      const std::size_t v = toSize(corners[k]);
      const std::int32_t p = origins[2 * v];
      const std::int32_t q = origins[2 * v + 1];
      if (p == q || q >= n) {
        continue;  // no midpoint of a coarse edge
      }
      const std::size_t t = k / 12;
      for (std::size_t e = 0; e < 3; ++e) {
        const std::int32_t a = level_.mesh.triangles[3 * t + e];
        const std::int32_t b = level_.mesh.triangles[3 * t + (e + 1) % 3];
        if (std::min(a, b) == p && std::max(a, b) == q) {
          mids[3 * t + e] = surplus_[v];
          responses[3 * t + e] =
              nested.green[v] - 0.5 * nested.green[toSize(p)] - 0.5 * nested.green[toSize(q)];
        }
      }
    }
  }

  const Problem& problem_;
  Level level_;
  Solution solution_;
  std::vector<SingularVertex> singular_;
  std::vector<double> localAt_;  ///< per input vertex, see localPart
  std::vector<std::int32_t> labels_;
  std::vector<double> surplus_;
  std::vector<double> sizes_;  ///< asked for so far at each vertex, infinite where nothing was
  Exemption exempt_;
  double diagonal_ = 0.0;
  double allowed_ = 0.5;  ///< surplus, as a part of the difference that is aimed at
  double lastError_ = kInfinity;
};

}  // namespace

Solution solveWithin(const Problem& problem, const quor::Progress& progress) {
  return Refinement(problem).run(progress);
}

}  // namespace quorkit
