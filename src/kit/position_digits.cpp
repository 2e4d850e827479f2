#include "kit/position_digits.h"

#include "export/number_text.h"
#include "kit/measure.h"

#include <algorithm>
#include <cstddef>

namespace quorkit {
namespace {

constexpr int kMostDigits = 17;  // which tell any two doubles apart

}  // namespace

int positionDigits(const MeshView& mesh) {
  // Text of d digits rounds a number x to a multiple of at most |x| * 10^(1-d). Two numbers that
  // are no nearer than that stay different. Twice that leaves room for the rounding of the
  // quotient.
  double least = kInfinity;
  for (std::size_t k = 0; k < 3 * mesh.triangleCount(); ++k) {
    const std::size_t next = k % 3 == 2 ? k - 2 : k + 1;
    const Vec3 p = pointAt(mesh.vertices, mesh.triangles[k]);
    const Vec3 q = pointAt(mesh.vertices, mesh.triangles[next]);
    const double length = largestComponent(q - p);
    if (length > 0.0) {
      least = std::min(least, length / std::max(largestComponent(p), largestComponent(q)));
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
