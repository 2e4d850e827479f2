// Rules that select what is prescribed, as users write them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace heatmap {

enum class RuleKind {
  kLowEnd,
  kHighEnd,
  kFace,
  kFaceNumber,
  kEdge,
  kBall,
  kBox,
  kCylinder,
  kPlane
};

struct Rule {
  std::string option;  // "--hot" or "--cold"; empty if this program chose the rule
  std::string text;    // as the user wrote it
  RuleKind kind;
  std::size_t axis;             // of an end: 0, 1 or 2
  std::vector<double> numbers;  // behind the colon; of an end the fraction
  std::optional<double> value;  // behind "=", of its own
};

// The grammar, for --help: one line per form.
extern const char* const kRuleGrammar;

// Throws UsageError, which names the option, the rule and what to write instead.
Rule parseRule(const std::string& option, const std::string& text);

// The end of an axis, chosen by this program.
Rule endOfAxis(std::size_t axis, bool isHigh);

// How messages call a rule: --hot "x+".
std::string nameOf(const Rule& rule);

}  // namespace heatmap
