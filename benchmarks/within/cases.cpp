#include "within/cases.h"

#include <cmath>

namespace within {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kClose = 1e-3;

Where all(Where a, Where b) {
  return [a, b](const Point& p) { return a(p) && b(p); };
}

Where plane(std::size_t axis, double at) {
  return [=](const Point& p) { return std::abs(p[axis] - at) < kClose; };
}

Where above(std::size_t axis, double least) {
  return [=](const Point& p) { return p[axis] > least - kClose; };
}

Where below(std::size_t axis, double most) {
  return [=](const Point& p) { return p[axis] < most + kClose; };
}

Where box(Point low, Point high) {
  return [=](const Point& p) {
    for (std::size_t k = 0; k < 3; ++k) {
      if (!(p[k] > low[k] - kClose && p[k] < high[k] + kClose)) {
        return false;
      }
    }
    return true;
  };
}

Where ball(Point center, double radius) {
  return [=](const Point& p) {
    return std::hypot(p[0] - center[0], p[1] - center[1], p[2] - center[2]) <= radius;
  };
}

/// The points within a radius of a line along an axis; `at` holds the other two coordinates.
Where rod(std::size_t axis, double a, double b, double radius) {
  const std::size_t u = axis == 0 ? 1 : 0;
  const std::size_t v = axis == 2 ? 1 : 2;
  return [=](const Point& p) { return std::hypot(p[u] - a, p[v] - b) < radius; };
}

Region faces(Where where, double value) {
  return {Region::Kind::kTriangles, std::move(where), value};
}

Region edges(Where where, double value) {
  return {Region::Kind::kEdges, std::move(where), value};
}

/// A point of a sphere of radius 30, from its polar angle.
Point onSphere(double polar) {
  return {0.0, 30.0 * std::sin(polar), 30.0 * std::cos(polar)};
}

/// A cylinder without ends, whose two rings of vertices are joined by long triangles.
/// @param lower, upper  vertices of the rings
/// @param twist         of the upper ring, in vertices of it
Part cylinder(int lower, int upper, double twist, double radius, double height) {
  Part part;
  const auto ring = [&](int count, double offset, double z) {
    for (int i = 0; i < count; ++i) {
      const double angle = 2.0 * kPi * (i + offset) / count;
      part.vertices.insert(part.vertices.end(),
                           {radius * std::cos(angle), radius * std::sin(angle), z});
    }
  };
  ring(lower, 0.0, 0.0);
  ring(upper, twist, height);
  for (int i = 0, j = 0; i < lower || j < upper;) {
    const int a = i % lower;
    const int b = lower + j % upper;
    if (j == upper || (i < lower && i * upper <= j * lower)) {
      part.triangles.insert(part.triangles.end(), {a, (i + 1) % lower, b});
      ++i;
    } else {
      part.triangles.insert(part.triangles.end(), {a, lower + (j + 1) % upper, b});
      ++j;
    }
  }
  return part;
}

std::vector<Case> smallHoles() {
  return {
      {"wall of a hole, plate",
       "plate",
       {faces(rod(2, 30, 20, 3.1), 1), faces(plane(0, 100), 0)},
       nullptr},
      {"wall of a hole, flange",
       "flange",
       {faces(rod(2, 45, 0, 4.1), 1), faces(rod(2, 0, 0, 15.1), 0)},
       nullptr},
      {"walls of two holes, flange",
       "flange",
       {faces(rod(2, 45, 0, 4.1), 1), faces(rod(2, -22.5, 38.97, 4.1), 0)},
       nullptr},
      {"wall of a cross hole, shaft",
       "shaft",
       {faces(rod(2, 200, 0, 3.1), 1), faces(plane(0, 400), 0)},
       nullptr},
      {"wall of radius 1 in 300 mm",
       "big_plate",
       {faces(rod(2, 80, 90, 1.1), 1), faces(plane(0, 300), 0)},
       nullptr},
      {"one of 50 holes, perforated",
       "perforated",
       {faces(rod(2, 54, 30, 2.6), 1), faces(plane(1, 0), 0)},
       nullptr},
  };
}

std::vector<Case> singleEdges() {
  return {
      {"edge of a thin box",
       "thin_box",
       {edges(all(plane(0, 0), plane(2, 1)), 1), faces(plane(0, 100), 0)},
       nullptr},
      {"edge of a fin, heat sink",
       "fins",
       {edges(all(plane(1, 0), plane(2, 45)), 1), faces(plane(2, 0), 0)},
       nullptr},
      {"edge of 5 mm, plate",
       "plate",
       {edges(all(plane(0, 0), plane(1, 0)), 1), faces(plane(0, 100), 0)},
       nullptr},
      {"rim of a boss, bracket",
       "bracket",
       {edges(all(plane(2, 22), rod(2, 50, 25, 7.1)), 1), faces(plane(2, 45), 0)},
       nullptr},
      {"two ends of a slit, sheet",
       "sheet",
       {edges(all(plane(0, 40), box({40, 14, 0}, {40, 16, 0})), 1),
        edges(all(plane(0, 0), above(1, 0)), 0)},
       nullptr},
      {"line on a cylinder",
       "cylinder",
       {edges(box({19.99, -0.01, 0}, {20.01, 0.01, 150}), 1), faces(plane(2, 0), 0)},
       nullptr},
  };
}

std::vector<Case> nearWalls() {
  return {
      {"both sides of a 0.2 mm chamfer",
       "chamfered",
       {faces(plane(2, 20), 1), faces(plane(0, 100), 0)},
       nullptr},
      {"both sides of a 1 mm wall",
       "wall",
       {faces(plane(0, 50), 1), faces(plane(0, 51), 0)},
       nullptr},
      {"grooves 1 mm apart in 300 mm",
       "grooves",
       {faces(box({150, 0, 7}, {151, 100, 10}), 1), faces(box({152, 0, 7}, {153, 100, 10}), 0)},
       nullptr},
      {"both sides of a thin box",
       "thin_box",
       {faces(plane(2, 0), 1), faces(plane(2, 1), 0)},
       nullptr},
      {"both sides of one fin", "fins", {faces(plane(1, 0), 1), faces(plane(1, 1), 0)}, nullptr},
      {"inside and outside of a tube",
       "tube",
       {faces(all(rod(2, 0, 0, 18.1), above(2, 0)), 1),
        faces(all([](const Point& p) { return std::hypot(p[0], p[1]) > 19.9; }, above(2, 0)), 0)},
       nullptr},
  };
}

std::vector<Case> balls() {
  return {
      {"balls of radius 5 on a torus",
       "torus",
       {faces(ball({40, 0, 12}, 5), 1), faces(ball({-40, 0, 12}, 5), 0)},
       nullptr},
      {"balls 0.56 apart on a sphere",
       "sphere",
       {faces(ball(onSphere(0.3), 3), 1), faces(ball(onSphere(0.48), 1.9), 0)},
       nullptr},
      {"small balls at the ends of a spring",
       "spring",
       {faces(ball({20, 0, 0}, 2.5), 1), faces(ball({20, 0, 36}, 2.5), 0)},
       nullptr},
      {"a ball on a fillet",
       "filleted",
       {faces(ball({1.8, 25, 28.2}, 3), 1), faces(plane(0, 80), 0)},
       nullptr},
  };
}

std::vector<Case> sources() {
  return {
      {"source, cold hole, plate", "plate", {faces(rod(2, 30, 20, 3.1), 0)}, plane(2, 5)},
      {"source, cold edge, heat sink",
       "fins",
       {edges(all(plane(0, 0), plane(2, 0)), 0)},
       above(2, 5)},
      {"source, cold ball, sphere", "sphere", {faces(ball({0, 0, 30}, 2), 0)}, below(2, -15)},
      {"source, cold groove, engraved",
       "engraved",
       {faces(box({15, 40, 4.5}, {27, 41.5, 4.5}), 0)},
       plane(2, 0)},
      {"source on a hole, engraved", "engraved", {faces(plane(0, 120), 0)}, rod(2, 21, 50, 1.3)},
      {"source, cold ends, perforated",
       "perforated",
       {faces(plane(0, 0), 0), faces(plane(0, 120), 0)},
       plane(2, 2)},
  };
}

std::vector<Case> ends() {
  return {
      {"ends, bracket", "bracket", {faces(plane(0, 80), 1), faces(plane(0, 0), 0)}, nullptr},
      {"ends, heat sink", "fins", {faces(plane(2, 45), 1), faces(plane(2, 0), 0)}, nullptr},
      {"ends, shaft", "shaft", {faces(plane(0, 400), 1), faces(plane(0, 0), 0)}, nullptr},
      {"ends, turned", "turned", {faces(plane(2, 120), 1), faces(plane(2, 0), 0)}, nullptr},
      {"ends, cone", "cone", {faces(plane(2, 80), 1), faces(plane(2, 0), 0)}, nullptr},
      {"two bodies",
       "two_bodies",
       {faces(plane(0, 0), 1), faces(plane(0, 40), 0), faces(all(plane(2, 50), above(0, 50)), 1),
        edges(all(plane(2, 0), above(0, 50)), 0)},
       nullptr},
      {"ends of two tubes that cross",
       "crossed_tubes",
       {faces(plane(2, 60), 1), faces(plane(0, -80), 0)},
       nullptr},
  };
}

std::vector<Case> needles() {
  const Where half = [](const Point& p) { return p[0] > -1.0; };
  const Where otherHalf = [](const Point& p) { return p[1] > -1.0; };
  const Where right = [](const Point& p) { return p[0] > 12.0; };
  const Where left = [](const Point& p) { return p[0] < -12.0; };
  return {
      {"strips along a cylinder",
       "cylinder",
       {faces(box({19.5, -3, 0}, {20.1, 3, 150}), 1),
        faces(box({-20.1, -3, 0}, {-19.5, 3, 150}), 0)},
       nullptr},
      {"halves of two rims, twisted",
       "twisted",
       {edges(all(plane(2, 0), half), 1), edges(all(plane(2, 100), otherHalf), 0)},
       nullptr},
      {"two arcs of one rim, twisted",
       "twisted",
       {edges(all(plane(2, 0), right), 1), edges(all(plane(2, 0), left), 0)},
       nullptr},
      {"halves of two rims, very twisted",
       "very_twisted",
       {edges(all(plane(2, 0), half), 1), edges(all(plane(2, 200), otherHalf), 0)},
       nullptr},
      {"two arcs of one rim, very twisted",
       "very_twisted",
       {edges(all(plane(2, 0), right), 1), edges(all(plane(2, 0), left), 0)},
       nullptr},
      {"halves of two rims, uneven",
       "uneven",
       {edges(all(plane(2, 0), half), 1), edges(all(plane(2, 150), otherHalf), 0)},
       nullptr},
      {"two arcs of one rim, uneven",
       "uneven",
       {edges(all(plane(2, 0), right), 1), edges(all(plane(2, 0), left), 0)},
       nullptr},
      {"rim of a cone to its tip",
       "cone",
       {edges(all(plane(2, 0), [](const Point& p) { return p[0] > 14.0; }), 1),
        faces(plane(2, 80), 0)},
       nullptr},
  };
}

}  // namespace

std::vector<Case> cases() {
  std::vector<Case> all;
  for (const auto& group :
       {smallHoles(), singleEdges(), nearWalls(), balls(), sources(), ends(), needles()}) {
    all.insert(all.end(), group.begin(), group.end());
  }
  return all;
}

Part generated(const std::string& name) {
  if (name == "twisted") {
    return cylinder(48, 48, 7.0, 20.0, 100.0);
  }
  if (name == "very_twisted") {
    return cylinder(120, 120, 30.0, 20.0, 200.0);
  }
  if (name == "uneven") {
    return cylinder(40, 47, 0.2, 15.0, 150.0);
  }
  return {};
}

}  // namespace within
