// Any bytes as a mesh with prescribed triangles, edges and vertices: quorkitSolveWithin must end,
// stay within its limit, and return a field that holds what is prescribed, or say why there is
// none. quorkitFlip and quorkitFaces get the same mesh.

#include "input.h"
#include "support/kit_mesh.h"

#include <quorkit.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

using fuzz::require;
using test::KitMesh;
using test::Mesh;

struct Free {
  void operator()(const QuorkitSolution* solution) const { quorkitFreeSolution(solution); }
  void operator()(const QuorkitFaces* faces) const { quorkitFreeFaces(faces); }
};

Mesh readMesh(fuzz::Input& input) {
  Mesh mesh;
  mesh.vertices = input.vertices(24);
  mesh.triangles = input.triangles(input.byte() % 48, mesh.n());
  return mesh;
}

/// Most are free.
std::vector<double> readValues(fuzz::Input& input, std::size_t count) {
  std::vector<double> values(count, test::kNaN);
  for (double& value : values) {
    const int kind = input.byte();
    if (kind % 4 == 0) {
      value = kind == 252 ? input.coordinate() : kind / 4 % 3;
    }
  }
  return values;
}

void flip(const Mesh& mesh, const std::vector<std::int32_t>& faces) {
  const QuorkitMesh* made = nullptr;
  const QuorkitStatus status = quorkitFlip(mesh.n(), mesh.vertices.data(), mesh.m(),
                                           mesh.triangles.data(), faces.data(), &made);
  const KitMesh flipped(made);
  require(status == QUORKIT_DONE || status == QUORKIT_BAD_ARGUMENT);
  require((made != nullptr) == (status == QUORKIT_DONE));
  if (flipped) {
    require(test::sameBits(test::plain(flipped).vertices, mesh.vertices));
    require(flipped->triangleCount == mesh.m());
    for (std::int32_t t = 0; t < mesh.m(); ++t) {
      const std::int32_t* const c = flipped->triangles + 3 * t;
      require(c[0] != c[1] && c[1] != c[2] && c[2] != c[0]);
      require(std::all_of(c, c + 3, [&](std::int32_t v) { return v >= 0 && v < mesh.n(); }));
      const std::int32_t origin = flipped->triangleOrigins[t];
      require(origin >= 0 && origin < mesh.m());
      require(faces[static_cast<std::size_t>(origin)] == faces[static_cast<std::size_t>(t)]);
    }
  }
}

void findFaces(const Mesh& mesh, double angle) {
  const QuorkitFaces* made = nullptr;
  const QuorkitStatus status =
      quorkitFaces(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), angle, &made);
  const std::unique_ptr<const QuorkitFaces, Free> faces(made);
  require(status == QUORKIT_DONE || status == QUORKIT_BAD_ARGUMENT);
  require((made != nullptr) == (status == QUORKIT_DONE));
  for (std::int32_t t = 0; made != nullptr && t < mesh.m(); ++t) {
    require(made->faces[t] >= 0 && made->faces[t] < made->faceCount);
  }
  for (std::int32_t e = 0; made != nullptr && e < made->edgeCount; ++e) {
    require(made->chains[e] >= 0 && made->chains[e] < made->chainCount);
    require(made->edges[2 * e] < made->edges[2 * e + 1] && made->edges[2 * e + 1] < mesh.n());
  }
}

void checkSolution(const QuorkitProblem& problem, const QuorkitSolution& solution) {
  if (solution.outcome != QUORKIT_SOLVED) {
    require(solution.outcome >= 1 && solution.outcome <= 3 && solution.vertexCount == 0);
    require(solution.vertex >= -1 && solution.vertex < problem.n);
    return;
  }
  require(solution.triangleCount <= std::max(problem.triangleLimit, 4 * problem.m));
  require(solution.error >= 0 && std::isfinite(solution.error) && solution.rounds > 0);
  require(std::equal(problem.vertices, problem.vertices + 3 * problem.n, solution.vertices));
  for (std::int32_t v = 0; v < solution.vertexCount; ++v) {
    require(std::isfinite(solution.field[v]));
    const std::int32_t* const origins = solution.vertexOrigins + 2 * v;
    require(v < problem.n ? origins[0] == v && origins[1] == v
                          : origins[0] < origins[1] && origins[1] < v && origins[0] >= 0);
  }
  for (std::int32_t k = 0; k < 3 * solution.triangleCount; ++k) {
    require(solution.triangles[k] >= 0 && solution.triangles[k] < solution.vertexCount);
    const std::int32_t origin = solution.triangleOrigins[k / 3];
    require(origin >= 0 && origin < problem.m);
    if (problem.triangleValues != nullptr && solution.jumpCount == 0 &&
        !std::isnan(problem.triangleValues[origin])) {
      require(solution.field[solution.triangles[k]] == problem.triangleValues[origin]);
    }
  }
  for (std::int32_t k = 0; k < solution.jumpCount; ++k) {
    require(solution.jumps[k] >= 0 && solution.jumps[k] < problem.n);
  }
}

std::int32_t goOn(double fraction, void* last) {
  require(fraction >= *static_cast<double*>(last) && fraction <= 1);
  *static_cast<double*>(last) = fraction;
  return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const int kind = input.byte();
  QuorkitProblem problem{};
  problem.tolerance = kind % 8 == 7 ? input.coordinate() : 0.02;
  problem.isShareOfSpan = kind / 8 % 2;
  problem.triangleLimit = 20 + 20 * input.byte();  // the usual one would take seconds
  const Mesh mesh = readMesh(input);
  const auto m = static_cast<std::size_t>(mesh.m());
  std::vector<std::int32_t> faces(m);
  for (std::int32_t& face : faces) {
    face = input.byte() % 3;
  }
  const std::vector<double> triangleValues = readValues(input, m);
  const std::vector<double> vertexValues = readValues(input, mesh.vertices.size() / 3);
  std::vector<double> sources = readValues(input, m);
  std::vector<std::int32_t> edges;
  std::vector<double> edgeValues;
  for (int e = input.byte() % 4; e > 0 && m > 0; --e) {
    const std::size_t at = static_cast<std::size_t>(input.byte()) % m * 3;
    edges.insert(edges.end(), {mesh.triangles[at], mesh.triangles[at + 1]});
    edgeValues.push_back(input.byte() % 3);
  }
  std::replace_if(
      sources.begin(), sources.end(), [](double source) { return std::isnan(source); }, 0.0);
  problem.n = mesh.n();
  problem.vertices = mesh.vertices.data();
  problem.m = mesh.m();
  problem.triangles = mesh.triangles.data();
  problem.triangleValues = triangleValues.data();
  problem.vertexValues = kind % 4 >= 2 ? vertexValues.data() : nullptr;
  problem.edgeCount = static_cast<std::int32_t>(edgeValues.size());
  problem.edges = edges.data();
  problem.edgeValues = edgeValues.data();
  problem.sources = kind % 2 == 1 ? sources.data() : nullptr;
  problem.faces = kind / 16 % 2 == 1 ? faces.data() : nullptr;

  flip(mesh, faces);
  findFaces(mesh, kind / 32 == 7 ? input.coordinate() : 30);
  const QuorkitSolution* made = nullptr;
  double last = 0;
  const QuorkitStatus status = quorkitSolveWithin(&problem, goOn, &last, &made);
  const std::unique_ptr<const QuorkitSolution, Free> solution(made);
  require(status == QUORKIT_DONE || status == QUORKIT_BAD_ARGUMENT);
  require((made != nullptr) == (status == QUORKIT_DONE));
  if (solution) {
    checkSolution(problem, *solution);
  }
  return 0;
}
