// Small meshes of any shape, of a few steps of rounding or with sizes at every scale, refined: the
// mesh of the header's rules, to the last bit; its area, orientation and place where rounding is
// small.

#include "input.h"
#include "support/exact_refinement.h"
#include "support/refinement_oracle.h"

#include <quorkit.h>

#include <string>

namespace {

using fuzz::require;
using test::ExactRefinement;
using test::KitMesh;
using test::Mesh;

constexpr int kMost = 1 << 14;  ///< triangles; an input that makes more is left out

void requireSame(const QuorkitMesh& made, const test::Refined& expected) {
  const std::string difference = test::differenceOf(made, expected);
  require(difference.empty(), difference);
}

/// @param isTame  receives whether the rounding of midpoints is small beside all sides
Mesh readMesh(fuzz::Input& input, bool& isTame) {
  Mesh mesh;
  const int kind = input.byte();
  const int n = 3 + input.byte() % 8;
  const double place = std::ldexp(1.0, kind / 4 - 32);
  isTame = false;
  for (int i = 0; i < 3 * n; ++i) {
    double coordinate = 0;
    switch (kind % 4) {
      case 0:  // a few steps of rounding
        coordinate = place * (1 + std::ldexp(input.byte() % 64, -52));
        break;
      case 1:
        coordinate = input.coordinate();
        break;
      default:
        isTame = true;
        coordinate = place * (input.byte() - 128);
    }
    // Larger steps of rounding have no square, and are refused.
    mesh.vertices.push_back(std::abs(coordinate) < 1e150 ? coordinate : 1.0);
  }
  for (int t = 1 + input.byte() % 12; t > 0; --t) {
    const int a = input.byte() % n;
    const int b = (a + 1 + input.byte() % (n - 1)) % n;
    const int c = input.byte() % n;
    if (c != a && c != b) {
      mesh.triangles.insert(mesh.triangles.end(), {a, b, c});
    }
  }
  return mesh;
}

/// The longest side times a factor of every scale.
double readLength(fuzz::Input& input, const Mesh& mesh) {
  double square = 0;
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    square = std::max(square, test::squaredLength(mesh, mesh.triangles[k],
                                                  mesh.triangles[k / 3 * 3 + (k + 1) % 3]));
  }
  const int exponent = input.byte() % 8;
  const double length = std::ldexp(std::sqrt(square) * (128 + input.byte()) / 256, -exponent);
  return length > 0 && std::isfinite(length) ? length : 1.0;
}

std::vector<double> readSizes(fuzz::Input& input, const Mesh& mesh, double longest) {
  std::vector<double> sizes;
  for (std::int32_t v = 0; v < mesh.n(); ++v) {
    const int byte = input.byte();
    const double size = std::ldexp(longest, 2 - byte / 2);
    sizes.push_back(byte % 2 == 0 || !(size > 0) ? HUGE_VAL : size);
  }
  return sizes;
}

void expectRules(const Mesh& mesh, const KitMesh& refined, double longest, bool isTame) {
  const std::string fault = test::faultOfRefinement(mesh, *refined, longest);
  require(fault.empty() || (!isTame && fault.find("part") != std::string::npos), fault);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  bool isTame = false;
  const Mesh mesh = readMesh(input, isTame);
  const double longest = readLength(input, mesh);
  const std::int32_t wanted = 1 + input.byte() * 4;
  const std::vector<double> sizes = readSizes(input, mesh, longest);
  const QuorkitMesh* made = nullptr;
  if (const auto expected = ExactRefinement::of(mesh, longest, {}, kMost)) {
    require(quorkitRefine(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), longest,
                          &made) == QUORKIT_DONE,
            "refused");
    const KitMesh refined(made);
    requireSame(*refined, *expected);
    expectRules(mesh, refined, longest, isTame);
  }
  if (const auto expected = ExactRefinement::of(mesh, longest, sizes, kMost)) {
    require(quorkitRefineGraded(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                longest, sizes.data(), &made) == QUORKIT_DONE,
            "refused");
    const KitMesh refined(made);
    requireSame(*refined, *expected);
  }
  require(quorkitRefineTo(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), wanted,
                          &made) == QUORKIT_DONE,
          "refused");
  const KitMesh refined(made);
  require(refined->triangleCount <= std::max(wanted, mesh.m()), "more triangles than wanted");
  if (refined->triangleCount > mesh.m()) {
    const auto expected = ExactRefinement::of(mesh, refined->longestEdge, {}, wanted);
    require(bool(expected), "more triangles by the rules");
    requireSame(*refined, *expected);
  }
  return 0;
}
