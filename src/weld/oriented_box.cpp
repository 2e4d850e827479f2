#include "weld/oriented_box.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

namespace quor {
namespace {

using Vector = std::array<double, 3>;

constexpr double kBeyond = 1 + 0x1p-40;

double dot(const Vector& a, const Vector& b) {
  return (a[0] * b[0] + a[1] * b[1]) + a[2] * b[2];
}

Vector minus(const Vector& a, const Vector& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// The vector without its part along a unit vector.
Vector across(const Vector& vector, const Vector& unit) {
  const double along = dot(vector, unit);
  return {vector[0] - along * unit[0], vector[1] - along * unit[1], vector[2] - along * unit[2]};
}

/// @param vector  of a length that neither underflows nor overflows
Vector unit(const Vector& vector) {
  const double length = std::sqrt(dot(vector, vector));
  return {vector[0] / length, vector[1] / length, vector[2] / length};
}

/// A unit vector across another one, along the axis that is most across it.
Vector anyAcross(const Vector& direction) {
  std::size_t axis = 0;
  for (std::size_t k = 1; k < 3; ++k) {
    if (std::abs(direction[k]) < std::abs(direction[axis])) {
      axis = k;
    }
  }
  Vector along{};
  along[axis] = 1;
  return unit(across(along, direction));
}

/// The point of a range for which a measure is the greatest.
template <typename Measure>
Vector farthest(const PointColumns& columns, Range range, const Measure& measure) {
  Vector best = columns.point(range.begin);
  double greatest = measure(best);
  for (std::int32_t i = range.begin + 1; i < range.end; ++i) {
    const Vector p = columns.point(i);
    if (const double value = measure(p); value > greatest) {
      greatest = value;
      best = p;
    }
  }
  return best;
}

}  // namespace

OrientedBox::OrientedBox(const PointColumns& columns, const Box& box, Range range)
    : center_(box.center()) {
  setDirections(columns, range);
  Vector low = {0, 0, 0};
  Vector high = low;  // of a box that reaches the center at least
  for (std::int32_t i = range.begin; i < range.end; ++i) {
    const Vector p = minus(columns.point(i), center_);
    for (std::size_t k = 0; k < 3; ++k) {
      const double along = dot(p, directions_[k]);
      low[k] = std::min(low[k], along);
      high[k] = std::max(high[k], along);
    }
  }
  // The center moves to the middle, as near to it as doubles come: far from the origin that is not
  // near, so what counts is how far it really moved.
  Vector moved{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double before = center_[axis];
    for (std::size_t k = 0; k < 3; ++k) {
      center_[axis] += 0.5 * (low[k] + high[k]) * directions_[k][axis];
    }
    moved[axis] = center_[axis] - before;
  }
  for (std::size_t k = 0; k < 3; ++k) {
    const double along = dot(moved, directions_[k]);
    half_[k] = std::max(high[k] - along, along - low[k]);
  }
}

/// The first direction goes between two points that are far apart, the second to the point farthest
/// from the line through them (after Larsson and Kallberg, Fast computation of tight-fitting
/// oriented bounding boxes, 2011). Exact for points on a line or in a plane.
void OrientedBox::setDirections(const PointColumns& columns, Range range) {
  const auto squaredDistanceTo = [](const Vector& q) {
    return [q](const Vector& p) {
      const Vector d = minus(p, q);
      return dot(d, d);
    };
  };
  const Vector first = farthest(columns, range, squaredDistanceTo(center_));
  const Vector second = farthest(columns, range, squaredDistanceTo(first));
  const Vector longest = minus(second, first);
  const double squaredLength = dot(longest, longest);
  directions_ = {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}};
  if (!(squaredLength > 1e-290)) {
    return;
  }
  directions_[0] = unit(longest);
  const auto fromLine = [this, first](const Vector& p) {
    return across(minus(p, first), directions_[0]);
  };
  const Vector third = farthest(columns, range, [&fromLine](const Vector& p) {
    const Vector d = fromLine(p);
    return dot(d, d);
  });
  const Vector side = fromLine(third);
  // Taken across twice, since the first time leaves its rounding errors.
  directions_[1] = dot(side, side) > 0x1p-60 * squaredLength
                       ? unit(across(unit(side), directions_[0]))
                       : anyAcross(directions_[0]);
  directions_[2] = unit(cross(directions_[0], directions_[1]));
}

PointColumns::Mask OrientedBox::nearIn(const PointColumns& columns, Range range,
                                       double squaredTolerance) const {
  assert(isUsable(squaredTolerance));
  return columns.nearTo(center_, directions_, half_, range, squaredTolerance * kBeyond * kBeyond);
}

bool OrientedBox::isBeyond(const OrientedBox& other, double squaredTolerance) const {
  assert(isUsable(squaredTolerance));
  const Vector between = minus(other.center_, center_);
  const double tolerance = std::sqrt(squaredTolerance) * kBeyond;
  // Whether a slab across a direction, wider than the tolerance, lies between the boxes.
  const auto isSlabAcross = [&](const Vector& direction, double length) {
    return std::abs(dot(between, direction)) - reach(direction) - other.reach(direction) >
           tolerance * length;
  };
  return isSlabAcross(between, std::sqrt(dot(between, between))) ||
         isSlabAcross(directions_[2], 1) || isSlabAcross(other.directions_[2], 1);
}

/// How far the box reaches from its center.
double OrientedBox::reach(const Vector& direction) const {
  double sum = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    sum += half_[k] * std::abs(dot(directions_[k], direction));
  }
  return sum;
}

}  // namespace quor
