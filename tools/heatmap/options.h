// The command line.
#pragma once

#include "regions/rule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace heatmap {

// How exact the field is to be: a difference in its unit, or a share of its span.
struct Tolerance {
  double size;
  bool isShare;
};

struct Options {
  std::string part;
  std::string out;
  std::string name = "heatmap";
  std::string ramp;
  std::optional<double> weldTolerance;
  std::vector<Rule> rules;  // those of --hot first
  double hotValue = 1.0;
  double coldValue = 0.0;
  std::vector<double> range;  // empty, or the ends of the ramp
  std::string title;
  std::string field;
  std::string unit;
  bool keepsLargest = false;
  bool hasPage = false;
  bool listsFaces = false;
  Tolerance tolerance{0.01, true};
  std::int32_t triangleLimit = 4000000;
  bool hasEdge = false;              // --edge takes the place of a tolerance
  std::optional<double> edgeLength;  // nothing: on the triangles as they are
};

// Nothing if only help or the version was asked for, which is printed. Throws UsageError, which
// says what is wrong with which option and what to give instead.
std::optional<Options> parseCommandLine(int argc, char** argv);

}  // namespace heatmap
