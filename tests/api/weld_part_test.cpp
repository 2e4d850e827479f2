// quorWeld against the plain method, a KD-tree with one query per point, on a real part.

#include "soups/plain_weld.h"
#include "soups/soups.h"

#include <gtest/gtest.h>
#include <quor.h>

namespace {

TEST(WeldPart, SameBitsAsThePlainWay) {
  const bench::Soup part = bench::readSoup(QUOR_PART);
  const double edge = bench::meanEdgeOf(part);
  struct Case {
    const char* name;
    bench::Soup soup;
    double tolerance;
  };
  const Case cases[] = {
      {"as it is", part, 1e-9 * bench::diagonalOf(part)},
      {"shaken", bench::shaken(part, 1e-3 * edge / 3), 1e-3 * edge},
      {"below the spacing", part, 0.7 * edge},
      {"shaken, below the spacing", bench::shaken(part, 0.1 * edge), 0.4 * edge},
      {"above the spacing", part, 1.5 * edge},
      {"two fins become one", part, 4.2},
  };
  for (const Case& c : cases) {
    const auto points = std::size_t(c.soup.pointCount());
    bench::Welded ours(points, c.soup.triangles.size());
    bench::Welded plain(points, c.soup.triangles.size());
    quorWeld(c.soup.pointCount(), c.soup.points.data(), c.soup.triangleCount(),
             c.soup.triangles.data(), ours.vertices.data(), ours.triangles.data(), ours.map.data(),
             &ours.vertexCount, &ours.triangleCount, c.tolerance);
    bench::plainWeld(c.soup.pointCount(), c.soup.points.data(), c.soup.triangleCount(),
                     c.soup.triangles.data(), c.tolerance, plain);
    EXPECT_EQ(ours.vertexCount, plain.vertexCount) << c.name;
    EXPECT_EQ(ours.triangleCount, plain.triangleCount) << c.name;
    EXPECT_TRUE(ours.map == plain.map && ours.vertices == plain.vertices &&
                ours.triangles == plain.triangles)
        << c.name;
  }
}

}  // namespace
