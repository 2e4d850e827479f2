// quorWeld beside what a user would pick instead, on one core. Prints Markdown tables.

#include "memory_meter.h"
#include "peers/hash_floor.h"
#include "peers/vtk_weld.h"
#include "side_by_side.h"
#include "soups/plain_weld.h"
#include "soups/slow_soups.h"
#include "soups/soups.h"

#include <quor.h>

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>

namespace {

using namespace bench;

struct Options {
  std::string dragon;
  std::string part;
  int rounds = 5;
};

struct Named {
  std::string name;
  Soup soup;
};

void weld(const Soup& soup, double tolerance, Welded& out) {
  quorWeld(soup.pointCount(), soup.points.data(), soup.triangleCount(), soup.triangles.data(),
           out.vertices.data(), out.triangles.data(), out.map.data(), &out.vertexCount,
           &out.triangleCount, tolerance);
}

Welded roomFor(const Soup& soup) {
  return {static_cast<std::size_t>(soup.pointCount()), soup.triangles.size()};
}

bool isSame(const Welded& a, const Welded& b) {
  const auto vertices = 3 * static_cast<std::ptrdiff_t>(a.vertexCount);
  const auto corners = 3 * static_cast<std::ptrdiff_t>(a.triangleCount);
  return a.vertexCount == b.vertexCount && a.triangleCount == b.triangleCount && a.map == b.map &&
         std::equal(a.vertices.begin(), a.vertices.begin() + vertices, b.vertices.begin()) &&
         std::equal(a.triangles.begin(), a.triangles.begin() + corners, b.triangles.begin());
}

void againstPeers(const Named& input, double tolerance, const char* toleranceName,
                  const Options& options) {
  const Soup& soup = input.soup;
  Welded ours = roomFor(soup);
  Welded plain = roomFor(soup);
  Welded floor = roomFor(soup);
  const auto data = vtkSoup(soup);
  std::int64_t vtkPoints = 0;
  const std::vector<double> t = sideBySide(
      options.rounds, {[&] { weld(soup, tolerance, ours); },
                       [&] {
                         plainWeld(soup.pointCount(), soup.points.data(), soup.triangleCount(),
                                   soup.triangles.data(), tolerance, plain);
                       },
                       [&] { vtkPoints = vtkWeld(data, tolerance); },
                       [&] {
                         hashFloor(soup.pointCount(), soup.points.data(), soup.triangleCount(),
                                   soup.triangles.data(), floor);
                       }});
  std::printf(
      "| %s | %s | %d | %.3f | %.2f (%.1fx) | %.3f (%.1fx) | %.3f (%.2fx) | %d | %s | %lld |\n",
      input.name.c_str(), toleranceName, soup.pointCount(), t[0], t[1], t[1] / t[0], t[2],
      t[2] / t[0], t[3], t[3] / t[0], ours.vertexCount, isSame(ours, plain) ? "yes" : "NO",
      static_cast<long long>(vtkPoints));
  std::fflush(stdout);
}

void printPeers(const std::vector<Named>& inputs, const Options& options) {
  std::printf(
      "\n### Against peers\n\nSeconds; in brackets how many times quorWeld's. The last columns: "
      "vertices, whether the plain method gives the same bits, and what VTK leaves.\n\n"
      "| Mesh | Tolerance | Points | quorWeld | plain method | VTK | hash floor | Vertices | Same "
      "| "
      "VTK leaves |\n|---|---|---|---|---|---|---|---|---|---|\n");
  for (const Named& input : inputs) {
    againstPeers(input, 1e-9 * diagonalOf(input.soup), "1e-9 diagonals", options);
  }
  for (const Named& input : {inputs[0], inputs[2]}) {
    againstPeers({input.name + ", shuffled", shuffled(input.soup)}, 1e-9 * diagonalOf(input.soup),
                 "1e-9 diagonals", options);
  }
  for (const Named& input : {inputs[0], inputs[2], inputs[3]}) {
    const double edge = 1e-3 * meanEdgeOf(input.soup);
    againstPeers({input.name + ", all distinct", shaken(input.soup, edge / 3)}, edge,
                 "1e-3 mean edges", options);
  }
  const double tiny = 1e-9 * diagonalOf(inputs[0].soup);
  againstPeers({inputs[0].name + ", all distinct", shaken(inputs[0].soup, tiny / 3)}, tiny,
               "1e-9 diagonals", options);
}

void printTolerances(const Named& input, double smallest, const Options& options) {
  const Soup& soup = input.soup;
  Welded out = roomFor(soup);
  const double edge = meanEdgeOf(soup);
  const std::vector<std::pair<const char*, double>> tolerances = {
      {"0.9 mean edges", 0.9 * edge},
      {"2 mean edges", 2 * edge},
      {"20 mean edges", 20 * edge},
      {"0.1 diagonals", 0.1 * diagonalOf(soup)},
      {"infinity", std::numeric_limits<double>::infinity()}};
  std::vector<std::function<void()>> jobs = {[&] { weld(soup, smallest, out); }};
  for (const auto& entry : tolerances) {
    const double tolerance = entry.second;
    jobs.emplace_back([&soup, &out, tolerance] { weld(soup, tolerance, out); });
  }
  const std::vector<double> t = sideBySide(options.rounds, jobs);
  std::printf("| %s | the smallest | %.3f | 1.00 |\n", input.name.c_str(), t[0]);
  for (std::size_t k = 0; k < tolerances.size(); ++k) {
    std::printf("| | %s | %.3f | %.2f |\n", tolerances[k].first, t[k + 1], t[k + 1] / t[0]);
  }
  std::fflush(stdout);
}

void printScaling(const Named& input, const Options& options) {
  std::printf("\n### Size\n\n| Mesh | Points | Seconds | Over the quarter |\n|---|---|---|---|\n");
  Soup soup = input.soup;
  double before = 0.0;
  for (int cut = 0; cut < 3; ++cut) {
    const double tolerance = 1e-9 * diagonalOf(soup);
    Welded out = roomFor(soup);
    const double t = sideBySide(options.rounds, {[&] { weld(soup, tolerance, out); }})[0];
    std::printf("| %s, subdivided %d times | %d | %.3f | ", input.name.c_str(), cut,
                soup.pointCount(), t);
    std::printf(before > 0.0 ? "%.2f |\n" : "|\n", t / before);
    std::fflush(stdout);
    before = t;
    soup = cut < 2 ? subdivided(soup) : Soup{};
  }
}

void printShapes(const Named& scan, const Options& options) {
  constexpr std::int32_t count = 999999;
  const Soup same = soupOfPoints(
      {scan.soup.points.begin(), scan.soup.points.begin() + std::ptrdiff_t{3} * count});
  Welded reference = roomFor(same);
  const double tolerance = 1e-9 * diagonalOf(same);
  std::printf(
      "\n### Shape\n\nA million points each, beside the first million of %s.\n\n| Shape | Points | "
      "Seconds | Over the scan | Vertices |\n|---|---|---|---|---|\n",
      scan.name.c_str());
  for (const Shape& shape : awkwardShapes(count)) {
    Welded out = roomFor(shape.soup);
    const std::vector<double> t =
        sideBySide(options.rounds, {[&] { weld(same, tolerance, reference); },
                                    [&] { weld(shape.soup, shape.tolerance, out); }});
    std::printf("| %s | %d | %.3f | %.2f | %d |\n", shape.name.c_str(), shape.soup.pointCount(),
                t[1], t[1] / t[0], out.vertexCount);
    std::fflush(stdout);
  }
}

/// @param small  points of the first of two sizes; the second has four times as many
void printSlow(const char* title, const std::vector<SlowSoup>& soups, std::int32_t small,
               const Options& options) {
  std::printf(
      "\n### %s\n\nBeside a harmless soup of the same size, and over a quarter of the points.\n\n"
      "| Soup | Points | Seconds | Over harmless | Over the quarter |\n|---|---|---|---|---|\n",
      title);
  for (const SlowSoup& slow : soups) {
    double before = 0.0;
    for (const std::int32_t count : {small, 4 * small}) {
      double tolerance = 0.0;
      const Soup soup = slow.make(count, tolerance);
      const Soup harmless = harmlessSoup(slow.harmless, count);
      Welded out = roomFor(soup);
      Welded reference = roomFor(harmless);
      const std::vector<double> t = sideBySide(
          options.rounds,
          {[&] { weld(harmless, 1e-9, reference); }, [&] { weld(soup, tolerance, out); }});
      if (count == small) {
        before = t[1];
        continue;
      }
      std::printf("| %s | %d | %.3f | %.1f | %.1f |\n", slow.name.c_str(), soup.pointCount(), t[1],
                  t[1] / t[0], t[1] / before);
      std::fflush(stdout);
    }
  }
}

/// The slowest tolerance of a scan, in steps of a quarter of an octave, over the smallest one.
void printWorstTolerance(const Named& input, const Options& options) {
  const Soup& soup = input.soup;
  Welded out = roomFor(soup);
  const double edge = meanEdgeOf(soup);
  double worst = 0.0;
  double worstAt = 0.0;
  for (int quarters = 0; quarters < 40; ++quarters) {  // up to 8.6 mean edges
    const double edges = 0.01 * std::exp2(0.25 * quarters);
    const std::vector<double> t =
        sideBySide(options.rounds, {[&] { weld(soup, 1e-9 * diagonalOf(soup), out); },
                                    [&] { weld(soup, edges * edge, out); }});
    if (t[1] / t[0] > worst) {
      worst = t[1] / t[0];
      worstAt = edges;
    }
  }
  std::printf("| %s | %.3f mean edges | %.2f |\n", input.name.c_str(), worstAt, worst);
  std::fflush(stdout);
}

void printMemory(const std::vector<Named>& inputs) {
  std::printf(
      "\n### Memory\n\nWorking memory besides the outputs, at its peak.\n\n"
      "| Mesh | Points | Bytes a point | Left behind |\n|---|---|---|---|\n");
  const auto print = [](const std::string& name, const Soup& soup, double tolerance) {
    Welded out = roomFor(soup);
    const MemoryUse use = memoryOf([&] { weld(soup, tolerance, out); });
    std::printf("| %s | %d | %.1f | %zu |\n", name.c_str(), soup.pointCount(),
                static_cast<double>(use.peak) / soup.pointCount(), use.left);
  };
  for (const Named& input : inputs) {
    const double tolerance = 1e-9 * diagonalOf(input.soup);
    print(input.name, input.soup, tolerance);
    print(input.name + ", all distinct", shaken(input.soup, tolerance / 3), tolerance);
  }
}

void run(const Options& options) {
  std::vector<Named> inputs;
  inputs.push_back({"dragon", readSoup(options.dragon)});
  inputs.push_back({"dragon, subdivided", subdivided(inputs[0].soup)});
  inputs.push_back({"CAD part", readSoup(options.part)});
  inputs.push_back({"planar grid", planarGrid(700)});

  printPeers(inputs, options);
  std::printf(
      "\n### Tolerance\n\n| Mesh | Tolerance | Seconds | Over the smallest |\n|---|---|---|---|\n");
  printTolerances(inputs[0], 1e-9 * diagonalOf(inputs[0].soup), options);
  const double edge = 1e-3 * meanEdgeOf(inputs[0].soup);
  printTolerances({"dragon, all distinct", shaken(inputs[0].soup, edge / 3)}, edge, options);
  std::printf(
      "\n### Worst tolerance\n\nOf all from 0.01 to 10 mean edges in steps of a quarter of an "
      "octave.\n\n"
      "| Mesh | Tolerance | Over the smallest |\n|---|---|---|\n");
  for (const Named& input : {inputs[0], inputs[2], inputs[3]}) {
    printWorstTolerance(input, options);
    printWorstTolerance({input.name + ", shuffled", shuffled(input.soup)}, options);
  }
  printScaling(inputs[0], options);
  printShapes(inputs[0], options);
  printSlow("Made to be slow, in tables", soupsSlowInTables(), 250000, options);
  printSlow("Made to be slow, in the tree", soupsSlowInTree(), 250000, options);
  printSlow("Slow", soupsSlowForever(), 12500, options);
  printMemory(inputs);
}

int runCommand(int argc, char** argv) {
  Options options;
  CLI::App app("Measures quorWeld beside its peers.", "weld_bench");
  app.add_option("--dragon", options.dragon, "the scanned mesh")->required();
  app.add_option("--part", options.part, "the CAD part")->required();
  app.add_option("--rounds", options.rounds, "measurements of each")->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  run(options);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "weld_bench: %s\n", error.what());
  }
  return 1;
}
