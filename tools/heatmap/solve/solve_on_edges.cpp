#include "interrupt.h"
#include "part/kit_mesh.h"
#include "solve/singular_points.h"
#include "solve/solution.h"
#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

constexpr const char* kThinTriangles =
    "the part has triangles of almost no area: weld them away with a larger --tolerance";
// From here on building takes minutes, and gigabytes of memory.
constexpr double kSlowTriangleCount = 2e6;

// The part on its way to the mesh that is solved on.
class Refinement {
 public:
  explicit Refinement(const Regions& regions)
      : part_(regions.surface()), regions_(regions.all()), mesh_(part_), change_(noChange(part_)) {}

  const Surface& mesh() const { return mesh_; }

  // Splits edges longer than the length everywhere, then shorter ones near singular points.
  void refine(double length) {
    try {
      take(quor::kit::refine(mesh_.vertices, mesh_.triangles, length));
      const std::vector<double> sizes = sizesNear(singularPoints(), mesh_, length);
      if (!sizes.empty()) {
        take(quor::kit::refine(mesh_.vertices, mesh_.triangles, length, sizes));
      }
    } catch (const std::length_error&) {
      throw std::runtime_error("--edge " + text(length) +
                               " would make more triangles than fit: give a larger length");
    }
  }

  // Per vertex whether its value is prescribed, 1 or 0, and the value: where regions touch, a mean,
  // with a warning if their values differ.
  std::vector<std::int32_t> prescribe(std::vector<double>& values, Stages& stages) const {
    std::vector<std::int32_t> tags(mesh_.vertices.size() / 3);
    values.assign(tags.size(), 0.0);
    std::int32_t jump = -1;
    for (const Region& region : regions_) {
      Selection selection = region.selection;
      follow(change_, selection);
      for (const std::int32_t v : verticesOf(mesh_, selection)) {
        double& value = values[toSize(v)];
        const bool isJump = tags[toSize(v)] != 0 && value != region.value;
        jump = isJump && jump < 0 ? v : jump;
        value = isJump ? value / 2.0 + region.value / 2.0 : region.value;
        tags[toSize(v)] = 1;
      }
    }
    if (jump >= 0) {
      stages.warn("nothing is promised near where regions of different values touch, first at " +
                  placeText(mesh_, mesh_.point(jump)) +
                  ": no continuous field has both values there; keep the regions apart");
    }
    return tags;
  }

 private:
  void take(const quor::kit::Mesh& refined) {
    append(changeOf(refined), change_);
    mesh_ = copyOf(refined, part_.origin);
  }

  std::vector<Position> singularPoints() const {
    std::vector<bool> isFace(toSize(part_.triangleCount()));
    std::vector<bool> isVertex(toSize(part_.vertexCount()));
    for (const Region& region : regions_) {
      for (const std::int32_t t : region.selection.triangles) {
        isFace[toSize(t)] = true;
      }
      for (const std::int32_t v : verticesOf(part_, region.selection)) {
        isVertex[toSize(v)] = true;
      }
    }
    std::vector<Position> points = cornersOfSurface(part_);
    const std::vector<Position> others = cornersOfPrescribed(part_, isFace, isVertex);
    points.insert(points.end(), others.begin(), others.end());
    return points;
  }

  const Surface& part_;
  const std::vector<Region>& regions_;
  Surface mesh_;
  Change change_;
};

// How many triangles there will be at least: each has at most the area of an equilateral one.
double leastTriangles(const Surface& surface, double length) {
  double area = 0.0;
  for (std::int32_t t = 0; t < surface.triangleCount(); ++t) {
    area += areaOf(surface, t);
  }
  return area / (0.25 * std::sqrt(3.0) * length * length);
}

quor::kit::Solver build(const Surface& mesh, const std::vector<std::int32_t>& tags,
                        Stages& stages) {
  try {
    quor::kit::Solver solver =
        quor::kit::Solver::make(mesh.vertices, mesh.triangles, tags, [&stages](double fraction) {
          stages.advance(fraction);
          return isInterrupted();
        });
    if (solver.info().factorization != 0) {
      throw std::runtime_error(std::string("the factorization failed: ") + kThinTriangles);
    }
    return solver;
  } catch (const quor::kit::Error& error) {
    if (error.status() == QUORKIT_CANCELLED) {
      throw Interrupted();
    }
    throw;
  }
}

}  // namespace

Solution solveOnEdges(const Regions& regions, std::optional<double> length, Stages& stages) {
  if (length) {
    const double least = leastTriangles(regions.surface(), *length);
    if (least > kSlowTriangleCount) {
      stages.warn("--edge " + text(*length) + " makes more than " + shortText(least / 1e6, 2) +
                  " million triangles, which takes minutes and gigabytes: Ctrl-C stops, and a "
                  "larger length is faster");
    }
  }
  stages.begin("refine");
  Refinement refinement(regions);
  if (length) {
    refinement.refine(*length);
  }
  stages.end(counts(refinement.mesh()) +
             (length ? ", edges up to " + shortText(*length) : ", as they are"));
  stopIfInterrupted();

  Solution solution{refinement.mesh(), {}, std::nullopt, ""};
  std::vector<double> values;
  const std::vector<std::int32_t> tags = refinement.prescribe(values, stages);
  stages.begin("build");
  const quor::kit::Solver solver = build(solution.mesh, tags, stages);
  stages.end("factorized");
  stages.begin("solve");
  solution.field = solver.solve(values);
  if (!std::all_of(solution.field.begin(), solution.field.end(),
                   [](double value) { return std::isfinite(value); })) {
    throw std::runtime_error(std::string("the field is not finite everywhere: ") + kThinTriangles);
  }
  stages.end("done");
  return solution;
}

}  // namespace heatmap
