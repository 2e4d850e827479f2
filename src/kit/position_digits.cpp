#include "kit/position_digits.h"

#include "export/number_text.h"
#include "kit/measure.h"
#include "util/vec3.h"

#include <algorithm>
#include <cmath>

namespace quorkit {
namespace {

constexpr int kMostDigits = 17;  // which tell any two doubles apart

/// The largest absolute value of a coordinate.
double largest(quor::Vec3 p) {
  return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
}

}  // namespace

int positionDigits(const MeshView& mesh) {
  // Text of d digits rounds a number x to a multiple of at most |x| * 10^(1-d). Two numbers that
  // are no nearer than that stay different. Twice that leaves room for the rounding of the
  // quotient.
  double least = kInfinity;
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const std::size_t next = k % 3 == 2 ? k - 2 : k + 1;
    const quor::Vec3 p = quor::pointAt(mesh.vertices, mesh.triangles[k]);
    const quor::Vec3 q = quor::pointAt(mesh.vertices, mesh.triangles[next]);
    const double length = largest(q - p);
    if (length > 0.0) {
      least = std::min(least, length / std::max(largest(p), largest(q)));
    }
  }
  int digits = quor::kFewestDigits;
  double step = 2e-5;
  while (digits < kMostDigits && least < step) {
    ++digits;
    step /= 10.0;
  }
  return digits;
}

}  // namespace quorkit
