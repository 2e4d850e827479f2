// A closed or open surface with damage of any kind, cleaned: nothing opens, turns or is lost, and
// small meshes come out as the rules of the header say, to the last bit.

#include "input.h"
#include "support/cleaning_rules.h"
#include "support/damaged_mesh.h"
#include "support/plain_cleaning.h"

#include <quorkit.h>

#include <string>

namespace {

using test::KitMesh;
using test::Mesh;

void requireNone(const std::string& fault) {
  fuzz::require(fault.empty(), fault);
}

/// A share of any size between 1e-16 and 1, or that far below 1.
double readShare(fuzz::Input& input) {
  const int kind = input.byte();
  const double share = (1 + input.byte() % 100) * 0.01 * std::pow(10.0, -(kind / 2) % 15);
  return kind % 2 == 0 ? share : 1 - share;
}

/// Moves a coordinate by a few steps of rounding.
void nudge(double& coordinate, int steps) {
  for (int k = 0; k < std::abs(steps); ++k) {
    coordinate = std::nextafter(coordinate, steps > 0 ? 100.0 : -100.0);
  }
}

void damage(Mesh& mesh, fuzz::Input& input) {
  const int kind = input.byte();
  const auto m = std::size_t(mesh.m());
  const std::size_t t = std::size_t(input.byte()) % m;
  const std::size_t e = std::size_t(kind) / 8 % 3;
  const std::int32_t a = mesh.triangles[3 * t + e];
  const std::int32_t b = mesh.triangles[3 * t + (e + 1) % 3];
  double off = 0;
  std::size_t side = 0;
  switch (kind % 8) {
    case 0:
    case 1:
    case 2:
      test::insertFiller(mesh, t, e, readShare(input), 0);
      break;
    case 3:
      off = 1e-7 * (input.byte() % 32);
      test::insertFiller(mesh, t, e, readShare(input), off);
      break;
    case 4:  // a chain: fillers on the long side of the filler before
      for (int k = 1 + input.byte() % 6; k > 0; --k) {
        side = std::size_t(input.byte()) % 3;
        test::insertFiller(mesh, std::size_t(mesh.m()) - 1, side, readShare(input), 0);
      }
      break;
    case 5:  // two corners at nearly one place
      for (std::size_t axis = 0; axis < 3; ++axis) {
        double& coordinate = mesh.vertices[3 * std::size_t(a) + axis];
        coordinate = mesh.vertices[3 * std::size_t(b) + axis];
        nudge(coordinate, input.byte() % 8 - 3);
      }
      break;
    case 6:
      nudge(mesh.vertices[3 * std::size_t(a) + std::size_t(input.byte()) % 3], input.byte() - 128);
      break;
    default:
      if (m > 1) {
        mesh.triangles.erase(mesh.triangles.begin() + std::ptrdiff_t(3 * t),
                             mesh.triangles.begin() + std::ptrdiff_t(3 * t + 3));
      }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  std::mt19937 random(static_cast<unsigned>(input.byte()));
  Mesh mesh = test::closedMesh(1 + input.byte() % 3, random);
  const int exponent = input.byte() % 61 - 30;
  while (!input.isEmpty() && mesh.m() < 200) {
    damage(mesh, input);
  }
  for (double& coordinate : mesh.vertices) {
    coordinate = std::ldexp(coordinate, exponent);
  }
  const QuorkitMesh* made = nullptr;
  const QuorkitStatus status =
      quorkitClean(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), &made);
  requireNone(status == QUORKIT_DONE ? "" : "refused");
  const KitMesh cleaned(made);
  requireNone(test::faultOfCleaning(mesh, cleaned));
  if (mesh.m() <= 60) {
    const test::PlainCleaning expected(mesh);
    requireNone(expected.isClose() ? "" : expected.differenceOf(*cleaned));
  }
  return 0;
}
