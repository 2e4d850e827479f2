#include "options.h"

#include "number.h"
#include "prescribed_values.h"
#include "results/assets.h"
#include "text.h"
#include "usage_error.h"

#include <quorkit.h>
#include <CLI/CLI.hpp>

#include <cmath>

namespace heatmap {
namespace {

// What is given as text and becomes something else.
struct Texts {
  std::vector<std::string> hot;
  std::vector<std::string> cold;
  std::string within;
  std::string edge;
  double weldTolerance = -1.0;  // negative: not given
};

// Nothing, or what is wrong with a text where a finite number should be; in the second case one
// that is not negative either.
std::string whyNotFinite(const std::string& given) {
  const std::optional<double> value = parseNumber(given);
  if (!value) {
    return quoted(given) + " is not a number: write it like 20, -1.5 or 2e3, without a unit";
  }
  return std::isfinite(*value) ? "" : quoted(given) + " is not finite: give a finite number";
}

std::string whyNotFiniteOr0(const std::string& given) {
  const std::string problem = whyNotFinite(given);
  return problem.empty() && given.find('-') == 0 ? quoted(given) + " is negative: give 0 or more"
                                                 : problem;
}

// "0.4", "0.5%" or "0.5 %".
Tolerance parseTolerance(const std::string& given) {
  const bool isShare = !given.empty() && given.back() == '%';
  std::string number = given;
  if (isShare) {
    number.pop_back();
    number.erase(number.find_last_not_of(' ') + 1);
  }
  const std::optional<double> size = parseFinite(number);
  if (!size || !(*size > 0.0)) {
    throw UsageError("--within " + quoted(given) +
                     " is not a tolerance above 0: write 0.4, in the unit of the field, or 0.5%, "
                     "of its span");
  }
  return {isShare ? *size / 100.0 : *size, isShare};
}

std::optional<double> parseEdge(const std::string& given) {
  if (given == "none") {
    return std::nullopt;
  }
  const std::optional<double> length = parseFinite(given);
  if (!length || !(*length > 0.0)) {
    throw UsageError("--edge " + quoted(given) +
                     " is neither a length above 0 nor none: write it like 2.5");
  }
  return length;
}

void describe(CLI::App& app, Options& options, Texts& texts) {
  app.footer(
      std::string("RULE is one of\n") + kRuleGrammar +
      "with =VALUE behind it for a value of its own: face:10,8,2=80.\n"
      "Without rules the two ends of the longest axis are hot and cold. Where only one value\n"
      "is prescribed, the opposite end has the other: of the rule's axis, or else of the "
      "longest.\n\n"
      "The field is that of heat conduction on the surface, as along sheet metal, not of the\n"
      "solid inside it.\n\n"
      "Exit status: 0 done; 1 the part or a file is at fault; 2 the command line is; 130 "
      "Ctrl-C.");
  app.set_version_flag("--version", "heatmap of quor " QUORKIT_VERSION_STRING);
  app.add_option("PART", options.part, "mesh file: STL, OBJ, PLY, OFF")->required();
  app.add_option("--out", options.out, "directory for the results");
  app.add_option("--name", options.name, "base name of the results")->capture_default_str();
  app.add_flag("--list-faces", options.listsFaces,
               "list the faces of the part, with number, kind, area, center and direction");
  app.add_option("--hot", texts.hot, "what is hot; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--cold", texts.cold, "what is cold; may be repeated")
      ->type_name("RULE")
      ->allow_extra_args(false);
  app.add_option("--hot-value", options.hotValue, "value of what is hot")
      ->check(whyNotFinite)
      ->capture_default_str();
  app.add_option("--cold-value", options.coldValue, "value of what is cold")
      ->check(whyNotFinite)
      ->capture_default_str();
  app.add_option("--within", texts.within,
                 "how far the field may be from the exact one, in its unit or as a share of its\n"
                 "span (default: 1%)")
      ->type_name("TOLERANCE");
  app.add_option("--triangle-limit", options.triangleLimit,
                 "stop refining before there are more triangles than this; there are\n"
                 "always at least four times those of the part")
      ->capture_default_str()
      ->check(CLI::Range(1, 238609294));
  app.add_option("--edge", texts.edge,
                 "instead split edges down to a length; none: solve on the triangles as they are.\n"
                 "No error is estimated then")
      ->type_name("LENGTH|none");
  app.add_option("--range", options.range,
                 "values at the ends of the colours (default: those of the field)")
      ->type_name("LOW HIGH")
      ->expected(2)
      ->check(whyNotFinite);
  app.add_option("--title", options.title, "of the legend (default: the name of the part's file)");
  app.add_option("--field", options.field, "what the values are, for the legend")
      ->default_str("temperature");
  app.add_option("--unit", options.unit, "of the values, for the legend");
  app.add_option("--tolerance", texts.weldTolerance,
                 "weld points nearer than this (default: 1e-6 of the part's diagonal)")
      ->type_name("DISTANCE")
      ->check(whyNotFiniteOr0);
  app.add_flag("--largest", options.keepsLargest, "keep only the largest component of the part");
  app.add_flag("--html", options.hasPage,
               "also write one page that shows the result in any browser");
  app.add_option("--ramp", options.ramp, "colour ramp image to put next to the results");
}

// Empty names are what an unset variable of a shell leaves.
void requireNames(const Options& options) {
  if (options.part.empty()) {
    throw UsageError("PART is empty: give the path of a mesh file");
  }
  if (options.out.empty() && !options.listsFaces) {
    throw UsageError("--out is missing: give a directory for the results");
  }
}

}  // namespace

std::optional<Options> parseCommandLine(int argc, char** argv) {
  Options options;
  options.ramp = assetPath("viridis.PNG").string();
  options.field = "temperature";
  Texts texts;
  CLI::App app("Computes a heat map on the surface of a part and writes it as a coloured OBJ.",
               "heatmap");
  describe(app, options, texts);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {  // help or version
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  requireNames(options);
  for (const std::string& rule : texts.hot) {
    options.rules.push_back(parseRule("--hot", rule));
  }
  for (const std::string& rule : texts.cold) {
    options.rules.push_back(parseRule("--cold", rule));
  }
  if (!texts.within.empty() && !texts.edge.empty()) {
    throw UsageError("--within and --edge exclude each other: give a tolerance or a length");
  }
  if (!texts.within.empty()) {
    options.tolerance = parseTolerance(texts.within);
  }
  options.hasEdge = !texts.edge.empty();
  if (options.hasEdge) {
    options.edgeLength = parseEdge(texts.edge);
  }
  if (texts.weldTolerance >= 0.0) {
    options.weldTolerance = texts.weldTolerance;
  }
  requireSense(options);
  return options;
}

}  // namespace heatmap
