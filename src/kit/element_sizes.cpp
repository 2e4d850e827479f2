#include "kit/element_sizes.h"

#include "kit/measure.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace quorkit {
namespace {

/// Of a triangle: its longest side, and the cotangents of its angles.
struct Shape {
  double longest = 0.0;
  std::array<double, 3> cotangents{};
};

Shape shapeAt(const MeshView& mesh, std::size_t t) {
  const std::int32_t* const c = mesh.triangles + 3 * t;
  const std::array<Vec3, 3> p = {pointAt(mesh.vertices, c[0]), pointAt(mesh.vertices, c[1]),
                                 pointAt(mesh.vertices, c[2])};
  const double area = doubledArea(p[0], p[1], p[2]);
  Shape shape;
  for (std::size_t k = 0; k < 3; ++k) {
    shape.longest = std::max(shape.longest, distance(p[k], p[(k + 1) % 3]));
    shape.cotangents[k] = dot(p[(k + 1) % 3] - p[k], p[(k + 2) % 3] - p[k]) / area;
  }
  return shape;
}

/// ratio^(1/exponent), with the power rounded up to halves so that roots and products do.
double inverted(double ratio, double exponent) {
  const int halves = static_cast<int>(std::ceil(2.0 / exponent));
  double power = halves % 2 == 1 ? std::sqrt(ratio) : 1.0;
  for (int k = 0; k < halves / 2; ++k) {
    power *= ratio;
  }
  return power;
}

/// Makes sizes that do not jump from place to place, however thin the triangles between are: at
/// most kGrowth of the distance larger than another. A long needle that begins where the mesh has
/// to be fine would miss, between its ends and its middle, how the field bends there.
void spread(const MeshView& mesh, std::vector<double>& sizes) {
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
  const auto spreadAlong = [&](std::size_t side) {
    double& u = sizes[toSize(mesh.triangles[side])];
    double& v = sizes[toSize(end(side))];
    u = std::min(u, v + kGrowth * sides[side]);
    v = std::min(v, u + kGrowth * sides[side]);
  };
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    for (std::size_t side = 0; side < sides.size(); ++side) {
      spreadAlong(side);
    }
    for (std::size_t side = sides.size(); side-- > 0;) {
      spreadAlong(side);
    }
  }
}

/// One round of lowering.
class Lowering {
 public:
  Lowering(const NestedFields& nested, const Level& coarse, const Exemption& exempt,
           std::vector<double>& sizes)
      : nested_(nested), coarse_(coarse.view()), exempt_(exempt), sizes_(sizes) {
    for (std::size_t t = 0; t < coarse_.triangleCount(); ++t) {
      shapes_.push_back(shapeAt(coarse_, t));
    }
  }

  /// Where the fine field leaves the plane through its values at a triangle's corners.
  /// @param allowed    how far
  /// @param exponents  per vertex of the input
  void bySurplus(double allowed, const ErrorEstimate& estimate,
                 const std::vector<double>& exponents) {
    constexpr double kReported = ErrorEstimate::kReported;
    for (std::size_t t = 0; t < shapes_.size(); ++t) {
      const double most = largestSurplus(t);
      const std::int32_t* const corners = coarse_.triangles + 3 * t;
      const double here = allowed * kReported / (kReported + estimate.localPart(corners));
      if (!(most > here) || isExempt(t)) {
        continue;
      }
      const double longest = shapes_[t].longest;
      const double ratio = here / most;
      shorten(t, 0.999 * longest * std::clamp(std::sqrt(ratio), 0.25, 0.7));
      for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t v = toSize(corners[k]);
        if (v < exponents.size() && exponents[v] < 1.0) {
          const double factor = std::clamp(inverted(ratio, exponents[v]), 1e-3, 0.7);
          sizes_[v] = std::min(sizes_[v], longest * factor);
        }
      }
    }
  }

  /// Where the difference at the worst vertex comes from: the product of the surplus of the field
  /// and that of the response to a source there, in the energy of each triangle.
  /// @param wanted  difference at the worst vertex
  void byResponse(double wanted) {
    const double worst = std::abs(nested_.difference[toSize(nested_.worstVertex)]);
    if (!(worst > wanted)) {
      return;
    }
    const std::vector<double> shares = sharesOfWorst();
    const double sum = std::accumulate(shares.begin(), shares.end(), 0.0);
    std::vector<std::int32_t> order(shares.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
      return shares[toSize(a)] != shares[toSize(b)] ? shares[toSize(a)] > shares[toSize(b)] : a < b;
    });
    // Halving a triangle leaves a quarter of its share. The sum may be larger than what it
    // explains.
    const double enough = std::max(0.3, wanted / worst) * sum;
    double left = sum;
    for (std::size_t k = 0; k < order.size() && left > enough; ++k) {
      const std::size_t t = toSize(order[k]);
      left -= 0.75 * shares[t];
      shorten(t, 0.5 * shapes_[t].longest);
    }
  }

 private:
  /// The surplus at the midpoints of a triangle's sides, and that of the response.
  struct Midpoints {
    std::array<double, 3> field;
    std::array<double, 3> response;
  };

  double largestSurplus(std::size_t t) const {
    double most = 0.0;
    for (std::size_t k = 12 * t; k < 12 * t + 12; ++k) {
      most = std::max(most, std::abs(nested_.surplus[toSize(nested_.fine.mesh.triangles[k])]));
    }
    return most;
  }

  void shorten(std::size_t t, double size) {
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      double& at = sizes_[toSize(coarse_.triangles[k])];
      at = std::min(at, size);
    }
  }

  /// Whether a triangle is so small, and so near a jump, that refining it is for nothing.
  bool isExempt(std::size_t t) const {
    return !exempt_.segments.empty() && shapes_[t].longest < 0.125 * exempt_.radius &&
           exempt_.contains(pointAt(coarse_.vertices, coarse_.triangles[3 * t]));
  }

  std::vector<double> sharesOfWorst() const {
    std::vector<double> shares(shapes_.size(), 0.0);
    for (std::size_t t = 0; t < shapes_.size(); ++t) {
      if (isExempt(t)) {
        continue;
      }
      const Midpoints at = midpointsOf(t);
      const std::array<double, 3>& cotangents = shapes_[t].cotangents;
      double share = 0.0;
      for (std::size_t e = 0; e < 3; ++e) {  // side e is opposite to corner e + 2, and so on
        const std::size_t f = (e + 1) % 3;
        share += cotangents[(e + 2) % 3] * at.field[e] * at.response[e];
        share += cotangents[f] * (at.field[e] - at.field[f]) * (at.response[e] - at.response[f]);
      }
      shares[t] = std::abs(share);
    }
    return shares;
  }

  Midpoints midpointsOf(std::size_t t) const {
    Midpoints at{};
    const std::vector<std::int32_t>& origins = nested_.fine.mesh.vertexOrigins;
    for (std::size_t k = 12 * t; k < 12 * t + 12; ++k) {
      const std::size_t v = toSize(nested_.fine.mesh.triangles[k]);
      if (v < coarse_.vertexCount()) {
        continue;
      }
      const std::int32_t p = origins[2 * v];
      const std::int32_t q = origins[2 * v + 1];
      for (std::size_t e = 0; e < 3; ++e) {
        const std::int32_t a = coarse_.triangles[3 * t + e];
        const std::int32_t b = coarse_.triangles[3 * t + (e + 1) % 3];
        if (std::min(a, b) == p && std::max(a, b) == q) {
          at.field[e] = nested_.surplus[v];
          at.response[e] =
              nested_.green[v] - 0.5 * nested_.green[toSize(p)] - 0.5 * nested_.green[toSize(q)];
        }
      }
    }
    return at;
  }

  const NestedFields& nested_;
  const MeshView coarse_;
  const Exemption& exempt_;
  std::vector<double>& sizes_;
  std::vector<Shape> shapes_;
};

}  // namespace

ElementSizes::ElementSizes(const std::vector<SingularVertex>& singular, std::size_t vertexCount,
                           double smallest)
    : exponents_(vertexCount, 2.0), sizes_(vertexCount, kInfinity), smallest_(smallest) {
  for (const SingularVertex& s : singular) {
    exponents_[toSize(s.vertex)] = s.exponent;
  }
}

void ElementSizes::lower(const NestedFields& nested, const Level& coarse, const Exemption& exempt,
                         const ErrorEstimate& estimate, double target, double allowed) {
  Lowering lowering(nested, coarse, exempt, sizes_);
  lowering.bySurplus(allowed * target, estimate, exponents_);
  lowering.byResponse(0.5 * target);
  for (double& size : sizes_) {
    size = std::max(size, smallest_);
  }
  spread(coarse.view(), sizes_);
}

void ElementSizes::follow(const MeshData& refined) {
  std::size_t v = sizes_.size();
  sizes_.resize(refined.vertexOrigins.size() / 2, kInfinity);
  for (; v < sizes_.size(); ++v) {
    const std::int32_t p = refined.vertexOrigins[2 * v];
    const std::int32_t q = refined.vertexOrigins[2 * v + 1];
    assert(p < q && toSize(q) < v);
    const double edge =
        distance(pointAt(refined.vertices.data(), p), pointAt(refined.vertices.data(), q));
    sizes_[v] = std::min(sizes_[toSize(p)], sizes_[toSize(q)]) + 0.25 * edge;
  }
}

}  // namespace quorkit
