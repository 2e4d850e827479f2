#include "interrupt.h"
#include "part/kit_mesh.h"
#include "solve/solution.h"
#include "text.h"

#include <quorkit.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace heatmap {
namespace {

struct Free {
  void operator()(const QuorkitSolution* solution) const { quorkitFreeSolution(solution); }
};
using KitSolution = std::unique_ptr<const QuorkitSolution, Free>;

// Solving is on a mesh with each triangle in four at least.
constexpr std::int32_t kManyTriangles = 500000;

// What is prescribed, in the arrays of the kit.
class Problem {
 public:
  Problem(const Regions& regions, double tolerance, std::int32_t triangleLimit) {
    const Surface& surface = regions.surface();
    triangleValues_.assign(toSize(surface.triangleCount()),
                           std::numeric_limits<double>::quiet_NaN());
    for (const Region& region : regions.all()) {
      for (const std::int32_t t : region.selection.triangles) {
        triangleValues_[toSize(t)] = region.value;
      }
      for (const Edge& edge : region.selection.edges) {
        edges_.insert(edges_.end(), edge.begin(), edge.end());
        edgeValues_.push_back(region.value);
      }
    }
    problem_.n = surface.vertexCount();
    problem_.vertices = surface.vertices.data();
    problem_.m = surface.triangleCount();
    problem_.triangles = surface.triangles.data();
    problem_.triangleValues = triangleValues_.data();
    problem_.edgeCount = toIndex(edgeValues_.size());
    problem_.edges = edges_.data();
    problem_.edgeValues = edgeValues_.data();
    problem_.tolerance = tolerance;
    problem_.triangleLimit = triangleLimit;
  }

  // Throws Interrupted on Ctrl-C, and for what is not refused before.
  KitSolution solve(Stages& stages) const {
    const auto progress = [](double fraction, void* context) -> std::int32_t {
      static_cast<Stages*>(context)->advance(fraction);
      return isInterrupted() ? 1 : 0;
    };
    const QuorkitSolution* solution = nullptr;
    QuorkitError error{};
    switch (quorkitSolveWithin(&problem_, progress, &stages, &solution, &error)) {
      case QUORKIT_DONE:
        return KitSolution(solution);
      case QUORKIT_CANCELLED:
        throw Interrupted();
      case QUORKIT_OUT_OF_MEMORY:
        throw std::bad_alloc();
      case QUORKIT_TOO_LARGE:
        throw std::length_error(error.text);
      default:
        throw std::runtime_error(std::string("solving failed: ") + error.text);
    }
  }

 private:
  std::vector<double> triangleValues_;
  std::vector<std::int32_t> edges_;
  std::vector<double> edgeValues_;
  QuorkitProblem problem_{};
};

// The neighbourhood of where regions of different values meet, in words.
std::string describeJumps(const Surface& surface, const QuorkitSolution& solution) {
  if (solution.jumpCount == 0) {
    return "";
  }
  return "within " + shortText(solution.jumpRadius) +
         " of where regions of different values touch, first at " +
         placeText(surface, surface.point(solution.jumps[0]));
}

}  // namespace

Solution solveWithin(const Regions& regions, const Allowance& allowance, std::int32_t triangleLimit,
                     Stages& stages) {
  const Surface& surface = regions.surface();
  if (surface.triangleCount() > kManyTriangles) {
    stages.warn("the part has " + shortText(1e-6 * surface.triangleCount(), 2) +
                " million triangles, and solving within a tolerance takes four times as many at "
                "least, for minutes and gigabytes: --edge none solves on them as they are");
  }
  stages.begin("solve");
  const KitSolution solved =
      Problem(regions, allowance.tolerance - allowance.textError, triangleLimit).solve(stages);
  if (solved->outcome != QUORKIT_SOLVED) {
    throw std::runtime_error(
        "the equations have no finite solution: the part has triangles of almost no area. Weld "
        "them "
        "away with a larger --tolerance");
  }
  Solution solution;
  solution.mesh.vertices.assign(solved->vertices,
                                solved->vertices + 3 * toSize(solved->vertexCount));
  solution.mesh.triangles.assign(solved->triangles,
                                 solved->triangles + 3 * toSize(solved->triangleCount));
  solution.mesh.origin = surface.origin;
  solution.field.assign(solved->field, solved->field + toSize(solved->vertexCount));
  solution.error = solved->error + allowance.textError;
  solution.errorExcept = describeJumps(surface, *solved);
  if (!solution.errorExcept.empty()) {
    stages.warn("nothing is promised " + solution.errorExcept +
                ": no continuous field has both values there; keep the regions apart");
  }
  if (solved->isReached == 0) {
    stages.warn("the error is " + errorText(*solution.error) + ", not within " +
                shortText(allowance.tolerance, 2) +
                ": the next mesh would have more triangles than --triangle-limit " +
                std::to_string(triangleLimit) +
                ". Give a larger --within or --triangle-limit, or larger regions");
  }
  stages.end(counts(solution.mesh) + ", in " + counted(solved->rounds, "round"));
  return solution;
}

}  // namespace heatmap
