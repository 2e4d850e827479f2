#include "selection.h"

#include "number.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

namespace heatmap {
namespace {

constexpr double kDefaultFraction = 0.02;

[[noreturn]] void refuse(const std::string& rule, const std::string& why) {
  throw std::runtime_error("the rule " + quoted(rule) + " " + why);
}

// Exactly `count` comma-separated finite numbers.
std::vector<double> numbers(const std::string& rule, const std::string& text, std::size_t count) {
  std::vector<double> values;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    const std::string item = text.substr(begin, end - begin);
    const std::optional<double> value = parseFinite(item);
    if (!value) {
      refuse(rule, "has " + quoted(item) + " where a number should be");
    }
    values.push_back(*value);
    begin = end + 1;
  }
  if (values.size() != count) {
    refuse(rule, count == 1 ? "needs one number after the colon"
                            : "needs " + std::to_string(count) +
                                  " numbers after the colon, separated by commas");
  }
  return values;
}

double distance(const double* p, const std::vector<double>& q) {
  return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
}

template <typename Predicate>
std::vector<std::int32_t> verticesWhere(const Surface& mesh, const Predicate& predicate) {
  std::vector<std::int32_t> selected;
  for (std::int32_t i = 0; i < mesh.vertexCount(); ++i) {
    if (predicate(mesh.vertex(i))) {
      selected.push_back(i);
    }
  }
  return selected;
}

std::vector<std::int32_t> nearest(const Surface& mesh, const std::vector<double>& point) {
  double best = std::numeric_limits<double>::infinity();
  std::int32_t vertex = 0;
  for (std::int32_t i = 0; i < mesh.vertexCount(); ++i) {
    const double d = distance(mesh.vertex(i), point);
    if (d < best) {
      best = d;
      vertex = i;
    }
  }
  return {vertex};
}

std::vector<std::int32_t> axisEnd(const Surface& mesh, std::size_t axis, bool upper,
                                  double fraction) {
  const Bounds bounds = boundsOf(mesh);
  const double depth = fraction * (bounds.high[axis] - bounds.low[axis]);
  return verticesWhere(mesh, [&](const double* p) {
    return upper ? p[axis] >= bounds.high[axis] - depth : p[axis] <= bounds.low[axis] + depth;
  });
}

std::vector<std::int32_t> apply(const Surface& mesh, const Rule& rule) {
  switch (rule.kind) {
    case Rule::kBall:
      return verticesWhere(
          mesh, [&](const double* p) { return distance(p, rule.numbers) <= rule.numbers[3]; });
    case Rule::kNearest:
      return nearest(mesh, rule.numbers);
    default:
      return axisEnd(mesh, rule.axis, rule.kind == Rule::kHighEnd, rule.numbers[0]);
  }
}

}  // namespace

Rule parseRule(const std::string& rule) {
  const std::size_t colon = rule.find(':');
  const std::string name = rule.substr(0, colon);
  const std::string arguments = colon == std::string::npos ? "" : rule.substr(colon + 1);
  if (name == "ball") {
    const std::vector<double> ball = numbers(rule, arguments, 4);
    if (ball[3] < 0.0) {
      refuse(rule, "needs a radius, the fourth number, that is not negative");
    }
    return {rule, Rule::kBall, 0, ball, false};
  }
  if (name == "nearest") {
    return {rule, Rule::kNearest, 0, numbers(rule, arguments, 3), false};
  }
  const std::size_t axis = std::string("xyz").find(name.empty() ? ' ' : name[0]);
  if (name.size() == 2 && axis != std::string::npos && (name[1] == '+' || name[1] == '-')) {
    const std::vector<double> fraction =
        colon == std::string::npos ? std::vector{kDefaultFraction} : numbers(rule, arguments, 1);
    if (!(fraction[0] >= 0.0 && fraction[0] <= 1.0)) {
      refuse(rule, "needs a fraction between 0 and 1");
    }
    return {rule, name[1] == '+' ? Rule::kHighEnd : Rule::kLowEnd, axis, fraction, false};
  }
  refuse(rule,
         "is none of x+ x- y+ y- z+ z- (z+:0.1 for the outermost 10 %), ball:X,Y,Z,R, "
         "nearest:X,Y,Z");
}

std::vector<std::int32_t> select(const Surface& mesh, const Rule& rule) {
  std::vector<std::int32_t> selected = apply(mesh, rule);
  if (selected.empty()) {
    refuse(rule.text, "selects no vertex: the part reaches from " + boundsText(boundsOf(mesh)) +
                          "; nearest:X,Y,Z always selects one");
  }
  return selected;
}

}  // namespace heatmap
