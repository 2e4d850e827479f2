// Any bytes as a soup: quorWeld must agree with brute force to the bit.

#include "input.h"
#include "support/weld_oracle.h"

#include <quor.h>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const double tolerance = std::abs(input.coordinate());
  const Mesh soup = readSoup(input);
  test::Welded welded;
  welded.vertices.resize(soup.vertices.size());
  welded.triangles.resize(soup.triangles.size());
  welded.map.resize(soup.vertices.size() / 3);
  std::int32_t vertexCount = 0;
  std::int32_t triangleCount = 0;
  welded.result = quorWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                           welded.vertices.data(), welded.triangles.data(), welded.map.data(),
                           &vertexCount, &triangleCount, tolerance);
  if (std::isnan(tolerance)) {
    return welded.result == 1 ? 0 : (std::abort(), 0);
  }
  welded.vertices.resize(3 * static_cast<std::size_t>(vertexCount));
  welded.triangles.resize(3 * static_cast<std::size_t>(triangleCount));
  if (!same(welded, bruteForceWeld(soup, tolerance))) {
    std::abort();
  }
  return 0;
}
