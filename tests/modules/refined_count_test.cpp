// How many triangles refining makes, found before any is made: at least, about, and exactly.

#include "kit/refined_count.h"
#include "kit/refine.h"
#include "support/exact_refinement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

quorkit::MeshView viewOf(const test::Mesh& mesh) {
  return {mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data()};
}

TEST(RefinedCount, IsAtLeastAboutAndExactlyWhatComesOut) {
  std::mt19937 random(3);
  for (int i = 0; i < 100; ++i) {
    test::Mesh mesh = test::bumpyMesh(3, 3, unsigned(random()));
    const double stretch = std::pow(10.0, -double(random() % 4));
    const double unit = std::ldexp(1.0, int(random() % 800) - 400);
    for (std::size_t k = 0; k < mesh.vertices.size(); ++k) {
      mesh.vertices[k] *= k % 3 == 0 ? unit : stretch * unit;
    }
    const double longest = unit * std::pow(10.0, -1.5 + double(random() % 1000) / 1000);
    const auto expected = test::ExactRefinement::of(mesh, longest);
    ASSERT_TRUE(expected);
    const double count = expected->mesh.m();
    EXPECT_EQ(quorkit::countRefined(viewOf(mesh), {longest}, 1 << 20), count);
    EXPECT_GT(quorkit::countRefined(viewOf(mesh), {longest}, mesh.m() / 2), mesh.m() / 2);
    EXPECT_NEAR(quorkit::estimateRefined(viewOf(mesh), longest, 1 << 20) / count, 1, 0.01) << i;
    EXPECT_LE(quorkit::leastRefined(viewOf(mesh), longest), count) << i;
    // Most sides of well shaped triangles end up at half to all of the length.
    EXPECT_GE(quorkit::leastRefined(viewOf(mesh), longest), (stretch == 1 ? 0.2 : 0.01) * count);
  }
}

TEST(RefinedCount, IsAtLeastWhatRoundingAndSmallSquaresLeave) {
  std::mt19937 random(4);
  for (int i = 0; i < 1000; ++i) {
    const double place = std::ldexp(1.0, int(random() % 1500) - 1000);
    const double step = place * std::ldexp(1.0, -52);
    test::Mesh mesh{{}, {0, 1, 2}};
    for (int k = 0; k < 9; ++k) {
      mesh.vertices.push_back(place + step * int(random() % 64));
    }
    for (const double longest : {step * 1e-5, step, 5 * step, place}) {
      if (longest > 0) {
        EXPECT_LE(quorkit::leastRefined(viewOf(mesh), longest),
                  1.5 * double(quorkit::countRefined(viewOf(mesh), {longest}, 1 << 12)))
            << i << " " << longest;
      }
    }
  }
}

}  // namespace
