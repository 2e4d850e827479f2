#include "kit/error_estimate.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

namespace quorkit {
namespace {

/// The error reported at singular vertices, as a multiple of its local part.
constexpr double kSafety = 1.4;

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

}  // namespace

ErrorEstimate::ErrorEstimate(const std::vector<SingularVertex>& singular, std::size_t vertexCount)
    : localAt_(vertexCount, 0.0) {
  for (const SingularVertex& s : singular) {
    assert(s.exponent > 0.0);
    localAt_[toSize(s.vertex)] =
        std::max(0.0, kSafety / (powerOfTwo(s.exponent) - 1.0) - kReported);
  }
}

double ErrorEstimate::localPart(const std::int32_t* corners) const {
  double part = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    const std::size_t v = toSize(corners[k]);
    part = v < localAt_.size() ? std::max(part, localAt_[v]) : part;
  }
  return part;
}

double ErrorEstimate::of(const NestedFields& nested, const MeshView& coarse) const {
  assert(nested.fine.mesh.triangles.size() == 12 * coarse.triangleCount());
  double error = 0.0;
  for (std::size_t t = 0; t < coarse.triangleCount(); ++t) {
    const double part = localPart(coarse.triangles + 3 * t);
    for (std::size_t k = 12 * t; k < 12 * t + 12; ++k) {
      const std::size_t v = toSize(nested.fine.mesh.triangles[k]);
      error = std::max(
          error, kReported * std::abs(nested.difference[v]) + part * std::abs(nested.surplus[v]));
    }
  }
  return error;
}

}  // namespace quorkit
