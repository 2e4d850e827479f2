// The values that a command line prescribes.
#pragma once

#include "regions/rule.h"

#include <optional>
#include <vector>

namespace heatmap {

struct Options;

// The value that is prescribed where a rule selects: its own, or that of its side.
double valueOf(const Rule& rule, const Options& options);

// The values of the ends of the part that this program chooses because the rules prescribe less
// than two different values: none, one, or both, the hot one first.
std::vector<double> missingValues(const Options& options);

// The lowest and the highest value that is prescribed.
struct Span {
  double low;
  double high;
};
Span spanOf(const Options& options);

// Throws UsageError, which names the values, unless there is something to colour: different values,
// of sizes that arithmetic can hold apart, within --range.
void requireSense(const Options& options);

}  // namespace heatmap
