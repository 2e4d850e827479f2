// The assembled blocks against the plain way, bit for bit, where columns have every length: which
// sort or which pass sums them must not show.

#include "operator/element_stiffness.h"
#include "operator/stiffness_assembly.h"
#include "support/handle.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <random>

using namespace test;
using quor::SparseMatrix;

namespace {

/// Triangles around vertex 0, in order; closed if there are as many rim vertices.
Mesh hub(std::int32_t valence, bool isClosed, std::mt19937& random) {
  std::uniform_real_distribution<double> noise(-0.2, 0.2);
  Mesh mesh;
  const std::int32_t rim = isClosed ? valence : valence + 1;
  mesh.vertices = {noise(random), noise(random), noise(random)};
  for (std::int32_t k = 0; k < rim; ++k) {
    const double angle = 6.0 * k / rim;
    mesh.vertices.insert(mesh.vertices.end(),
                         {std::cos(angle) + noise(random), std::sin(angle), noise(random)});
  }
  for (std::int32_t k = 0; k < valence; ++k) {
    mesh.triangles.insert(mesh.triangles.end(), {0, 1 + k, 1 + (k + 1) % rim});
  }
  return mesh;
}

/// Pages on the edge from vertex 0 to 1.
Mesh book(std::int32_t pages, std::mt19937& random) {
  std::uniform_real_distribution<double> place(-1.0, 1.0);
  Mesh mesh;
  mesh.vertices = {0, 0, 0, 0, 0, 1};
  for (std::int32_t k = 0; k < pages; ++k) {
    mesh.vertices.insert(mesh.vertices.end(), {place(random), place(random), place(random)});
    mesh.triangles.insert(mesh.triangles.end(), {0, 1, 2 + k});
  }
  return mesh;
}

/// The same mesh with some triangles repeated, all of them in random order and turned at random,
/// and its vertices renumbered.
Mesh shuffled(const Mesh& mesh, std::mt19937& random) {
  std::vector<std::array<std::int32_t, 3>> triangles;
  for (std::size_t k = 0; k < mesh.triangles.size(); k += 3) {
    std::array<std::int32_t, 3> t{mesh.triangles[k], mesh.triangles[k + 1], mesh.triangles[k + 2]};
    for (unsigned copies = 1 + random() % 5 / 4; copies > 0; --copies) {
      std::shuffle(t.begin(), t.end(), random);
      triangles.push_back(t);
    }
  }
  std::shuffle(triangles.begin(), triangles.end(), random);
  std::vector<std::int32_t> number(static_cast<std::size_t>(mesh.n()));
  std::iota(number.begin(), number.end(), 0);
  std::shuffle(number.begin(), number.end(), random);
  Mesh result;
  result.vertices.resize(mesh.vertices.size());
  for (std::size_t v = 0; v < number.size(); ++v) {
    std::copy_n(&mesh.vertices[3 * v], 3, &result.vertices[3 * std::size_t(number[v])]);
  }
  for (const auto& triangle : triangles) {
    for (const std::int32_t corner : triangle) {
      result.triangles.push_back(number[std::size_t(corner)]);
    }
  }
  return result;
}

/// All contributions in the order of the triangles, summed by Eigen.
SparseMatrix plainly(const Mesh& mesh) {
  std::vector<quor::ElementStiffness> elements(mesh.triangles.size() / 3);
  quor::elementStiffnesses(mesh.vertices.data(), mesh.triangles.data(), elements.size(),
                           elements.data());
  std::vector<Eigen::Triplet<double>> triplets;
  for (std::size_t t = 0; t < elements.size(); ++t) {
    const std::int32_t* const corner = &mesh.triangles[3 * t];
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t next = corner[(k + 1) % 3];
      triplets.emplace_back(corner[k], corner[k], elements[t].corner[k]);
      triplets.emplace_back(corner[k], next, elements[t].edge[k]);
      triplets.emplace_back(next, corner[k], elements[t].edge[k]);
    }
  }
  SparseMatrix K(mesh.n(), mesh.n());
  K.setFromTriplets(triplets.begin(), triplets.end());
  return K;
}

void expectSameBits(const SparseMatrix& actual, const SparseMatrix& expected) {
  ASSERT_EQ(actual.cols(), expected.cols());
  ASSERT_EQ(actual.nonZeros(), expected.nonZeros());
  const auto n = std::size_t(expected.nonZeros());
  EXPECT_TRUE(std::equal(expected.outerIndexPtr(), expected.outerIndexPtr() + expected.cols() + 1,
                         actual.outerIndexPtr()));
  EXPECT_TRUE(
      std::equal(expected.innerIndexPtr(), expected.innerIndexPtr() + n, actual.innerIndexPtr()));
  EXPECT_EQ(std::memcmp(actual.valuePtr(), expected.valuePtr(), n * sizeof(double)), 0);
}

void expectThePlainBlocks(const Mesh& mesh, std::int32_t prescribed) {
  const quor::StiffnessBlocks blocks =
      quor::assembleStiffness(mesh.n(), prescribed, mesh.vertices, mesh.triangles);
  const SparseMatrix K = plainly(mesh);
  const std::int32_t isFree = mesh.n() - prescribed;
  expectSameBits(*blocks.FP, K.bottomLeftCorner(isFree, prescribed));
  expectSameBits(*blocks.FF, K.bottomRightCorner(isFree, isFree));
}

TEST(Assembly, HubsAndBooksOfEverySizeHaveTheBitsOfThePlainSum) {
  std::mt19937 random(20);
  for (std::int32_t size = 1; size <= 40; ++size) {
    for (int turn = 0; turn < 4; ++turn) {
      SCOPED_TRACE("size " + std::to_string(size) + ", turn " + std::to_string(turn));
      const Mesh around = shuffled(hub(size, size > 2 && turn % 2 == 0, random), random);
      expectThePlainBlocks(around, std::int32_t(random() % unsigned(around.n())));
      const Mesh pages = shuffled(book(size, random), random);
      expectThePlainBlocks(pages, std::int32_t(random() % unsigned(pages.n())));
      if (HasFailure()) {
        return;
      }
    }
  }
}

TEST(Assembly, AHubTakesTheValueOfItsSpokes) {
  std::mt19937 random(21);
  for (std::int32_t valence = 1; valence <= 40; ++valence) {
    const Mesh mesh = hub(valence, valence > 2, random);
    std::vector<std::int32_t> tags(std::size_t(mesh.n()), 1);
    tags[0] = 0;
    const std::vector<double> prescribed(tags.size(), 20.0);
    const std::vector<double> field = solve(build(mesh, tags), prescribed);
    EXPECT_NEAR(field[0], 20.0, 1e-11) << valence << " spokes";
  }
}

}  // namespace
