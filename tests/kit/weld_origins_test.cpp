// quorkitWeldOrigins: the answers of quorkitWeld, and where each triangle comes from.

#include "support/kit.h"

#include <algorithm>
#include <array>
#include <map>

using namespace test;

namespace {

struct Weld {
  Mesh mesh;
  std::vector<std::int32_t> map;
  std::vector<std::int32_t> origins;
};

/// @param isInPlace  whether vertices and triangles replace those of the soup
Weld weldOrigins(const Mesh& soup, double tolerance, bool isInPlace) {
  Weld weld{soup, std::vector<std::int32_t>(std::size_t(soup.n())),
            std::vector<std::int32_t>(std::size_t(soup.m()))};
  std::int32_t n = -7;
  std::int32_t m = -7;
  const Mesh& in = isInPlace ? weld.mesh : soup;
  EXPECT_EQ(quorkitWeldOrigins(soup.n(), in.vertices.data(), soup.m(), in.triangles.data(),
                               weld.mesh.vertices.data(), weld.mesh.triangles.data(),
                               weld.map.data(), weld.origins.data(), &n, &m, tolerance),
            QUORKIT_DONE);
  weld.mesh.vertices.resize(3 * std::size_t(n));
  weld.mesh.triangles.resize(3 * std::size_t(m));
  weld.origins.resize(std::size_t(m));
  return weld;
}

/// A soup of few places, so that many triangles collapse and repeat, in every order of corners.
Mesh crowdedSoup(unsigned seed) {
  std::mt19937 random(seed);
  Mesh soup;
  for (int k = 0; k < 3 * 400; ++k) {
    soup.vertices.insert(soup.vertices.end(), {double(random() % 5), double(random() % 2), 0});
    soup.triangles.push_back(k);
  }
  return soup;
}

TEST(KitWeldOrigins, NameTheFirstTriangleWithTheVertices) {
  for (const Mesh& soup : {crowdedSoup(1), crowdedSoup(2), soupOf(bumpyMesh(9, 8, 3)), Mesh{}}) {
    const Weld weld = weldOrigins(soup, 0.5, false);
    std::map<std::array<std::int32_t, 3>, std::int32_t> first;  // of each set of three vertices
    std::vector<std::int32_t> expected;
    for (std::int32_t t = 0; t < soup.m(); ++t) {
      std::array<std::int32_t, 3> key{};
      for (std::size_t k = 0; k < 3; ++k) {
        key[k] = weld.map[std::size_t(soup.triangles[3 * std::size_t(t) + k])];
      }
      std::sort(key.begin(), key.end());
      if (key[0] != key[1] && key[1] != key[2] && first.emplace(key, t).second) {
        expected.push_back(t);
      }
    }
    EXPECT_EQ(weld.origins, expected);
    EXPECT_EQ(weld.mesh.triangles.size(), 3 * expected.size());
  }
}

TEST(KitWeldOrigins, GiveTheBitsOfTheWeldAlsoInPlace) {
  for (const Mesh& soup : {crowdedSoup(3), soupOf(bumpyMesh(9, 8, 3))}) {
    Mesh expected = soup;
    std::vector<std::int32_t> map(std::size_t(soup.n()));
    std::int32_t n = 0;
    std::int32_t m = 0;
    ASSERT_EQ(
        quorkitWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                    expected.vertices.data(), expected.triangles.data(), map.data(), &n, &m, 0.5),
        QUORKIT_DONE);
    expected.vertices.resize(3 * std::size_t(n));
    expected.triangles.resize(3 * std::size_t(m));
    const Weld apart = weldOrigins(soup, 0.5, false);
    const Weld inPlace = weldOrigins(soup, 0.5, true);
    for (const Weld& weld : {apart, inPlace}) {
      EXPECT_TRUE(sameMesh(weld.mesh, expected));
      EXPECT_EQ(weld.map, map);
    }
    EXPECT_EQ(inPlace.origins, apart.origins);
  }
}

TEST(KitWeldOrigins, SaysWhatIsABadArgument) {
  const Mesh soup = soupOf(gridMesh(2, 2));
  Weld weld{soup, std::vector<std::int32_t>(6), {77, 77}};
  std::int32_t n = 77;
  std::int32_t m = 77;
  const auto call = [&](std::int32_t pointCount, std::int32_t* map, std::int32_t* origins,
                        std::int32_t* vertexCount, double tolerance) {
    return quorkitWeldOrigins(pointCount, soup.vertices.data(), 2, soup.triangles.data(),
                              weld.mesh.vertices.data(), weld.mesh.triangles.data(), map, origins,
                              vertexCount, &m, tolerance);
  };
  std::int32_t* const map = weld.map.data();
  std::int32_t* const origins = weld.origins.data();
  EXPECT_EQ(call(6, map, nullptr, &n, 0.1), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(call(6, nullptr, origins, &n, 0.1), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(call(6, map, origins, nullptr, 0.1), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(call(5, map, origins, &n, 0.1), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(call(6, map, origins, &n, kNaN), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(weld.origins, (std::vector<std::int32_t>{77, 77}));
  EXPECT_EQ(n, 77);
  EXPECT_EQ(call(6, map, origins, &n, 0.1), QUORKIT_DONE);
}

}  // namespace
