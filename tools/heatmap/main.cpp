// heatmap: the main job, from a mesh file to a coloured OBJ. Two selections of vertices get a hot
// and a cold value; the field in between is what heat conduction makes of them.

#include "destination.h"
#include "field.h"
#include "interrupt.h"
#include "legend.h"
#include "page.h"
#include "prepare.h"
#include "ramp_ends.h"
#include "read_soup.h"
#include "selection.h"
#include "stages.h"
#include "surface.h"
#include "text.h"
#include "values.h"
#include "weld_mesh.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace heatmap;

// What the program answers to the shell.
enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kInterrupted = 130 };

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
  std::vector<double> range;  // empty, or the ends of the ramp
  std::string title;          // empty: the part's file name
  std::string field = "temperature";
  std::string unit;
  bool largest = false;
  bool html = false;
  std::string edge;  // empty: 1/32 of the diagonal
};

struct Rules {
  std::vector<Rule> hot;
  std::vector<Rule> cold;
};

std::string counts(const Surface& mesh) {
  return std::to_string(mesh.vertexCount()) + " vertices, " + std::to_string(mesh.triangleCount()) +
         " triangles";
}

std::vector<Rule> parseRules(const std::vector<std::string>& texts) {
  std::vector<Rule> rules;
  std::transform(texts.begin(), texts.end(), std::back_inserter(rules), parseRule);
  return rules;
}

std::size_t longestAxis(const Bounds& bounds) {
  std::size_t longest = 0;
  for (std::size_t axis = 1; axis < 3; ++axis) {
    if (bounds.high[axis] - bounds.low[axis] > bounds.high[longest] - bounds.low[longest]) {
      longest = axis;
    }
  }
  return longest;
}

// Whether the vertices that the rules select lie, on average, nearer to the low end of the axis.
bool isAtLowEnd(const Surface& mesh, const std::vector<Rule>& rules, std::size_t axis) {
  const Bounds bounds = boundsOf(mesh);
  const double middle = bounds.low[axis] + (bounds.high[axis] - bounds.low[axis]) / 2;
  double sum = 0.0;
  for (const Rule& rule : rules) {
    for (const std::int32_t i : select(mesh, rule)) {
      sum += mesh.vertex(i)[axis] - middle;
    }
  }
  return sum <= 0.0;
}

// Where a side has no rule it gets an end of an axis: the end that is farther from the other side,
// of the axis that the other side's first rule names or else of the longest one. Without any rule
// hot is the low end.
void chooseMissingRules(const Surface& mesh, Rules& rules) {
  const std::size_t longest = longestAxis(boundsOf(mesh));
  const auto end = [](std::size_t axis, bool high) {
    Rule rule = parseRule(std::string(1, "xyz"[axis]) + (high ? "+" : "-"));
    rule.isChosen = true;
    return std::vector{rule};
  };
  const auto opposite = [&](const std::vector<Rule>& others) {
    const bool isEnd = others[0].kind == Rule::kLowEnd || others[0].kind == Rule::kHighEnd;
    const std::size_t axis = isEnd ? others[0].axis : longest;
    return end(axis, isAtLowEnd(mesh, others, axis));
  };
  if (rules.hot.empty()) {
    rules.hot = rules.cold.empty() ? end(longest, false) : opposite(rules.cold);
  }
  if (rules.cold.empty()) {
    rules.cold = opposite(rules.hot);
  }
}

[[noreturn]] void refuseOverlap(const Surface& mesh, const Rule& hot, const Rule& cold,
                                std::int32_t vertex) {
  const auto name = [](const Rule& rule, const std::string& side) {
    return quoted(rule.text) + " (" + side +
           (rule.isChosen ? ", taken because there is no --" + side + ")" : ")");
  };
  throw std::runtime_error("the rules " + name(hot, "hot") + " and " + name(cold, "cold") +
                           " both select the vertex at " + pointText(mesh.vertex(vertex)) +
                           ": give --hot and --cold rules that keep apart; the part reaches from " +
                           boundsText(boundsOf(mesh)));
}

std::vector<std::int32_t> tagVertices(const Refined& refined, const Rules& rules) {
  const Surface& mesh = refined.mesh;
  std::vector<std::int32_t> tags(static_cast<std::size_t>(mesh.vertexCount()), kFree);
  std::vector<const Rule*> coldRule(tags.size(), nullptr);
  for (const Rule& rule : rules.cold) {
    for (const std::int32_t i : select(refined, rule)) {
      tags[static_cast<std::size_t>(i)] = kCold;
      coldRule[static_cast<std::size_t>(i)] = &rule;
    }
  }
  for (const Rule& rule : rules.hot) {
    for (const std::int32_t i : select(refined, rule)) {
      if (tags[static_cast<std::size_t>(i)] == kCold) {
        refuseOverlap(mesh, rule, *coldRule[static_cast<std::size_t>(i)], i);
      }
      tags[static_cast<std::size_t>(i)] = kHot;
    }
  }
  return tags;
}

std::string describe(const std::vector<std::int32_t>& tags, std::int32_t tag, const char* word,
                     const std::vector<Rule>& rules) {
  std::string list;
  for (const Rule& rule : rules) {
    list += (list.empty() ? "" : " ") + rule.text;
  }
  return std::to_string(std::count(tags.begin(), tags.end(), tag)) + " " + word + " (" + list + ")";
}

// A piece without a prescribed vertex has no unique field.
void requirePrescribedVertexEverywhere(const Surface& mesh, const std::vector<std::int32_t>& tags) {
  const QuorkitFinding open =
      quor::kit::check(mesh.vertices, mesh.triangles, tags).unprescribedPieces;
  if (open.count > 0) {
    throw std::runtime_error("the loose piece at " + pointText(mesh.vertex(open.first)) +
                             " has neither a hot nor a cold vertex, so its temperature is open: "
                             "select one there (--hot nearest:X,Y,Z), keep the largest piece only "
                             "(--largest), or close gaps with a larger --tolerance");
  }
}

// Empty names are what an unset variable of a shell leaves.
void requireNames(const Options& options) {
  for (const auto& [option, given] : {std::pair{"PART", &options.part}, {"--out", &options.out}}) {
    if (given->empty()) {
      throw UsageError(std::string(option) + " is empty");
    }
  }
}

Rules parseRules(const Options& options) {
  try {
    return {parseRules(options.hot), parseRules(options.cold)};
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

Edge edgeOf(const Options& options) {
  try {
    return options.edge.empty() ? Edge{} : parseEdge(options.edge);
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

Surface readWeldedPart(const Options& options, Stages& stages) {
  stages.begin("read");
  const Surface soup = readSoup(options.part);
  stages.end(std::to_string(soup.vertexCount()) + " points, " +
             std::to_string(soup.triangleCount()) + " triangles");
  stages.begin("weld");
  Surface mesh =
      weld(soup, options.tolerance < 0.0 ? 1e-6 * boundsOf(soup).diagonal() : options.tolerance);
  stages.end(counts(mesh));
  return mesh;
}

void clean(Surface& mesh, bool largest, Stages& stages) {
  stages.begin("clean");
  const std::int32_t pieces = largest ? keepLargestComponent(mesh) : 0;
  const std::string dropped = clean(mesh);
  if (mesh.triangles.empty()) {
    throw std::runtime_error(
        "no triangle of the part has an area: its points lie on one line, or far too near to each "
        "other for their distance from the origin");
  }
  stages.end(dropped +
             (largest ? ", " + std::to_string(pieces) + " triangles of smaller pieces" : ""));
}

Legend legendOf(const Options& options, double low, double high) {
  const std::string title = std::filesystem::path(options.part).stem().u8string();
  return {options.title.empty() ? title : options.title, options.field, options.unit, low, high};
}

// Chooses the rules that are missing as well.
Refined refineForRules(const Surface& part, const Edge& edge, Rules& rules, Stages& stages) {
  stages.begin("refine");
  Refined refined = refine(part, edge);
  chooseMissingRules(refined.mesh, rules);
  std::vector<Rule> all = rules.hot;
  all.insert(all.end(), rules.cold.begin(), rules.cold.end());
  refineNearSingularPoints(refined, all);
  stages.end(describe(refined, edge));
  return refined;
}

// The mesh to solve on, with the tags of its vertices.
std::vector<std::int32_t> tag(const Refined& refined, const Rules& rules, Stages& stages) {
  stages.begin("tag");
  std::vector<std::int32_t> tags = tagVertices(refined, rules);
  requirePrescribedVertexEverywhere(refined.mesh, tags);
  stages.end(describe(tags, kHot, "hot", rules.hot) + ", " +
             describe(tags, kCold, "cold", rules.cold) + ", " +
             std::to_string(std::count(tags.begin(), tags.end(), kFree)) + " free");
  return tags;
}

void run(const Options& options) {
  requireNames(options);
  requireSense(options.hotValue, options.coldValue, options.range);
  Rules rules = parseRules(options);
  const Edge edge = edgeOf(options);
  requireUsable({options.out, options.name, options.ramp, options.html}, options.part);
  const std::string viewer = options.html ? readViewer(QUOR_VIEWER) : "";

  watchForInterrupt();
  Stages stages;
  Surface part = readWeldedPart(options, stages);
  clean(part, options.largest, stages);
  stopIfInterrupted();

  Refined refined = refineForRules(part, edge, rules, stages);
  Surface& mesh = refined.mesh;
  const std::vector<std::int32_t> tags = tag(refined, rules, stages);
  stopIfInterrupted();

  stages.begin("build");
  const Solver solver = buildSolver(mesh, tags, stages);
  stages.end("factorized");

  stages.begin("solve");
  std::vector<double> field =
      solve(solver, prescribedValues(tags, options.hotValue, options.coldValue));
  if (!options.range.empty()) {
    addRampEnds(mesh, field, options.range[0], options.range[1]);
  }
  const auto [low, high] = std::minmax_element(field.begin(), field.end());
  const Legend legend = legendOf(options, *low, *high);
  stages.end(legend.field + ", colours from " + text(legend.minimum) + " to " +
             text(legend.maximum) + (legend.unit.empty() ? "" : " " + legend.unit));
  stopIfInterrupted();

  stages.begin("write");
  write(mesh, field, options.out, options.name, options.ramp);
  const std::filesystem::path base = std::filesystem::path(options.out) / options.name;
  writeLegend(legend, base.string() + ".json");
  stages.end(base.string() + ".obj, .mtl, .json, viridis.PNG");
  if (options.html) {
    stages.begin("page");
    writePage(viewer, options.out, options.name);
    stages.end(base.string() + ".html, opens in any browser");
  }
}

void describeOptions(CLI::App& app, Options& options) {
  app.footer(
      "RULE is one of\n"
      "  x+ x- y+ y- z+ z-   the outermost 2 % at that end of the axis (z+:0.1 for 10 %)\n"
      "  ball:X,Y,Z,R        all vertices within R of the point\n"
      "  nearest:X,Y,Z       the vertex nearest to the point\n"
      "Without rules the two ends of the longest axis are hot and cold. With rules for one side\n"
      "only, the other side is the opposite end: of the rule's axis, or else of the longest.\n\n"
      "Exit status: 0 done; 1 the part or a file is at fault; 2 the command line is; 130 Ctrl-C.");
  app.set_version_flag("--version", "heatmap of quor " QUOR_VERSION_STRING);
  app.add_option("PART", options.part, "mesh file: STL, OBJ, PLY, OFF")->required();
  app.add_option("--out", options.out, "directory for the results")->required();
  app.add_option("--name", options.name, "base name of the results")->capture_default_str();
  app.add_option("--tolerance", options.tolerance,
                 "weld points nearer than this (default: 1e-6 of the part's diagonal)")
      ->check(whyNotFiniteOr0);
  app.add_option("--edge", options.edge,
                 "split longer edges, so that the field is right inside flat faces, which CAD\n"
                 "draws without vertices (default: 1/32 of the part's diagonal); none: do not")
      ->type_name("LENGTH|none");
  app.add_option("--hot", options.hot, "vertices that are hot; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--cold", options.cold, "vertices that are cold; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--hot-value", options.hotValue, "value of the hot vertices")
      ->check(whyNotFinite)
      ->capture_default_str();
  app.add_option("--cold-value", options.coldValue, "value of the cold vertices")
      ->check(whyNotFinite)
      ->capture_default_str();
  app.add_option("--range", options.range,
                 "values at the ends of the colours (default: those of the field)")
      ->type_name("LOW HIGH")
      ->expected(2)
      ->check(whyNotFinite);
  app.add_option("--title", options.title, "of the legend (default: the name of the part's file)");
  app.add_option("--field", options.field, "what the values are, for the legend")
      ->capture_default_str();
  app.add_option("--unit", options.unit, "of the values, for the legend");
  app.add_flag("--largest", options.largest, "keep only the largest piece of the part");
  app.add_flag("--html", options.html, "also write one page that shows the result in any browser");
  app.add_option("--ramp", options.ramp, "colour ramp image to put beside the results");
}

int runCommand(int argc, char** argv) {
  Options options;
  CLI::App app("Computes a heat map on a mesh file and writes it as a coloured OBJ.", "heatmap");
  describeOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // help or version
    return app.exit(asked);
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  run(options);
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runCommand(argc, argv);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "heatmap: %s\nheatmap --help lists what there is\n", error.what());
    return kUsage;
  } catch (const Interrupted& interrupted) {
    std::fprintf(stderr, "heatmap: %s\n", interrupted.what());
    return kInterrupted;
  } catch (const std::bad_alloc&) {
    std::fputs("heatmap: out of memory: the part is too large for this machine\n", stderr);
  } catch (const std::length_error&) {
    std::fputs(
        "heatmap: the part is too large: its factor would have more than 2,147,483,647 "
        "entries\n",
        stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "heatmap: %s\n", error.what());
  }
  return kFailed;
}
