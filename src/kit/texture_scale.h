// A field as texture coordinates.
#pragma once

#include <cstddef>

namespace quorkit {

/// The first texture coordinate u of each value of a field: 1 - t for the value at share t of the
/// range, with both ends of the range kept off those of the image by the margin. Never NaN.
class TextureScale {
 public:
  /// @param field   n finite values, at least one
  /// @param margin  0 .. 1, as a share of the range
  TextureScale(const double* field, std::size_t n, double margin);

  double operator()(double value) const {
    if (isConstant_) {
      return 0.5;
    }
    const double minusShare = (low_ - unit_ * value) * scale_;  // -1 .. 0, but for rounding
    return (minusShare - margin_) / whole_ + 1.0;
  }

 private:
  double unit_ = 1.0;  ///< with it the range neither overflows nor is too small for a reciprocal
  double low_ = 0.0;
  double scale_ = 0.0;
  double margin_;
  double whole_;  ///< of the image, in ranges
  bool isConstant_;
};

}  // namespace quorkit
