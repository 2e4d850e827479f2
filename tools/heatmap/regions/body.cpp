#include "regions/body.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace heatmap {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Bounds around(Vec3 one, Vec3 other, double margin) {
  const Position p = coordinates(one);
  const Position q = coordinates(other);
  Bounds bounds{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    bounds.low[axis] = std::min(p[axis], q[axis]) - margin;
    bounds.high[axis] = std::max(p[axis], q[axis]) + margin;
  }
  return bounds;
}

// What is between the planes through two points across the normal.
void addSlab(double low, double high, Vec3 normal, Body& body) {
  body.flats.push_back({normal, high});
  body.flats.push_back({-1.0 * normal, -low});
}

}  // namespace

double HalfSpace::excess(Vec3 p) const {
  return dot(normal, p) - offset;
}

Vec3 Round::fromAxis(Vec3 p) const {
  const Vec3 from = p - center;
  return from - dot(from, axis) * axis;
}

double Round::excess(Vec3 p) const {
  return norm(fromAxis(p)) - radius;
}

double Round::leaves(Vec3 a, Vec3 b) const {
  // |from + share * along| = radius, of which the larger root is where the segment leaves.
  const Vec3 from = fromAxis(a);
  const Vec3 along = fromAxis(b) - from;
  const double inside = std::max(radius * radius - dot(from, from), 0.0);
  const double half = dot(from, along);
  const double squared = dot(along, along);
  const double root = std::sqrt(half * half + squared * inside);
  // Both forms are the larger root; each loses no digits where it is taken.
  return std::clamp(half > 0.0 ? inside / (half + root) : (root - half) / squared, 0.0, 1.0);
}

bool Round::bendsIn(const std::array<Vec3, 3>& corners, double tolerance) const {
  const Vec3 origin{0.0, 0.0, 0.0};
  std::array<double, 3> excesses{};
  std::array<Vec3, 3> flat{};  // without what they have of the axis
  for (std::size_t k = 0; k < 3; ++k) {
    excesses[k] = excess(corners[k]);
    flat[k] = fromAxis(corners[k]);
  }
  const auto dips = [&](Vec3 nearest) { return norm(nearest) < radius - tolerance; };
  std::vector<Vec3> cuts;
  for (std::size_t k = 0; k < 3; ++k) {
    const std::size_t next = (k + 1) % 3;
    if (std::fabs(excesses[k]) <= tolerance) {
      cuts.push_back(corners[k]);
    }
    if (excesses[k] < -tolerance && excesses[next] > tolerance) {
      cuts.push_back(corners[k] + leaves(corners[k], corners[next]) * (corners[next] - corners[k]));
    } else if (excesses[k] > tolerance && excesses[next] < -tolerance) {
      cuts.push_back(corners[next] +
                     leaves(corners[next], corners[k]) * (corners[k] - corners[next]));
    } else if (excesses[k] >= -tolerance && excesses[next] >= -tolerance &&
               excesses[k] + excesses[next] > 2.0 * tolerance &&
               dips(nearestOfSegment(origin, flat[k], flat[next]))) {
      return true;  // in and out again
    }
  }
  if (cuts.empty()) {  // all inside, or outside with a hole in the middle at most
    return excesses[0] > 0.0 && dips(nearestOfTriangle(origin, flat[0], flat[1], flat[2]));
  }
  for (std::size_t i = 1; i < cuts.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (excess(0.5 * (cuts[i] + cuts[j])) < -tolerance) {
        return true;
      }
    }
  }
  return false;
}

Body ballBody(Vec3 center, double radius) {
  return {{}, Round{center, {0.0, 0.0, 0.0}, radius}, around(center, center, radius)};
}

Body boxBody(Vec3 one, Vec3 other) {
  Body body{{}, std::nullopt, around(one, other, 0.0)};
  const auto& [low, high] = body.bounds;
  addSlab(low[0], high[0], {1.0, 0.0, 0.0}, body);
  addSlab(low[1], high[1], {0.0, 1.0, 0.0}, body);
  addSlab(low[2], high[2], {0.0, 0.0, 1.0}, body);
  return body;
}

Body cylinderBody(Vec3 from, Vec3 to, double radius) {
  const Vec3 axis = 1.0 / norm(to - from) * (to - from);
  Body body{{}, Round{from, axis, radius}, around(from, to, radius)};
  addSlab(dot(axis, from), dot(axis, to), axis, body);
  return body;
}

Body planeBody(Vec3 point, Vec3 normal) {
  const Vec3 unit = 1.0 / norm(normal) * normal;
  Body body{
      {}, std::nullopt, {{-kInfinity, -kInfinity, -kInfinity}, {kInfinity, kInfinity, kInfinity}}};
  addSlab(dot(unit, point), dot(unit, point), unit, body);
  return body;
}

}  // namespace heatmap
