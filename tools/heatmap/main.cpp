// heatmap: from a mesh file to a coloured OBJ. Regions of the surface get values; the field in
// between is what heat conduction along the surface makes of them.

#include "interrupt.h"
#include "options.h"
#include "part/prepare.h"
#include "prescribed_values.h"
#include "regions/face_list.h"
#include "regions/faces.h"
#include "regions/region.h"
#include "regions/region_checks.h"
#include "results/assets.h"
#include "results/destination.h"
#include "results/legend.h"
#include "results/page.h"
#include "results/ramp_ends.h"
#include "results/result_files.h"
#include "solve/solution.h"
#include "stages.h"
#include "text.h"
#include "usage_error.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace heatmap;

// What the program answers to the shell.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kInterrupted = 130 };

// Selects what the rules say, and the ends that are missing.
void select(const Options& options, Regions& regions, Stages& stages) {
  stages.begin("select");
  for (const Rule& rule : options.rules) {
    regions.add(rule, valueOf(rule, options), stages);
  }
  for (const double value : missingValues(options)) {
    regions.addMissingEnd(value, stages);
  }
  regions.finish();
  requireNoOverlap(regions.surface(), regions.all());
  requirePrescribedComponents(regions);
  checkDegenerate(regions.surface(), !options.hasEdge, stages);
  warnOfComponents(regions, stages);
  stages.end(counts(regions.surface()));
  for (const Region& region : regions.all()) {
    std::printf("          %-9s %s: %s\n", text(region.value).c_str(), region.rule.text.c_str(),
                region.what.c_str());
  }
}

// By how much the six digits of the values in the file may be off, in the unit of the field. That
// they keep off the ends of the ramp counts too.
double textErrorOf(const Options& options) {
  constexpr double kRounding = 5.1e-7;  // of the range of the colours
  const auto [low, high] = spanOf(options);
  const bool hasRange = !options.range.empty();
  return kRounding * (hasRange ? options.range[1] - options.range[0] : high - low);
}

Legend legendOf(const Options& options, const Solution& solution) {
  const Span span = spanOf(options);
  const std::string title = std::filesystem::path(options.part).stem().u8string();
  return {options.title.empty() ? title : options.title,
          options.field,
          options.unit,
          options.range.empty() ? span.low : options.range[0],
          options.range.empty() ? span.high : options.range[1],
          solution.error,
          solution.errorExcept,
          solution.mesh.origin};
}

// In the unit of the field, with the error that text adds to what is solved.
Allowance allowanceOf(const Options& options) {
  const auto [low, high] = spanOf(options);
  const auto [size, isShare] = options.tolerance;
  const Allowance allowance{isShare ? size * (high - low) : size, textErrorOf(options)};
  if (!(allowance.tolerance > allowance.textError)) {
    throw UsageError("--within asks for " + shortText(allowance.tolerance) +
                     ", and the six digits of the values in the file may be off by " +
                     errorText(allowance.textError) + ": give a larger tolerance");
  }
  return allowance;
}

// The exact field is nowhere below the lowest value or above the highest. What rounding and the
// mesh make of it may be, by less than its error.
void clampToSpan(const Span& span, std::vector<double>& field) {
  for (double& value : field) {
    value = std::clamp(value, span.low, span.high);
  }
}

// "temperature from 20 to 80 °C, ± 0.3 °C"
std::string describe(const Legend& legend) {
  const std::string unit = legend.unit.empty() ? "" : " " + legend.unit;
  return legend.field + " from " + text(legend.minimum) + " to " + text(legend.maximum) + unit +
         (legend.error ? ", \u00b1 " + errorText(*legend.error) + unit
                       : "; no error is estimated with --edge") +
         (legend.errorExcept.empty() ? "" : ", except " + legend.errorExcept);
}

void write(const Options& options, const Destination& destination, Solution& solution,
           const std::string& viewer, Stages& stages) {
  const Legend legend = legendOf(options, solution);
  std::printf("          %s\n", describe(legend).c_str());
  clampToSpan(spanOf(options), solution.field);
  if (!options.range.empty()) {
    addRampEnds(solution.mesh, solution.field, options.range[0], options.range[1]);
  }
  stages.begin("write");
  writeResults(solution.mesh, solution.field, legend, destination);
  const std::string base = (destination.directory / destination.name).string();
  stages.end(base + ".obj, .mtl, .json, viridis.PNG");
  if (options.hasPage) {
    stages.begin("page");
    writePage(viewer, destination.directory, destination.name);
    stages.end(base + ".html, opens in any browser");
  }
}

void run(const Options& options) {
  const Destination destination{options.out, options.name, options.ramp, options.hasPage};
  if (!options.listsFaces) {
    requireUsable(destination, options.part);
  }
  const Allowance allowance =
      options.hasEdge || options.listsFaces ? Allowance{} : allowanceOf(options);
  const std::string viewer = options.hasPage ? readViewer(assetPath("viewer.html")) : "";
  watchForInterrupt();
  Stages stages;
  const Surface part =
      preparePart(options.part, options.weldTolerance, options.keepsLargest, stages);
  stopIfInterrupted();
  stages.begin("faces");
  const Faces faces(part);
  stages.end(counted(faces.count(), "face"));
  if (options.listsFaces) {
    std::fputs(listOf(part, faces).c_str(), stdout);
    return;
  }
  Regions regions(part, faces);
  select(options, regions, stages);
  stopIfInterrupted();
  Solution solution = options.hasEdge
                          ? solveOnEdges(regions, options.edgeLength, stages)
                          : solveWithin(regions, allowance, options.triangleLimit, stages);
  stopIfInterrupted();
  write(options, destination, solution, viewer, stages);
}

int runCommand(int argc, char** argv) {
  if (const std::optional<Options> options = parseCommandLine(argc, argv)) {
    run(*options);
  }
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "heatmap: %s\nheatmap --help lists all options\n", error.what());
    return kUsage;
  } catch (const Interrupted& interrupted) {
    std::fprintf(stderr, "heatmap: %s\n", interrupted.what());
    return kInterrupted;
  } catch (const std::bad_alloc&) {
    std::fputs("heatmap: out of memory: give a larger --within or --edge\n", stderr);
  } catch (const std::length_error&) {
    std::fputs(
        "heatmap: the part is too large for 32-bit indices: give a larger --within or --edge\n",
        stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "heatmap: %s\n", error.what());
  }
  return kFailed;
}
