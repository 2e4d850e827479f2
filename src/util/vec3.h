// A point or a vector in space.
#pragma once

#include "util/index.h"

#include <cmath>
#include <cstdint>

namespace quor {

struct Vec3 {
  double x, y, z;
};

inline Vec3 operator+(Vec3 u, Vec3 v) {
  return {u.x + v.x, u.y + v.y, u.z + v.z};
}

inline Vec3 operator-(Vec3 u, Vec3 v) {
  return {u.x - v.x, u.y - v.y, u.z - v.z};
}

inline Vec3 operator*(double s, Vec3 v) {
  return {s * v.x, s * v.y, s * v.z};
}

inline bool operator==(Vec3 u, Vec3 v) {
  return u.x == v.x && u.y == v.y && u.z == v.z;
}

inline bool operator!=(Vec3 u, Vec3 v) {
  return !(u == v);
}

inline double dot(Vec3 u, Vec3 v) {
  return u.x * v.x + u.y * v.y + u.z * v.z;
}

inline Vec3 cross(Vec3 u, Vec3 v) {
  return {u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
}

/// The same bits either way round.
inline double squaredDistance(Vec3 p, Vec3 q) {
  const Vec3 d = p - q;
  return dot(d, d);
}

inline bool isFinite(Vec3 p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Point `index` of an array of interleaved coordinates.
inline Vec3 pointAt(const double* coordinates, std::int32_t index) {
  const double* const p = coordinates + 3 * toSize(index);
  return {p[0], p[1], p[2]};
}

}  // namespace quor
