// How wrong fields are where CAD users prescribe them, and what a tolerance costs:
// within_bench DIRECTORY... [--cases TEXT] [--tolerances PERCENT,...] [--references DIRECTORY]
//              [--change SHARE] [--maps NAME]
//
// Looks for parts in the directories. Compares every field with a reference on the same surface,
// which is refined until the gradient times the edge length changes by at most SHARE of the span
// from triangle to triangle. A smaller SHARE shows how far the reference itself can be trusted.
// With --maps writes the errors by length and within the first tolerance, in % of the span, to
// NAME_before.obj and NAME_after.obj.

#include "within/cases.h"
#include "within/field.h"
#include "within/plain_solve.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using within::Case;
using within::Difference;
using within::Exempt;
using within::Field;
using within::Part;
using within::Prescription;

struct Options {
  std::vector<std::string> directories;
  std::string cases;
  std::string references;
  std::string maps;  ///< path and beginning of the names of the two files; empty for none
  std::vector<double> tolerances = {1.0, 0.5, 0.1};
  double change = 2e-3;
};

struct FreeSolution {
  void operator()(const QuorkitSolution* solution) const { quorkitFreeSolution(solution); }
};
using Solution = std::unique_ptr<const QuorkitSolution, FreeSolution>;

struct Within {
  Field field;
  double error;
  int rounds;
  bool isReached;
  Exempt exempt;
};

Within solveWithin(const Part& part, const Prescription& prescription, double share,
                   std::int32_t limit) {
  QuorkitProblem problem = prescription.problem(part);
  problem.tolerance = share;
  problem.isShareOfSpan = 1;
  problem.triangleLimit = limit;
  const QuorkitSolution* made = nullptr;
  const std::clock_t begin = std::clock();
  const QuorkitStatus status = quorkitSolveWithin(&problem, nullptr, nullptr, &made);
  const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
  const Solution solution(made);
  if (status != QUORKIT_DONE || solution->outcome != QUORKIT_SOLVED) {
    throw std::runtime_error("no solution: " + std::string(quorkitStatusText(status)));
  }
  Within within;
  within.field = {{{solution->vertices, solution->vertices + 3 * solution->vertexCount},
                   {solution->triangles, solution->triangles + 3 * solution->triangleCount}},
                  {solution->field, solution->field + solution->vertexCount},
                  seconds,
                  seconds};
  within.error = solution->error;
  within.rounds = solution->rounds;
  within.isReached = solution->isReached != 0;
  within.exempt.radius = solution->jumpRadius;
  for (std::int32_t k = 0; k < solution->jumpCount; ++k) {
    within.exempt.centers.push_back(part.point(static_cast<std::size_t>(solution->jumps[k])));
  }
  return within;
}

Part load(const Options& options, const std::string& name) {
  Part part = within::generated(name);
  for (const std::string& directory : options.directories) {
    const std::string path = directory + "/" + name + ".stl";
    if (part.triangles.empty() && std::ifstream(path)) {
      part = within::readPart(path);
    }
  }
  if (part.triangles.empty()) {
    throw std::runtime_error("no part " + name + " in the directories");
  }
  return part;
}

template <typename T>
void write(std::ofstream& file, const std::vector<T>& array) {
  const std::size_t size = array.size();
  file.write(reinterpret_cast<const char*>(&size), sizeof size);
  file.write(reinterpret_cast<const char*>(array.data()),
             static_cast<std::streamsize>(size * sizeof(T)));
}

template <typename T>
void read(std::ifstream& file, std::vector<T>& array) {
  std::size_t size = 0;
  file.read(reinterpret_cast<char*>(&size), sizeof size);
  array.resize(size);
  file.read(reinterpret_cast<char*>(array.data()), static_cast<std::streamsize>(size * sizeof(T)));
}

/// What `make` makes, from a file if it is there.
template <typename Make>
Field kept(const Options& options, const std::string& name, const Make& make) {
  const std::string path = options.references + "/" + name + ".field";
  std::ifstream input(path, std::ios::binary);
  Field field;
  if (!options.references.empty() && input) {
    read(input, field.mesh.vertices);
    read(input, field.mesh.triangles);
    read(input, field.values);
    return field;
  }
  field = make();
  if (!options.references.empty()) {
    std::ofstream output(path, std::ios::binary);
    write(output, field.mesh.vertices);
    write(output, field.mesh.triangles);
    write(output, field.values);
  }
  return field;
}

/// How many triangles uniform splitting would take to a largest error, from how the error falls
/// when the edges are halved once: its rate is that of the worst place of the field.
/// @param most  in the unit of the field
double uniformTriangles(const Part& part, const Prescription& prescription, const Field& reference,
                        const Exempt& exempt, double most) {
  const double length = within::diagonalOf(part) / 32.0;
  const Field longer = within::solveUniformly(part, prescription, length);
  const Field shorter = within::solveUniformly(part, prescription, length / 2.0);
  const double before = within::compare(longer, reference, exempt).largest;
  const double after = within::compare(shorter, reference, exempt).largest;
  const double count = static_cast<double>(shorter.mesh.m());
  if (after <= most) {
    return count;
  }
  const double rate = std::log2(before / after);
  return rate > 0.0 ? count * std::pow(after / most, 2.0 / rate) : INFINITY;
}

void printHead(const Options& options) {
  std::printf(
      "Errors in %% of the span, times in ms of processor time. Times: as a multiple of that\n"
      "by length. Uniform: how many triangles uniform splitting would take to 0.5 %%.\n\n"
      "| Prescribed | Triangles "
      "| By length: vertices | Largest error | Mean | Time | Uniform |");
  for (const double tolerance : options.tolerances) {
    std::printf(" %g %%: triangles | Largest error | Printed | Ratio | Time | Times |", tolerance);
  }
  std::printf("\n|---|---|---|---|---|---|---|");
  for (std::size_t k = 0; k < options.tolerances.size(); ++k) {
    std::printf("---|---|---|---|---|---|");
  }
  std::printf("\n");
}

/// In % of the span. A later map of the same name replaces an earlier one.
void writeMap(const Options& options, const char* name, const Field& field, const Field& reference,
              const Exempt& exempt) {
  if (options.maps.empty()) {
    return;
  }
  Field map = errorMap(field, reference, exempt);
  for (double& error : map.values) {
    error *= 100.0 / spanOf(reference);
  }
  quor::kit::write(map.mesh.vertices, map.mesh.triangles, map.values, options.maps + name);
}

void bench(const Options& options, const Case& chosen) {
  const Part part = load(options, chosen.part);
  const Prescription prescription = within::prescribe(part, chosen.regions, chosen.source);
  constexpr std::int32_t kLimit = 6000000;
  const Exempt exempt = solveWithin(part, prescription, 0.05, kLimit).exempt;
  const Field reference = kept(options, chosen.name, [&] {
    return within::referenceByJumps(part, prescription, options.change, 1500000, exempt);
  });
  const double span = spanOf(reference);
  const auto percent = [span](double error) { return 100.0 * error / span; };
  std::printf("| %s | %d |", chosen.name.c_str(), part.m());
  const Field today = within::solveByLength(part, prescription);
  const Difference byLength = within::compare(today, reference, exempt);
  std::printf(" %zu | %.2f | %.2f | %.0f | %.1e |", today.values.size(), percent(byLength.largest),
              percent(byLength.average), 1e3 * today.seconds,
              uniformTriangles(part, prescription, reference, exempt, 0.005 * span));
  writeMap(options, "_before", today, reference, exempt);
  for (const double tolerance : options.tolerances) {
    const Within found = solveWithin(part, prescription, tolerance / 100.0, kLimit);
    const Difference error = within::compare(found.field, reference, exempt);
    std::printf(" %zu | %.3f | %.3f | %.2f%s | %.0f | %.1f |",
                found.field.mesh.triangles.size() / 3, percent(error.largest), percent(found.error),
                found.error / error.largest, found.isReached ? "" : " not reached",
                1e3 * found.field.seconds, found.field.seconds / today.seconds);
    if (tolerance == options.tolerances.front()) {
      writeMap(options, "_after", found.field, reference, exempt);
    }
    std::fprintf(stderr, "%s: %.1f %% in %d rounds, worst at %g %g %g\n", chosen.name.c_str(),
                 tolerance, found.rounds, error.where[0], error.where[1], error.where[2]);
  }
  std::printf("\n");
  std::fflush(stdout);
}

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument.rfind("--", 0) != 0) {
      options.directories.push_back(argument);
      continue;
    }
    const std::string value = i + 1 < argc ? argv[++i] : "";
    if (argument == "--cases") {
      options.cases = value;
    } else if (argument == "--references") {
      options.references = value;
    } else if (argument == "--maps") {
      options.maps = value;
    } else if (argument == "--change") {
      options.change = std::stod(value);
    } else if (argument == "--tolerances") {
      options.tolerances.clear();
      std::istringstream list(value);
      for (std::string number; std::getline(list, number, ',');) {
        options.tolerances.push_back(std::stod(number));
      }
    } else {
      throw std::runtime_error(argument + " is no option");
    }
  }
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = parse(argc, argv);
    printHead(options);
    for (const Case& chosen : within::cases()) {
      if (chosen.name.find(options.cases) != std::string::npos) {
        try {
          bench(options, chosen);
        } catch (const std::exception& error) {
          std::printf("| %s: %s |\n", chosen.name.c_str(), error.what());
        }
      }
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "within_bench: %s\n", error.what());
    return 1;
  }
}
