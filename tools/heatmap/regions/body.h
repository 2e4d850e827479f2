// Convex bodies that select what of a surface lies inside them.
#pragma once

#include "part/geometry.h"
#include "part/surface.h"

#include <array>
#include <optional>
#include <vector>

namespace heatmap {

// The points p with normal * p <= offset.
struct HalfSpace {
  Vec3 normal;  // of length 1
  double offset;

  // The distance from its border, negative inside.
  double excess(Vec3 p) const;
};

// A ball, or a cylinder without ends.
struct Round {
  Vec3 center;  // of a cylinder any point of its axis
  Vec3 axis;    // of length 1; of a ball 0
  double radius;

  double excess(Vec3 p) const;
  // Where the segment from a, inside, to b, outside, leaves: 0 at a, 1 at b.
  double leaves(Vec3 a, Vec3 b) const;
  // Whether a straight cut between the edges of a triangle would leave the border by more than the
  // tolerance. Vertices nearer to it than that lie on it.
  bool bendsIn(const std::array<Vec3, 3>& corners, double tolerance) const;

 private:
  Vec3 fromAxis(Vec3 p) const;
};

// What is common to half spaces and perhaps a round one.
struct Body {
  std::vector<HalfSpace> flats;
  std::optional<Round> round;
  Bounds bounds;  // that it reaches; infinite for a plane
};

// All four take finite numbers in the surface's coordinates.
Body ballBody(Vec3 center, double radius);
// The corners in any order.
Body boxBody(Vec3 one, Vec3 other);
// From one end of the axis, which is not the other, to the other.
Body cylinderBody(Vec3 from, Vec3 to, double radius);
// A body without thickness. The normal is not 0.
Body planeBody(Vec3 point, Vec3 normal);

}  // namespace heatmap
