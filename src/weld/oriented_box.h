// Boxes that lie along their points: they show that points are out of reach of each other where
// boxes parallel to the axes cannot, since those of a surface across the axes reach out of it by
// about their own size.
#pragma once

#include "weld/point.h"
#include "weld/point_columns.h"

#include <array>

namespace quor {

/// A box in any direction around some points, for questions about others no more than some twenty
/// tolerances away.
///
/// All that is computed here is rounded, and so is the rule's distance. The center is a double like
/// the points, so coordinates relative to it, of at most 20 tolerances, have errors of less than
/// 2^-48 of that wherever the points are, in whatever direction the processor rounds; the three
/// directions are unit vectors at right angles up to 2^-48. So of two points whose distance comes
/// out as more than kBeyond tolerances here none is near by the rule.
class OrientedBox {
 public:
  /// The largest squared diagonal, in squared tolerances, of points to make a box of.
  static constexpr double kSquaredTolerances = 1;

  /// For tolerances whose square is neither near to underflow nor to overflow.
  static bool isUsable(double squaredTolerance) {
    return squaredTolerance > 1e-280 && squaredTolerance < 1e280;
  }

  /// @param box    the tight box of the range, with a squared diagonal below kSquaredTolerances
  /// @param range  not empty
  OrientedBox(const PointColumns& columns, const Box& box, Range range);

  /// The points of a range, of at most PointColumns::kMaskBits, that may be near to one in the box.
  PointColumns::Mask nearIn(const PointColumns& columns, Range range,
                            double squaredTolerance) const;

  /// Whether no point in this box is near to one in the other.
  bool isBeyond(const OrientedBox& other, double squaredTolerance) const;

 private:
  using Vector = std::array<double, 3>;

  void setDirections(const PointColumns& columns, Range range);
  double reach(const Vector& direction) const;

  Vector center_;
  std::array<Vector, 3> directions_;  ///< unit vectors, the last across the two longest
  Vector half_;                       ///< how far the points reach from the center along each
};

}  // namespace quor
