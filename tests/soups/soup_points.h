// What the soups made to be slow are put together from.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace bench {

using Random = std::mt19937_64;
using Vector = std::array<double, 3>;

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kBeyond = 1.0 + 1e-9;  ///< a distance just out of reach of a tolerance of 1

inline double uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

inline void append(std::vector<double>& points, const Vector& p) {
  points.insert(points.end(), p.begin(), p.end());
}

/// Turned so that no axis stays one.
inline Vector turned(const Vector& p) {
  const auto [x, y, z] = p;
  return {0.48 * x - 0.64 * y + 0.6 * z, 0.8 * x + 0.6 * y, -0.36 * x + 0.48 * y + 0.8 * z};
}

inline Vector onUnitSphere(Random& random) {
  const double z = uniform(random, -1, 1);
  const double angle = uniform(random, 0, 2 * kPi);
  const double r = std::sqrt(1 - z * z);
  return {r * std::cos(angle), r * std::sin(angle), z};
}

}  // namespace bench
