#include "kit/colours.h"

#include "kit/ramp_table.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

namespace quorkit {
namespace {

constexpr std::array<std::uint8_t, 3> kGrey = {128, 128, 128};

/// @param range  high - low, or half of it where that is not finite
/// @param unit   1, or a half where the range is half
const std::array<std::uint8_t, 3>& colourOf(double value, double low, double range, double unit) {
  if (std::isnan(value)) {
    return kGrey;
  }
  const double above = unit * value - unit * low;
  if (range == 0.0) {
    return kRamp[above < 0.0 ? 0 : above > 0.0 ? kRamp.size() - 1 : kRamp.size() / 2];
  }
  const double place = above / range * static_cast<double>(kRamp.size());
  constexpr auto last = static_cast<double>(kRamp.size() - 1);
  return kRamp[static_cast<std::size_t>(std::clamp(place, 0.0, last))];
}

}  // namespace

void colours(std::size_t n, const double* field, double low, double high, std::uint8_t* rgbaOut) {
  assert(std::isfinite(low) && std::isfinite(high));
  const double unit = std::isfinite(high - low) ? 1.0 : 0.5;  // halves do not overflow
  const double range = unit * high - unit * low;
  for (std::size_t i = 0; i < n; ++i) {
    const auto& colour = colourOf(field[i], low, range, unit);
    std::copy(colour.begin(), colour.end(), rgbaOut + 4 * i);
    rgbaOut[4 * i + 3] = 255;
  }
}

}  // namespace quorkit
