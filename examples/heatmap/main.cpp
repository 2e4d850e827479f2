// heatmap: the main job, from a mesh file to a coloured OBJ. Two selections of vertices get a hot
// and a cold value; the field in between is what heat conduction makes of them.

#include "field.h"
#include "mesh.h"
#include "read_soup.h"
#include "selection.h"
#include "weld_mesh.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace heatmap;

struct Options {
  std::string part;
  std::string out;
  std::string name = "heatmap";
  std::string ramp = QUOR_RAMP;
  double tolerance = -1.0;  // negative: 1e-6 of the diagonal
  std::vector<std::string> hot;
  std::vector<std::string> cold;
  double hotValue = 1.0;
  double coldValue = 0.0;
  bool largest = false;
};

// Prints what a stage came to and the time since the one before.
class Progress {
 public:
  void stage(const char* name, const std::string& result) {
    const auto now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - last_).count();
    std::printf("%-7s %-64s %8.1f ms\n", name, result.c_str(), 1000.0 * seconds);
    std::fflush(stdout);
    last_ = now;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point last_ = Clock::now();
};

std::string counts(const Mesh& mesh) {
  return std::to_string(mesh.vertexCount()) + " vertices, " + std::to_string(mesh.triangleCount()) +
         " triangles";
}

// Without rules the two ends of the longest axis are hot and cold.
void chooseDefaultRules(const Mesh& mesh, Options& options) {
  const Bounds bounds = boundsOf(mesh);
  std::size_t longest = 0;
  for (std::size_t axis = 1; axis < 3; ++axis) {
    if (bounds.high[axis] - bounds.low[axis] > bounds.high[longest] - bounds.low[longest]) {
      longest = axis;
    }
  }
  const std::string axis(1, "xyz"[longest]);
  if (options.hot.empty()) {
    options.hot = {axis + "-"};
  }
  if (options.cold.empty()) {
    options.cold = {axis + "+"};
  }
}

std::vector<std::int32_t> tagVertices(const Mesh& mesh, const Options& options) {
  std::vector<std::int32_t> tags(static_cast<std::size_t>(mesh.vertexCount()), kFree);
  for (const std::string& rule : options.cold) {
    for (const std::int32_t i : select(mesh, rule)) {
      tags[static_cast<std::size_t>(i)] = kCold;
    }
  }
  for (const std::string& rule : options.hot) {
    for (const std::int32_t i : select(mesh, rule)) {
      if (tags[static_cast<std::size_t>(i)] == kCold) {
        throw std::runtime_error("rule \"" + rule + "\" selects vertices that are cold already");
      }
      tags[static_cast<std::size_t>(i)] = kHot;
    }
  }
  return tags;
}

// A piece without a prescribed vertex has no unique field.
void requirePrescribedVertexEverywhere(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  const std::vector<std::int32_t> component = componentsOf(mesh);
  std::vector<bool> isPrescribed(component.size(), false);
  for (std::size_t i = 0; i < tags.size(); ++i) {
    if (tags[i] != kFree) {
      isPrescribed[static_cast<std::size_t>(component[i])] = true;
    }
  }
  for (std::size_t i = 0; i < component.size(); ++i) {
    if (!isPrescribed[static_cast<std::size_t>(component[i])]) {
      const double* p = mesh.vertex(static_cast<std::int32_t>(i));
      throw std::runtime_error("the component at (" + std::to_string(p[0]) + ", " +
                               std::to_string(p[1]) + ", " + std::to_string(p[2]) +
                               ") holds neither a hot nor a cold vertex: select one there, or "
                               "keep the largest component only (--largest)");
    }
  }
}

void run(Options options) {
  Progress progress;
  const Mesh soup = readSoup(options.part);
  progress.stage("read", std::to_string(soup.vertexCount()) + " points, " +
                             std::to_string(soup.triangleCount()) + " triangles");

  if (options.tolerance < 0.0) {
    options.tolerance = 1e-6 * boundsOf(soup).diagonal();
  }
  Mesh mesh = weld(soup, options.tolerance);
  progress.stage("weld", counts(mesh));

  const std::int32_t flat = dropFlatTriangles(mesh);
  const std::int32_t pieces = options.largest ? keepLargestComponent(mesh) : 0;
  const std::int32_t unused = dropUnusedVertices(mesh);
  if (mesh.triangles.empty()) {
    throw std::runtime_error("no triangle has an area");
  }
  progress.stage("clean", "dropped " + std::to_string(unused) + " unused vertices, " +
                              std::to_string(flat) + " flat triangles" +
                              (options.largest ? ", " + std::to_string(pieces) +
                                                     " triangles of smaller components"
                                               : ""));

  chooseDefaultRules(mesh, options);
  const std::vector<std::int32_t> tags = tagVertices(mesh, options);
  requirePrescribedVertexEverywhere(mesh, tags);
  progress.stage("tag", std::to_string(std::count(tags.begin(), tags.end(), kHot)) + " hot, " +
                            std::to_string(std::count(tags.begin(), tags.end(), kCold)) +
                            " cold, " +
                            std::to_string(std::count(tags.begin(), tags.end(), kFree)) + " free");

  const Solver solver = buildSolver(mesh, tags);
  progress.stage("build", "factorized");

  const std::vector<double> field = solve(solver, tags, options.hotValue, options.coldValue);
  const auto [low, high] = std::minmax_element(field.begin(), field.end());
  progress.stage("solve", "field from " + std::to_string(*low) + " to " + std::to_string(*high));

  write(solver, toSolverOrder(field, tags), mesh, options.out, options.name, options.ramp);
  progress.stage("write", (std::filesystem::path(options.out) / options.name).string() +
                              ".obj, .mtl, viridis.PNG");
}

int runCommand(int argc, char** argv) {
  Options options;
  CLI::App app("Computes a heat map on a mesh file and writes it as a coloured OBJ.", "heatmap");
  app.footer(
      "RULE is one of\n"
      "  x+ x- y+ y- z+ z-   the outermost 2 % at that end of the axis (z+:0.1 for 10 %)\n"
      "  ball:X,Y,Z,R        all vertices within R of the point\n"
      "  nearest:X,Y,Z       the vertex nearest to the point");
  app.add_option("PART", options.part, "mesh file: STL, OBJ, PLY, OFF")->required();
  app.add_option("--out", options.out, "directory for the results")->required();
  app.add_option("--name", options.name, "base name of the results")->capture_default_str();
  app.add_option("--tolerance", options.tolerance,
                 "weld points nearer than this (default: 1e-6 of the part's diagonal)")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--hot", options.hot, "vertices to hold hot; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--cold", options.cold, "vertices to hold cold; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--hot-value", options.hotValue)->capture_default_str();
  app.add_option("--cold-value", options.coldValue)->capture_default_str();
  app.add_flag("--largest", options.largest, "keep only the largest connected component");
  app.add_option("--ramp", options.ramp, "colour ramp image to put beside the results");
  CLI11_PARSE(app, argc, argv);
  run(options);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("heatmap: out of memory\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "heatmap: %s\n", error.what());
  }
  return 1;
}
