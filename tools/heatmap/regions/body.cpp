#include "regions/body.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

bool Round::crosses(Vec3 a, Vec3 b, Vec3 c, double tolerance) const {
  const Vec3 u = fromAxis(a);
  const Vec3 v = fromAxis(b);
  const Vec3 w = fromAxis(c);
  return std::max({norm(u), norm(v), norm(w)}) > radius + tolerance &&
         norm(nearestOfTriangle({0.0, 0.0, 0.0}, u, v, w)) < radius - tolerance;
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
