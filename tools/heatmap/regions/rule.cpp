#include "regions/rule.h"

#include "number.h"
#include "text.h"
#include "usage_error.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace heatmap {
namespace {

constexpr double kDefaultFraction = 0.02;
// Beyond these, squares of coordinates leave the range of a double, or fall below it.
constexpr double kLargest = 1e100;
constexpr double kSmallest = 1e-100;

struct Form {
  const char* name;
  RuleKind kind;
  std::size_t count;  // of numbers
  const char* written;
};
constexpr std::array<Form, 7> kForms{{
    {"face", RuleKind::kFaceNumber, 1, "face:N with the number of a face, or face:X,Y,Z"},
    {"face", RuleKind::kFace, 3, "face:X,Y,Z"},
    {"edge", RuleKind::kEdge, 3, "edge:X,Y,Z"},
    {"ball", RuleKind::kBall, 4, "ball:X,Y,Z,R"},
    {"box", RuleKind::kBox, 6, "box:X1,Y1,Z1,X2,Y2,Z2"},
    {"cyl", RuleKind::kCylinder, 7, "cyl:X1,Y1,Z1,X2,Y2,Z2,R"},
    {"plane", RuleKind::kPlane, 6, "plane:X,Y,Z,NX,NY,NZ"},
}};

// One rule on its way from text.
class RuleText {
 public:
  RuleText(const std::string& option, const std::string& text)
      : rule_{option, text, RuleKind::kLowEnd, 0, {}, {}} {}

  Rule parse() {
    std::string body = rule_.text;
    const std::size_t equals = body.find('=');
    if (equals != std::string::npos) {
      rule_.value = number(body.substr(equals + 1));
      body.erase(equals);
    }
    const std::size_t colon = body.find(':');
    const std::string name = body.substr(0, colon);
    if (colon != std::string::npos) {
      takeNumbers(body.substr(colon + 1));
    }
    if (!takeEnd(name, colon != std::string::npos)) {
      takeForm(name);
    }
    return rule_;
  }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    throw UsageError(nameOf(rule_) + " " + why);
  }

  double number(const std::string& text) const {
    const std::optional<double> value = parseFinite(text);
    if (!value) {
      refuse("has " + quoted(text) + " where a number should be: write it like 20, -1.5 or 2e3");
    }
    return *value;
  }

  void takeNumbers(const std::string& text) {
    for (std::size_t begin = 0; begin <= text.size();) {
      const std::size_t end = std::min(text.find(',', begin), text.size());
      rule_.numbers.push_back(number(text.substr(begin, end - begin)));
      if (!(std::fabs(rule_.numbers.back()) <= kLargest)) {
        refuse("has a number beyond 1e100, too large to compute with: give it in another unit");
      }
      begin = end + 1;
    }
  }

  void requireCount(std::size_t count, const std::string& written) const {
    if (rule_.numbers.size() != count) {
      refuse("has " + std::to_string(rule_.numbers.size()) +
             (rule_.numbers.size() == 1 ? " number" : " numbers") + " and needs " +
             std::to_string(count) + ": " + written);
    }
  }

  bool takeEnd(const std::string& name, bool hasColon) {
    const std::size_t axis = std::string("xyzXYZ").find(name.empty() ? ' ' : name[0]);
    if (name.size() != 2 || axis == std::string::npos || (name[1] != '+' && name[1] != '-')) {
      return false;
    }
    rule_.kind = name[1] == '+' ? RuleKind::kHighEnd : RuleKind::kLowEnd;
    rule_.axis = axis % 3;
    if (!hasColon) {
      rule_.numbers = {kDefaultFraction};
    }
    requireCount(1, name + ":0.1 for the outermost 10 %");
    if (!(rule_.numbers[0] >= 0.0 && rule_.numbers[0] <= 1.0)) {
      refuse("has the fraction " + text(rule_.numbers[0]) + ": give one between 0 and 1");
    }
    return true;
  }

  void takeForm(const std::string& name) {
    if (name == "nearest") {
      refuse(
          "would select a single vertex, which has no capacity: the field around it would depend "
          "on "
          "the mesh alone. Take ball:X,Y,Z,R with a radius, face:X,Y,Z or edge:X,Y,Z");
    }
    const auto isNamed = [&](const Form& form) { return form.name == name; };
    const auto* form = std::find_if(kForms.begin(), kForms.end(), [&](const Form& one) {
      return isNamed(one) && one.count == rule_.numbers.size();
    });
    if (form == kForms.end()) {
      form = std::find_if(kForms.begin(), kForms.end(), isNamed);
      if (form == kForms.end()) {
        refuse("is none of x- x+ y- y+ z- z+, face:, edge:, ball:, box:, cyl: and plane:");
      }
      form += form->kind == RuleKind::kFaceNumber ? 1 : 0;
      requireCount(form->count, form->written);
    }
    rule_.kind = form->kind;
    requireSense();
  }

  // The numbers are those of a body.
  void requireSense() const {
    const std::vector<double>& n = rule_.numbers;
    const auto distance = [&](std::size_t i, std::size_t j) {
      return std::hypot(n[i] - n[j], n[i + 1] - n[j + 1], n[i + 2] - n[j + 2]);
    };
    const bool isRound = rule_.kind == RuleKind::kBall || rule_.kind == RuleKind::kCylinder;
    if (isRound && !(n.back() >= kSmallest)) {
      refuse("has the radius " + text(n.back()) + ": give one above 0");
    }
    if (rule_.kind == RuleKind::kCylinder && !(distance(0, 3) >= kSmallest)) {
      refuse("has an axis of no length: give two different ends, cyl:X1,Y1,Z1,X2,Y2,Z2,R");
    }
    if (rule_.kind == RuleKind::kPlane && !(std::hypot(n[3], n[4], n[5]) >= kSmallest)) {
      refuse("has a normal of no length: give a direction behind the point, plane:X,Y,Z,NX,NY,NZ");
    }
    if (rule_.kind == RuleKind::kFaceNumber && !(n[0] >= 1.0 && n[0] == std::floor(n[0]))) {
      refuse("has " + text(n[0]) + " for a face: give the number that --list-faces prints");
    }
  }

  Rule rule_;
};

}  // namespace

const char* const kRuleGrammar =
    "  x+ x- y+ y- z+ z-        the outermost 2 % at that end of the axis (z+:0.1 for 10 %)\n"
    "  face:X,Y,Z               the face nearest to the point\n"
    "  face:N                   the face with this number, see --list-faces\n"
    "  edge:X,Y,Z               the edge nearest to the point, from corner to corner\n"
    "  ball:X,Y,Z,R             the surface within R of the point\n"
    "  box:X1,Y1,Z1,X2,Y2,Z2    the surface between two corners\n"
    "  cyl:X1,Y1,Z1,X2,Y2,Z2,R  the surface within R of an axis, from end to end\n"
    "  plane:X,Y,Z,NX,NY,NZ     what lies in a plane: faces, or else the curve where it cuts\n";

Rule parseRule(const std::string& option, const std::string& text) {
  return RuleText(option, text).parse();
}

Rule endOfAxis(std::size_t axis, bool isHigh) {
  return {"",
          std::string(1, "xyz"[axis]) + (isHigh ? "+" : "-"),
          isHigh ? RuleKind::kHighEnd : RuleKind::kLowEnd,
          axis,
          {kDefaultFraction},
          {}};
}

std::string nameOf(const Rule& rule) {
  return rule.option.empty() ? quoted(rule.text) + ", taken by default,"
                             : rule.option + " " + quoted(rule.text);
}

}  // namespace heatmap
