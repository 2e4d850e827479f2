#include "kit/texture_scale.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace quorkit {

TextureScale::TextureScale(const double* field, std::size_t n, double margin)
    : margin_(margin), whole_(1.0 + 2.0 * margin) {
  assert(n > 0 && margin >= 0.0 && margin <= 1.0);
  const auto [low, high] = std::minmax_element(field, field + n);
  assert(std::isfinite(*low) && std::isfinite(*high));
  isConstant_ = *high == *low;
  if (!std::isfinite(*high - *low)) {
    unit_ = 0.5;
  } else if (*high - *low < 1e-300) {  // only differences of small numbers are so small
    unit_ = 0x1p500;
  }
  low_ = unit_ * *low;
  scale_ = 1.0 / (unit_ * *high - low_);
}

}  // namespace quorkit
