// quorkitRefine, quorkitRefineGraded and quorkitRefineTo against the rules of the header: the same
// vertices, triangles and origins, to the last bit.

#include "support/exact_refinement.h"
#include "support/kit.h"

#include <random>

using namespace test;

namespace {

KitMesh refineGraded(const Mesh& mesh, double longest, const std::vector<double>& sizes) {
  const QuorkitMesh* made = nullptr;
  EXPECT_EQ(quorkitRefineGraded(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                longest, sizes.data(), &made),
            QUORKIT_DONE);
  return KitMesh(made);
}

class SmallMeshes {
 public:
  explicit SmallMeshes(unsigned seed) : random_(seed) {}

  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random_);
  }
  std::int32_t below(std::int32_t n) { return std::int32_t(random_() % unsigned(n)); }

  /// Triangles of every shape in any order, on points anywhere, on a lattice, far out, or
  /// stretched.
  Mesh next() {
    Mesh mesh = below(2) == 0 ? bumpyMesh(2 + below(3), 2 + below(3), random_())
                              : tangledMesh(4 + below(5), 1 + below(12), random_());
    const std::int32_t kind = below(5);
    const double stretch = std::pow(10.0, uniform(-3, 0));
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
      double& x = mesh.vertices[i];
      if (kind == 1) {
        x = std::floor(4 * x) / 4;  // equal diagonals, and vertices at one place
      } else if (kind == 2) {
        x += 1e12;  // a step of rounding is 1.2e-4
      } else if (kind == 3 && i % 3 == 1) {
        x *= stretch;
      }
    }
    if (kind == 4) {
      const double unit = std::ldexp(1.0, below(900) - 450);
      for (double& x : mesh.vertices) {
        x *= unit;
      }
      unit_ = unit;
    } else {
      unit_ = 1;
    }
    return mesh;
  }
  double unit() const { return unit_; }

 private:
  std::mt19937 random_;
  double unit_ = 1;
};

TEST(KitRefine, IsTheOneOfTheHeaderToTheLastBit) {
  SmallMeshes meshes(31);
  int parts = 0;
  for (int i = 0; i < 400; ++i) {
    const Mesh mesh = meshes.next();
    const double longest = meshes.unit() * std::pow(10.0, meshes.uniform(-1.3, 0.3));
    const std::optional<Refined> expected = ExactRefinement::of(mesh, longest);
    ASSERT_TRUE(expected);
    ASSERT_EQ(differenceOf(*refine(mesh, longest), *expected), "") << "mesh " << i;
    parts += expected->mesh.m();
  }
  EXPECT_GT(parts, 100 * 400);
}

TEST(KitRefine, GradesAsTheHeaderSaysToTheLastBit) {
  SmallMeshes meshes(32);
  for (int i = 0; i < 400; ++i) {
    const Mesh mesh = meshes.next();
    const double longest = meshes.unit() * std::pow(10.0, meshes.uniform(-1, 0.3));
    std::vector<double> sizes;
    for (std::int32_t v = 0; v < mesh.n(); ++v) {
      sizes.push_back(meshes.below(3) == 0 ? longest * std::pow(10.0, meshes.uniform(-4, 1))
                                           : kInfinity);
    }
    const std::optional<Refined> expected = ExactRefinement::of(mesh, longest, sizes);
    ASSERT_TRUE(expected);
    ASSERT_EQ(differenceOf(*refineGraded(mesh, longest, sizes), *expected), "") << "mesh " << i;
  }
}

TEST(KitRefineTo, IsTheRefinementToItsLengthToTheLastBit) {
  SmallMeshes meshes(33);
  for (int i = 0; i < 150; ++i) {
    const Mesh mesh = meshes.next();
    const std::int32_t wanted = 1 + meshes.below(3000);
    const KitMesh refined = refineTo(mesh, wanted);
    ASSERT_LE(refined->triangleCount, std::max(wanted, mesh.m())) << "mesh " << i;
    if (refined->triangleCount > mesh.m()) {
      const auto expected = ExactRefinement::of(mesh, refined->longestEdge);
      ASSERT_TRUE(expected);
      ASSERT_EQ(differenceOf(*refined, *expected), "") << "mesh " << i;
    }
  }
}

}  // namespace
