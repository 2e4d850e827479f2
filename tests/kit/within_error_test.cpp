// quorkitSolveWithin against fields that are known: the true error stays below the estimate, and
// the estimate near the true error.

#include "support/solution.h"

#include <algorithm>
#include <cmath>

using namespace test;

namespace {

constexpr double kPi = 3.14159265358979323846;

/// Triangles around a vertex at the origin, with a rim at distance 1.
struct Fan {
  Mesh mesh;
  std::vector<double> angles;  ///< of the rim's vertices, along the surface
  double turn = 2 * kPi;       ///< of the azimuth

  double total() const { return angles.back(); }
};

double angleBetween(const Point& p, const Point& q) {
  const double x = p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
  const Point c{p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]};
  return std::atan2(std::hypot(c[0], c[1], c[2]), x);
}

/// @param rim  a point of the unit sphere for 0 .. 1
template <typename Rim>
Fan fanOf(int count, bool isClosed, const Rim& rim) {
  Fan fan;
  fan.mesh.vertices.assign(3, 0.0);
  fan.angles.push_back(0);
  const int vertices = isClosed ? count : count + 1;
  for (int i = 0; i < vertices; ++i) {
    const Point p = rim(double(i) / count);
    fan.mesh.vertices.insert(fan.mesh.vertices.end(), p.begin(), p.end());
  }
  for (int i = 0; i < count; ++i) {
    const int next = 1 + (i + 1) % vertices;
    fan.mesh.triangles.insert(fan.mesh.triangles.end(), {0, 1 + i, next});
    fan.angles.push_back(fan.angles.back() +
                         angleBetween(pointOf(fan.mesh, 1 + i), pointOf(fan.mesh, next)));
  }
  return fan;
}

/// A flat sector.
Fan sector(double angle) {
  Fan fan = fanOf(128, false, [=](double s) {
    return Point{std::cos(angle * s), std::sin(angle * s), 0.0};
  });
  fan.turn = angle;
  return fan;
}

/// A closed fan around a saddle, whose angles add up to more than a full turn: `waves` times up and
/// down on the unit sphere.
Fan saddle(int waves, double height) {
  return fanOf(256, true, [=](double s) {
    const double latitude = height * std::sin(2 * kPi * waves * s);
    return Point{std::cos(latitude) * std::cos(2 * kPi * s),
                 std::cos(latitude) * std::sin(2 * kPi * s), std::sin(latitude)};
  });
}

/// A closed fan around the tip of a cone.
Fan cone(double halfAngle) {
  return fanOf(128, true, [=](double s) {
    return Point{std::sin(halfAngle) * std::cos(2 * kPi * s),
                 std::sin(halfAngle) * std::sin(2 * kPi * s), std::cos(halfAngle)};
  });
}

/// The angle of a point of a fan, along the surface. The rim's azimuths are evenly spaced.
double angleOf(const Fan& fan, const Point& p) {
  const double azimuth = std::atan2(p[1], p[0]);
  const double share = (azimuth < -1e-12 ? azimuth + 2 * kPi : std::max(azimuth, 0.0)) / fan.turn;
  const int i = std::min(int(share * fan.mesh.m()), fan.mesh.m() - 1);
  const double from = fan.angles[std::size_t(i)];
  return std::min(from + angleBetween(pointOf(fan.mesh, 1 + i), p), fan.angles[std::size_t(i) + 1]);
}

enum class Sides { kNone, kFirst, kBoth };

/// r^exponent times cosine (or sine) of exponent times angle. It is prescribed along the rim, and
/// where it is 0 also along the straight sides; a side without values has no flow through it.
struct Known {
  const char* name;
  Fan fan;
  double exponent;
  Sides zeroSides;

  double operator()(const Point& p) const {
    const double r = std::hypot(p[0], p[1], p[2]);
    return r == 0 ? 0 : std::pow(r, exponent) * wave(angleOf(fan, p));
  }
  double wave(double angle) const {
    return zeroSides == Sides::kNone ? std::cos(exponent * angle) : std::sin(exponent * angle);
  }
  Prescribed prescribed(double tolerance) const {
    Prescribed p;
    p.mesh = fan.mesh;
    p.tolerance = tolerance;
    p.vertexValues.push_back(kNaN);
    for (std::int32_t v = 1; v < fan.mesh.n(); ++v) {
      p.vertexValues.push_back(wave(fan.angles[std::size_t(v) - 1]));
    }
    if (zeroSides != Sides::kNone) {
      p.prescribeEdge(0, 1, 0);
    }
    if (zeroSides == Sides::kBoth) {
      p.vertexValues.back() = 0;
      p.prescribeEdge(fan.mesh.n() - 1, 0, 0);
    }
    return p;
  }
};

std::vector<Known> knownFields() {
  const auto wholeWave = [](const char* name, const Fan& fan) {
    return Known{name, fan, 2 * kPi / fan.total(), Sides::kNone};
  };
  return {
      {"end of a prescribed edge", sector(2 * kPi), 1.0 / 2, Sides::kBoth},
      {"prescribed edge beside an insulated one", sector(kPi), 1.0 / 2, Sides::kFirst},
      {"the same, around a corner", sector(1.5 * kPi), 1.0 / 3, Sides::kFirst},
      {"the same, around a slit", sector(1.9 * kPi), 0.5 / 1.9, Sides::kFirst},
      {"prescribed corner", sector(1.5 * kPi), 2.0 / 3, Sides::kBoth},
      {"insulated corner", sector(1.5 * kPi), 2.0 / 3, Sides::kNone},
      wholeWave("saddle", saddle(3, 0.8)),
      wholeWave("sharp saddle", saddle(6, 1.0)),
      wholeWave("tip of a cone", cone(0.2)),
      {"smooth", sector(0.5 * kPi), 4.0, Sides::kNone},
  };
}

TEST(KitWithin, TheTrueErrorIsAtMostTheEstimateAndNearIt) {
  for (const Known& known : knownFields()) {
    for (const double tolerance : {0.01, 0.003}) {
      const Solution solution = solveWithin(known.prescribed(tolerance));
      ASSERT_EQ(solution->outcome, QUORKIT_SOLVED) << known.name;
      const double error = trueError(*solution, known);
      EXPECT_TRUE(solution->isReached) << known.name;
      EXPECT_LE(solution->error, solution->tolerance) << known.name;
      EXPECT_LE(error, solution->error) << known.name << " within " << tolerance;
      EXPECT_LE(solution->error, 4.5 * error) << known.name << " within " << tolerance;
    }
  }
}

TEST(KitWithin, TheEstimateIsNearTheErrorBetweenTwoCircles) {
  // log(r) between two circles; a polygon of many corners is nearly one.
  const int corners = 720;
  Prescribed prescribed;
  prescribed.mesh = ring(corners, 1, 20);
  // Only edges of the two circles: those between them stay free.
  for (int circle = 0; circle < 2; ++circle) {
    for (int i = 0; i < corners; ++i) {
      prescribed.prescribeEdge(circle * corners + i, circle * corners + (i + 1) % corners, circle);
    }
  }
  for (const double tolerance : {0.02, 0.005}) {
    prescribed.tolerance = tolerance;
    const Solution s = solveWithin(prescribed);
    ASSERT_EQ(s->outcome, QUORKIT_SOLVED);
    EXPECT_EQ(s->isReached, 1);
    EXPECT_LE(s->error, tolerance);
    const double error = trueError(*s, [](const Point& p) {
      return std::clamp(std::log(std::hypot(p[0], p[1])) / std::log(20.0), 0.0, 1.0);
    });
    EXPECT_LE(error, s->error) << tolerance;
    EXPECT_GE(error, s->error / 4.5) << tolerance;
  }
}

}  // namespace
