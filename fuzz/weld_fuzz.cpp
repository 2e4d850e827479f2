// Any bytes as a soup: quorWeld must agree with brute force to the bit, in few steps a point.

#include "input.h"
#include "support/weld_oracle.h"
#include "support/weld_steps.h"

#include <cstdlib>

namespace {

using test::Mesh;

Mesh readSoup(fuzz::Input& input) {
  Mesh soup;
  const int points = 1 + input.byte();  // up to 256: several leaves of the search tree
  for (int i = 0; i < 3 * points; ++i) {
    soup.vertices.push_back(input.coordinate());
  }
  for (int t = input.byte(); t > 0; --t) {
    for (int corner = 0; corner < 3; ++corner) {
      soup.triangles.push_back(input.byte() % points);
    }
  }
  return soup;
}

/// No search may take many more steps than there are points and triangles; small tables and leaves
/// may take some hundreds whatever they hold.
bool isSlow(const Mesh& soup, double tolerance) {
  return test::weldSteps(soup, tolerance) > 32 * std::uint64_t(soup.n() + soup.m() + 64);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const double tolerance = std::abs(input.coordinate());
  const Mesh soup = readSoup(input);
  const test::Welded actual = test::welded(soup, tolerance);
  if (std::isnan(tolerance) ? actual.result != 1 : !same(actual, bruteForceWeld(soup, tolerance))) {
    std::abort();
  }
  if (!std::isnan(tolerance) && isSlow(soup, tolerance)) {
    std::abort();
  }
  return 0;
}
