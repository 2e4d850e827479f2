#include "prescribed_values.h"

#include "options.h"
#include "text.h"
#include "usage_error.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace heatmap {
namespace {

// The lowest and the highest value differ by more than this part of the larger one: a field is
// rounded to about 1e-13 of its values.
constexpr double kLeastDifference = 1e-9;
// And one of them is not smaller than this: its reciprocal is finite.
constexpr double kLeastSize = 1e-300;

void requireDifference(const Span& span) {
  const auto& [low, high] = span;
  const std::string both =
      "the lowest and the highest prescribed value, " + text(low) + " and " + text(high) + ", are ";
  const double size = std::max(std::fabs(high), std::fabs(low));
  if (high == low) {
    throw UsageError(both +
                     "the same, which leaves nothing to colour: give --hot-value and --cold-value, "
                     "or =VALUE behind a rule, that differ");
  }
  if (!std::isfinite(high - low)) {
    throw UsageError(both + "too far apart to compute with: give them in another unit");
  }
  if (size < kLeastSize) {
    throw UsageError(both + "too small to compute with: give them in another unit");
  }
  if (high - low < kLeastDifference * size) {
    throw UsageError(both +
                     "too near to each other, so that the field between them would be lost in "
                     "rounding: give all values as differences from one in between");
  }
}

}  // namespace

double valueOf(const Rule& rule, const Options& options) {
  return rule.value ? *rule.value : rule.option == "--hot" ? options.hotValue : options.coldValue;
}

std::vector<double> missingValues(const Options& options) {
  const std::vector<Rule>& rules = options.rules;
  if (rules.empty()) {
    return {options.hotValue, options.coldValue};
  }
  const auto isHot = [](const Rule& rule) { return rule.option == "--hot"; };
  const double first = valueOf(rules[0], options);
  const bool isOneValue = std::all_of(rules.begin(), rules.end(), [&](const Rule& rule) {
    return valueOf(rule, options) == first;
  });
  const bool isOneSide = std::all_of(rules.begin(), rules.end(), isHot) ||
                         std::none_of(rules.begin(), rules.end(), isHot);
  if (!isOneValue || !isOneSide) {
    return {};
  }
  return {isHot(rules[0]) ? options.coldValue : options.hotValue};
}

Span spanOf(const Options& options) {
  std::vector<double> values = missingValues(options);
  for (const Rule& rule : options.rules) {
    values.push_back(valueOf(rule, options));
  }
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  return {*low, *high};
}

void requireSense(const Options& options) {
  const Span span = spanOf(options);
  requireDifference(span);
  const std::vector<double>& range = options.range;
  if (range.empty()) {
    return;
  }
  const std::string given = "--range " + text(range[0]) + " " + text(range[1]);
  if (!(range[0] <= span.low && span.high <= range[1])) {
    throw UsageError(given + " leaves out prescribed values: begin at or below " + text(span.low) +
                     " and end at or above " + text(span.high));
  }
  if (!std::isfinite(range[1] - range[0])) {
    throw UsageError(given + " is too wide to compute with: give another unit");
  }
}

}  // namespace heatmap
