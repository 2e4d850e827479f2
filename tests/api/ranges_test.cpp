// How large and how small numbers may be: the ranges that the header promises, and what is beyond.

#include "support/handle.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <random>

using namespace test;

namespace {

/// Makes invalid operations, divisions by zero and overflows end the process, where that can be
/// had.
class WithTraps {
 public:
#if defined(__GLIBC__) && defined(__x86_64__)
  WithTraps() {
    std::fegetenv(&before_);
    feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
  }
  ~WithTraps() {
    std::fesetenv(&before_);
  }
  WithTraps(const WithTraps&) = delete;
  WithTraps& operator=(const WithTraps&) = delete;

 private:
  std::fenv_t before_{};
#endif
};

/// A field of the mesh with every coordinate multiplied.
std::vector<double> fieldOfScaled(Mesh mesh, double scale) {
  std::vector<std::int32_t> tags(std::size_t(mesh.n()), 0);
  tags.front() = tags.back() = 1;
  const std::vector<double> values(mesh.vertices.begin(), mesh.vertices.begin() + mesh.n());
  for (double& coordinate : mesh.vertices) {
    coordinate *= scale;
  }
  return solve(build(mesh, tags), values);
}

TEST(Ranges, TheUnitOfLengthChangesNoBit) {
  Mesh mesh = bumpyMesh(90, 90, 4);  // a factor computed by blocks; heights of 1/200 and more
  const double largest = *std::max_element(mesh.vertices.begin(), mesh.vertices.end());
  const std::vector<double> expected = fieldOfScaled(mesh, 1.0);
  const WithTraps traps;
  for (const double scale : {0x1p-244, 0x1p-100, 0x1p100, 0x1p252}) {
    ASSERT_LE(largest * scale, 1e76);
    EXPECT_TRUE(sameBits(fieldOfScaled(mesh, scale), expected)) << scale;
  }
}

TEST(Ranges, NoTriangleOfTheStatedSizesTraps) {
  std::mt19937 random(8);
  std::uniform_real_distribution<double> in(-1.0, 1.0);
  const WithTraps traps;
  for (int round = 0; round < 5000; ++round) {
    const double size = std::pow(10.0, 76 * in(random));
    const double height = std::max(1e-76, size * std::pow(10.0, -7.0 * (1.0 + in(random))));
    if (height > size) {
      continue;
    }
    // A side of a length between the height and the size, and a vertex at the height over it.
    const double side = height * std::pow(size / height, 0.5 + 0.5 * in(random));
    const double x = 0.5 * size * in(random);
    const double y = 0.5 * size * in(random);
    const Mesh mesh{{x, y, 0, x + 0.5 * side, y, 0, x + 0.25 * side, y, height}, {0, 1, 2}};
    const std::vector<double> field = solve(build(mesh, {1, 1, 0}), {1e200, -1e200, kNaN});
    ASSERT_TRUE(std::isfinite(field[2])) << "size " << size << ", height " << height;
  }
}

TEST(Ranges, FarBeyondThemFreeValuesAreNotFinite) {
  for (const double scale : {1e79, 1e-81}) {
    const std::vector<double> field = fieldOfScaled(bumpyMesh(20, 20, 4), scale);
    EXPECT_TRUE(std::none_of(field.begin() + 1, field.end() - 1, [](double value) {
      return std::isfinite(value);
    })) << scale;
  }
}

TEST(Ranges, PointsOnALineGiveNoNumberOrAnyNumber) {
  // The differences of the first three are exact; those of the others are not.
  const std::vector<double> exact =
      solve(build({{0, 0, 0, 1, 1, 1, 3, 3, 3}, {0, 1, 2}}, {1, 0, 2}), {0, 0, 1});
  EXPECT_FALSE(std::isfinite(exact[1]));
  const std::vector<double> rounded =
      solve(build({{0, 0, 0, 0.1, 0.3, 0.7, 0.3, 0.9, 2.1}, {0, 1, 2}}, {1, 0, 2}), {0, 0, 1});
  EXPECT_TRUE(std::isfinite(rounded[1]));
}

TEST(Ranges, DenormalNumbersAreSolvedForLikeOthers) {
  const Mesh mesh = bumpyMesh(30, 30, 4);
  std::vector<std::int32_t> tags(std::size_t(mesh.n()), 0);
  tags.front() = tags.back() = 1;
  const Handle handle = build(mesh, tags);
  std::vector<double> values(tags.size(), 1.0);
  values.back() = 2.0;
  const std::vector<double> expected = solve(handle, values);
  values.front() = 1e-309;
  values.back() = 2e-309;
  const std::vector<double> field = solve(handle, values);
  for (std::size_t i = 0; i < field.size(); ++i) {
    ASSERT_NEAR(field[i] / 1e-309, expected[i], 1e-9);
  }
}

}  // namespace
