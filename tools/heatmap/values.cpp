#include "values.h"

#include "number.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace heatmap {
namespace {

// Hot and cold differ by more than this part of the larger one: a field is rounded to about 1e-13
// of its values.
constexpr double kLeastDifference = 1e-9;
// And one of them is not smaller than this: its reciprocal is finite.
constexpr double kLeastSize = 1e-300;

void requireDifference(double hot, double cold) {
  const std::string both = "--hot-value " + text(hot) + " and --cold-value " + text(cold) + " are ";
  const double size = std::max(std::fabs(hot), std::fabs(cold));
  if (hot == cold) {
    throw UsageError(both + "the same: the field would be that everywhere, with nothing to colour");
  }
  if (!std::isfinite(hot - cold)) {
    throw UsageError(both + "too far apart");
  }
  if (size < kLeastSize) {
    throw UsageError(both + "too small to compute with: give them in another unit");
  }
  if (std::fabs(hot - cold) < kLeastDifference * size) {
    throw UsageError(both +
                     "too near to each other: the field between them would be lost in rounding. "
                     "Give both as differences from a value in between");
  }
}

}  // namespace

std::string whyNotFinite(const std::string& given) {
  const std::optional<double> value = parseNumber(given);
  if (!value) {
    return quoted(given) + " is not a number: it is written like 20, -1.5 or 2e3, without a unit";
  }
  return std::isfinite(*value) ? "" : quoted(given) + " is not a finite number";
}

std::string whyNotFiniteOr0(const std::string& given) {
  const std::string problem = whyNotFinite(given);
  return problem.empty() && given.find('-') == 0 ? quoted(given) + " is negative" : problem;
}

void requireSense(double hot, double cold, const std::vector<double>& range) {
  requireDifference(hot, cold);
  if (range.empty()) {
    return;
  }
  const auto [low, high] = std::minmax(hot, cold);
  const std::string given = "--range " + text(range[0]) + " " + text(range[1]);
  if (!(range[0] <= low && high <= range[1])) {
    throw UsageError(given + " must begin at or below and end at or above the prescribed values, " +
                     text(low) + " and " + text(high));
  }
  if (!std::isfinite(range[1] - range[0])) {
    throw UsageError(given + " is too wide");
  }
}

}  // namespace heatmap
