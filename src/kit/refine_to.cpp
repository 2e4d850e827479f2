#include "kit/refine_to.h"

#include "kit/measure.h"
#include "kit/refine.h"
#include "kit/refined_count.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

namespace quorkit {
namespace {

struct Sizes {
  double longestEdge = 0.0;
  double area = 0.0;
};

/// The root, rounded such that quorkitRefine splits no edge of a mesh whose longest it is.
double lengthOf(double squared) {
  const double length = std::sqrt(squared);
  return length * length < squared ? std::nextafter(length, kInfinity) : length;
}

Sizes sizesOf(const MeshView& mesh) {
  Sizes sizes;
  double squared = 0.0;
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    const std::int32_t* const corner = mesh.triangles + 3 * t;
    const Vec3 a = pointAt(mesh.vertices, corner[0]);
    const Vec3 b = pointAt(mesh.vertices, corner[1]);
    const Vec3 c = pointAt(mesh.vertices, corner[2]);
    squared =
        std::max({squared, squaredDistance(a, b), squaredDistance(b, c), squaredDistance(c, a)});
    sizes.area += 0.5 * doubledArea(a, b, c);
  }
  sizes.longestEdge = lengthOf(squared);
  return sizes;
}

MeshData copyOf(const MeshView& mesh, double longestEdge) {
  MeshData copy = copyOf(mesh);
  copy.longestEdge = longestEdge;
  return copy;
}

/// A length with about so many triangles, at most by the estimate: one a thousandth shorter has
/// more.
double findLength(const MeshView& mesh, const Sizes& sizes, double wanted) {
  constexpr double kStep = 0.7;
  constexpr double kPrecision = 1.001;
  constexpr int kMostSteps = 200;  // so many only where edges cannot be halved any more
  constexpr int kEvenSteps = 32;   // more upwards only where coordinates differ by powers of ten
  constexpr double kLargest = 0x1p512;  // has no square, so that nothing is split
  const auto isEnough = [&](double length) {
    return estimateRefined(mesh, length, wanted) <= wanted;
  };
  // Triangles of half the square of their longest edge are not far from what comes out.
  double good = std::min(sizes.longestEdge, kLargest);
  double bad = std::min(good, std::sqrt(4.0 * sizes.area / wanted));
  int steps = 0;
  while (bad > 0.0 && isEnough(bad) && steps < kMostSteps) {
    good = bad;
    bad *= kStep;
    ++steps;
  }
  if (steps == 0) {
    double step = kStep;
    double length = bad / step;
    for (int up = 0; bad > 0.0 && length < good; ++up) {
      (isEnough(length) ? good : bad) = length;
      step = up < kEvenSteps ? step : std::max(step * step, 0x1p-64);
      length /= step;
    }
  }
  while (bad > 0.0 && steps < kMostSteps && good > kPrecision * bad) {
    const double length = std::sqrt(good) * std::sqrt(bad);
    (isEnough(length) ? good : bad) = length;
  }
  return good;
}

}  // namespace

MeshData refineTo(const MeshView& mesh, std::int32_t wanted) {
  const Sizes sizes = sizesOf(mesh);
  if (mesh.m >= wanted || !(sizes.longestEdge > 0.0)) {
    return copyOf(mesh, sizes.longestEdge);
  }
  // The estimate leaves rounding out: a little above the length that it finds sides of that length
  // are not split, and as many triangles as it says come out. Should they be more all the same, a
  // longer length has less.
  constexpr double kAbove = 1.0 + 1e-6;
  assert(wanted > mesh.m);
  double step = kAbove;
  double length = findLength(mesh, sizes, wanted) * step;
  while (length <= sizes.longestEdge) {
    if (std::optional<MeshData> refined = refineUnlessMore(mesh, {length}, wanted)) {
      return std::move(*refined);
    }
    step = 1.0 + 2.0 * (step - 1.0) + 1e-3;
    length *= step;
  }
  return copyOf(mesh, sizes.longestEdge);
}

}  // namespace quorkit
