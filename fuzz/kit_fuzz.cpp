// Any bytes as a mesh for the kit: what it checks, cleans and refines must be what it says, and
// whatever it accepts must go through solver, colours and files.

#include "input.h"
#include "support/refinement_oracle.h"

#include <quorkit.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using fuzz::require;
using test::KitMesh;
using test::Mesh;

/// @param anything  corners need not be in range, nor different
Mesh readMesh(fuzz::Input& input, bool anything) {
  Mesh mesh;
  mesh.vertices = input.vertices(32);
  for (int t = input.byte() % 64; t > 0; --t) {
    for (int corner = 0; corner < 3; ++corner) {
      mesh.triangles.push_back(anything && input.byte() == 0 ? input.raw<std::int32_t>()
                                                             : input.byte() % mesh.n());
    }
  }
  return mesh;
}

QuorkitReport check(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  QuorkitReport report{};
  require(quorkitCheck(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                       &report) == QUORKIT_DONE);
  return report;
}

bool isOneOf(QuorkitStatus status, QuorkitStatus other) {
  return status == QUORKIT_DONE || status == other;
}

KitMesh checkedClean(const Mesh& mesh, const QuorkitReport& report) {
  const QuorkitMesh* made = nullptr;
  const QuorkitStatus status =
      quorkitClean(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), &made);
  KitMesh cleaned(made);
  require(isOneOf(status, QUORKIT_BAD_ARGUMENT));
  require((made != nullptr) == (status == QUORKIT_DONE));
  require(made == nullptr || report.cornersOutOfRange.count == 0);
  require(made != nullptr || report.cornersOutOfRange.count > 0 || report.notFinite.count > 0);
  if (cleaned) {
    const Mesh result = test::plain(cleaned);
    const QuorkitReport after = check(result, std::vector<std::int32_t>(result.vertices.size()));
    require(after.flatTriangles.count == made->degenerateCount);
    require(after.repeatedCorners.count == 0);
    require(after.unusedVertices.count == 0 && after.notFinite.count == 0);
    require(after.cornersOutOfRange.count == 0);
    for (std::int32_t v = 0; v < mesh.n(); ++v) {
      require(made->vertexMap[v] >= -1 && made->vertexMap[v] < made->vertexCount);
    }
    for (std::int32_t v = 0; v < made->vertexCount; ++v) {
      const auto place = static_cast<std::size_t>(v);
      const std::int32_t origin = made->vertexOrigins[2 * place];
      require(origin >= 0 && origin < mesh.n() && made->vertexMap[origin] == v);
      const double* const before = mesh.vertices.data() + 3 * static_cast<std::size_t>(origin);
      require(std::equal(before, before + 3, made->vertices + 3 * place));
    }
    for (std::int32_t t = 0; t < made->triangleCount; ++t) {
      require(made->triangleOrigins[t] >= 0 && made->triangleOrigins[t] < mesh.m());
    }
    require(report.flatTriangles.count != 0 || report.repeatedCorners.count != 0 ||
            result.triangles.size() == mesh.triangles.size());
  }
  return cleaned;
}

/// Covering and orientation are for coordinates whose products are neither lost nor infinite, and
/// for edges beside which the rounding of a midpoint is nothing.
void checkRefinement(const Mesh& input, const KitMesh& refined, double longest, bool isTame,
                     double shortest = 0) {
  const std::string fault = test::faultOfRefinement(input, *refined, longest, shortest);
  const bool isExact = isTame && longest > 1e-6 && !(shortest > 0 && shortest < 1e-6);
  require(fault.empty() || (!isExact && fault.find("part") != std::string::npos));
}

/// @param shares  of the length, for each vertex; none below a quarter but those that are refused
void refineGraded(const Mesh& mesh, double longest, const std::vector<double>& shares,
                  bool isTame) {
  std::vector<double> sizes;
  for (const double share : shares) {
    sizes.push_back(share * longest);
  }
  const bool areSizes =
      std::all_of(sizes.begin(), sizes.end(), [](double size) { return size > 0; });
  const QuorkitMesh* made = nullptr;
  const QuorkitStatus status =
      quorkitRefineGraded(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), longest,
                          sizes.data(), &made);
  const KitMesh refined(made);
  require(isOneOf(status, QUORKIT_BAD_ARGUMENT));
  require((made != nullptr) == (status == QUORKIT_DONE) && (made == nullptr || areSizes));
  if (refined) {
    checkRefinement(mesh, refined, longest, isTame, longest / 4);
  }
}

/// @param shares  see refineGraded
void refine(const Mesh& mesh, double longest, std::int32_t wanted,
            const std::vector<double>& shares, bool isTame) {
  constexpr std::int32_t kMany = 20000;
  const QuorkitMesh* made = nullptr;
  require(isOneOf(quorkitRefineTo(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                  wanted, &made),
                  QUORKIT_BAD_ARGUMENT));
  const KitMesh some(made);
  if (some) {
    require(some->triangleCount <= std::max(wanted, mesh.m()));
    if (some->longestEdge > 0) {
      checkRefinement(mesh, some, some->longestEdge, isTame);
    }
  }
  // A length that asks for too much is not tried: even its refusal counts up to the limit.
  const bool isModest = some && some->triangleCount < kMany && longest >= some->longestEdge / 4;
  if (isModest || !(longest > 0)) {
    made = nullptr;
    const QuorkitStatus status = quorkitRefine(mesh.n(), mesh.vertices.data(), mesh.m(),
                                               mesh.triangles.data(), longest, &made);
    const KitMesh refined(made);
    require((made != nullptr) == (status == QUORKIT_DONE));
    if (refined) {
      checkRefinement(mesh, refined, longest, isTame);
    }
  }
  if (isModest && longest >= some->longestEdge) {
    refineGraded(mesh, longest, shares, isTame);
  }
}

std::int32_t goOn(double fraction, void* last) {
  require(fraction >= *static_cast<double*>(last) && fraction <= 1);
  *static_cast<double*>(last) = fraction;
  return 0;
}

void solve(const Mesh& mesh, const std::vector<std::int32_t>& tags, double value, bool writes) {
  QuorkitSolver* made = nullptr;
  double last = 0;
  const QuorkitStatus status =
      quorkitConstruct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                       goOn, &last, &made);
  const test::KitSolver solver(made);
  require(isOneOf(status, QUORKIT_BAD_ARGUMENT));
  if (solver) {
    std::vector<double> field(tags.size(), value);
    require(quorkitAreas(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         field.data()) == QUORKIT_DONE);
    require(quorkitSolve(solver.get(), mesh.vertices.data(), field.data(), field.data()) ==
            QUORKIT_DONE);
    std::vector<std::uint8_t> rgba(4 * field.size());
    require(isOneOf(quorkitColours(mesh.n(), field.data(), value, mesh.vertices[0], rgba.data()),
                    QUORKIT_BAD_ARGUMENT));
    require(!writes ||
            isOneOf(quorkitWrite(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                                 field.data(), "/tmp/quor_kit_fuzz", nullptr, 0.001),
                    QUORKIT_BAD_ARGUMENT));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const int kind = input.byte();
  const double longest = input.coordinate();
  const std::int32_t wanted = input.byte() * 2;
  const double value = input.coordinate();
  const Mesh mesh = readMesh(input, kind % 4 == 0);
  std::vector<std::int32_t> tags(static_cast<std::size_t>(mesh.n()));
  for (std::int32_t& tag : tags) {
    tag = input.byte() % 5;
  }
  bool isTame = true;
  for (const double coordinate : mesh.vertices) {
    const double absolute = std::abs(coordinate);
    isTame = isTame && (absolute == 0 || (absolute > 1e-3 && absolute < 1e3));
  }
  const QuorkitReport report = check(mesh, tags);
  const KitMesh cleaned = checkedClean(mesh, report);
  std::vector<double> shares;
  for (const std::int32_t tag : tags) {
    const double all[] = {HUGE_VAL, 1, 0.5, 0.25, kind % 8 == 7 ? 0 : HUGE_VAL};
    shares.push_back(all[tag]);
  }
  refine(mesh, longest, wanted, shares, isTame);
  if (cleaned && cleaned->triangleCount > 0) {
    const Mesh clean = test::plain(cleaned);
    shares.resize(clean.vertices.size() / 3, HUGE_VAL);
    refine(clean, longest, wanted, shares, isTame);
  }
  solve(mesh, tags, value, kind % 16 == 1);
  return 0;
}
