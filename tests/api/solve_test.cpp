// The two solves from outside.

#include "support/cotangent_stiffness.h"
#include "support/handle.h"

#include <array>

using namespace test;

namespace {

TEST(Solve, SourceLowersTheFieldUnweighted) {
  // A fan of four right triangles around one free vertex: its diagonal entry is 4, whatever the
  // size of the triangles, and the spokes' weights are 1 each.
  for (const double scale : {1.0, 1e-3, 1e4}) {
    Mesh mesh{{0, 0, 0, 1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1, 0},
              {0, 1, 2, 0, 2, 3, 0, 3, 4, 0, 4, 1}};
    for (double& x : mesh.vertices) {
      x *= scale;
    }
    const Handle handle = build(mesh, {0, 1, 1, 1, 1});
    const std::array<double, 5> prescribed{kNaN, 1, 2, 3, 6};
    const std::array<double, 5> source{8, kNaN, kNaN, kNaN, kNaN};
    std::array<double, 5> field{};
    StatusCode status = 99;
    quorsolvePTagged(handle.get(), prescribed.data(), source.data(), field.data(), &status);
    EXPECT_EQ(status, 0U);
    EXPECT_NEAR(field[0], (1 + 2 + 3 + 6 - 8) / 4.0, 1e-12);
    EXPECT_EQ(field[4], 6);
  }
}

TEST(Solve, SourceGivesBackTheFieldItWasMadeOf) {
  // s = -K x, with K from cotangents, for a field x made up: large enough for a factor in blocks.
  const int side = 120;
  const Mesh mesh = bumpyMesh(side, side, 5);
  std::vector<double> field(std::size_t(mesh.n()));
  std::mt19937 random(6);
  for (double& value : field) {
    value = std::uniform_real_distribution<double>(-1, 1)(random);
  }
  std::vector<double> source(field.size());
  forEachCotangentWeight(mesh, [&](std::size_t i, std::size_t j, double weight) {
    source[i] -= weight * (field[i] - field[j]);
    source[j] -= weight * (field[j] - field[i]);
  });
  const Handle handle = build(mesh, tagEnds(side, side));
  std::vector<double> solved(field.size());
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), field.data(), source.data(), solved.data(), &status);
  EXPECT_EQ(status, 0U);
  for (std::size_t i = 0; i < field.size(); ++i) {
    ASSERT_NEAR(solved[i], field[i], 1e-9) << i;
  }
}

TEST(Solve, ZeroSourceGivesTheSameField) {
  const Mesh mesh = bumpyMesh(12, 9, 3);
  const Handle handle = build(mesh, tagEnds(12, 9));
  std::vector<double> prescribed(std::size_t(mesh.n()));
  std::mt19937 random(1);
  for (double& value : prescribed) {
    value = std::uniform_real_distribution<double>(-1, 1)(random);
  }
  const std::vector<double> zero(prescribed.size(), 0.0);
  std::vector<double> field(prescribed.size());
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), prescribed.data(), zero.data(), field.data(), &status);
  EXPECT_EQ(field, solve(handle, prescribed));
}

TEST(Solve, PrescribedValuesComeBackBitForBit) {
  const Mesh mesh = gridMesh(2, 3);
  const std::vector<std::int32_t> tags{1, 2, 3, 1, 0, 1};
  double payload = 0;
  const std::uint64_t bits = 0x7ff80000deadbeefU;
  std::memcpy(&payload, &bits, sizeof payload);
  std::vector<double> prescribed{-0.0, payload, kInfinity, 5e-324, payload, -payload};
  const std::vector<double> field = solve(build(mesh, tags), prescribed);
  for (const std::size_t i : {0U, 1U, 2U, 3U, 5U}) {
    EXPECT_EQ(bitsOf(field[i]), bitsOf(prescribed[i])) << i;
  }
}

TEST(Solve, UnreadEntriesChangeNothingAndOutputsMayAlias) {
  const int nx = 9;
  const int ny = 6;
  const Mesh mesh = bumpyMesh(nx, ny, 4);
  const std::vector<std::int32_t> tags = tagEnds(nx, ny);
  const Handle handle = build(mesh, tags);
  std::vector<double> prescribed(tags.size());
  std::vector<double> source(tags.size());
  for (std::size_t i = 0; i < tags.size(); ++i) {
    prescribed[i] = isPrescribed(tags[i]) ? 0.1 * double(i) : kNaN;
    source[i] = !isPrescribed(tags[i]) ? 0.01 * double(i) : kNaN;
  }
  std::vector<double> expected(tags.size());
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), prescribed.data(), source.data(), expected.data(), &status);
  for (const double value : expected) {
    ASSERT_TRUE(std::isfinite(value));
  }
  std::vector<double> inPlace = prescribed;
  quorsolvePTagged(handle.get(), inPlace.data(), source.data(), inPlace.data(), &status);
  EXPECT_TRUE(sameBits(inPlace, expected));
  inPlace = source;
  quorsolvePTagged(handle.get(), prescribed.data(), inPlace.data(), inPlace.data(), &status);
  EXPECT_TRUE(sameBits(inPlace, expected));

  inPlace = prescribed;
  quorsolveTagged(handle.get(), inPlace.data(), inPlace.data(), &status);
  EXPECT_TRUE(sameBits(inPlace, solve(handle, prescribed)));
}

TEST(Solve, NanSpreadsThroughStoredZeros) {
  // The diagonal of the square lies opposite right angles: its weight is exactly 0, yet stored.
  const Mesh square{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3}};
  const std::vector<double> field = solve(build(square, {1, 1, 0, 1}), {kNaN, 1, 0, 1});
  EXPECT_TRUE(std::isnan(field[2]));
}

TEST(Solve, FailedFactorizationGivesPositiveZeros) {
  // Two triangles apart: the second holds no prescribed vertex, its block is exactly singular.
  const Mesh mesh{{0, 0, 0, 1, 0, 0, 0, 1, 0, 5, 0, 0, 6, 0, 0, 5, 1, 0}, {0, 1, 2, 3, 4, 5}};
  const Handle handle = build(mesh, {1, 1, 0, 0, 0, 0});
  ASSERT_EQ(quorinfo(handle.get()), 1U);
  const std::vector<double> expected{-0.0, 3, 0.0, 0.0, 0.0, 0.0};
  std::vector<double> field{-0.0, 3, -1, -1, -1, -1};
  StatusCode status = 99;
  quorsolveTagged(handle.get(), field.data(), field.data(), &status);
  EXPECT_EQ(status, 0U);
  EXPECT_TRUE(sameBits(field, expected));
  field = {-0.0, 3, -1, -1, -1, -1};
  const std::vector<double> source{1, 1, 1, 1, 1, 1};
  quorsolvePTagged(handle.get(), field.data(), source.data(), field.data(), &status);
  EXPECT_TRUE(sameBits(field, expected));
}

TEST(Solve, AllOrNonePrescribed) {
  const Mesh mesh = bumpyMesh(5, 5, 9);
  const std::vector<std::int32_t> all(25, 3);
  std::vector<double> values(25);
  for (std::size_t i = 0; i < 25; ++i) {
    values[i] = i == 7 ? kNaN : double(i);
  }
  const Handle handle = build(mesh, all);
  EXPECT_EQ(quorinfo(handle.get()), 0U);
  EXPECT_TRUE(sameBits(solve(handle, values), values));
  std::vector<double> field(25, -1);
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), values.data(), nullptr, field.data(), &status);  // never read
  EXPECT_TRUE(sameBits(field, values));

  const Handle none = build(mesh, std::vector<std::int32_t>(25, 0));
  quorsolveTagged(none.get(), nullptr, field.data(), &status);  // never read either
  EXPECT_EQ(status, 0U);
  EXPECT_EQ(field, std::vector<double>(25, 0.0));
}

}  // namespace
