// What holds of a cleaned mesh, in whatever order its triangles were removed.
#pragma once

#include "kit_mesh.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// How often each edge is a side of a triangle; triangles with equal corners are none.
inline std::map<std::pair<std::int32_t, std::int32_t>, int> edgeUses(const Mesh& mesh) {
  std::map<std::pair<std::int32_t, std::int32_t>, int> uses;
  for (std::size_t t = 0; t < std::size_t(mesh.m()); ++t) {
    const std::int32_t* const c = mesh.triangles.data() + 3 * t;
    for (std::size_t e = 0; e < 3 && c[0] != c[1] && c[1] != c[2] && c[2] != c[0]; ++e) {
      ++uses[std::minmax(c[e], c[(e + 1) % 3])];
    }
  }
  return uses;
}

inline double longestSide(const Mesh& mesh, std::size_t t) {
  const std::int32_t* const c = mesh.triangles.data() + 3 * t;
  return std::sqrt(std::max({squaredLength(mesh, c[0], c[1]), squaredLength(mesh, c[1], c[2]),
                             squaredLength(mesh, c[2], c[0])}));
}

/// Twice the area, along the normal; 0 if the triangle is degenerate.
inline std::array<double, 3> soundArea(const Mesh& mesh, std::size_t t) {
  const auto v = doubleAreaVector(mesh, t);
  const double side = longestSide(mesh, t);
  return std::hypot(v[0], v[1], v[2]) > 1e-6 * side * side ? v : std::array<double, 3>{};
}

inline double distanceToSegment(const Mesh& mesh, const std::array<double, 3>& p, std::int32_t a,
                                std::int32_t b) {
  const auto u = pointOf(mesh, a);
  const auto v = pointOf(mesh, b);
  double along = 0;
  double square = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    along += (p[axis] - u[axis]) * (v[axis] - u[axis]);
    square += (v[axis] - u[axis]) * (v[axis] - u[axis]);
  }
  const double share = square > 0 ? std::clamp(along / square, 0.0, 1.0) : 0.0;
  double sum = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double d = p[axis] - u[axis] - share * (v[axis] - u[axis]);
    sum += d * d;
  }
  return std::sqrt(sum);
}

/// @param input  squares of its areas are in the range of double
/// @return empty if nothing opened, turned or was lost, else what did
inline std::string faultOfCleaning(const Mesh& input, const KitMesh& cleaned) {
  const Mesh result = plain(cleaned);
  double longest = 0;
  double areaBefore = 0;
  double areaAfter = 0;
  int degenerate = 0;
  const auto lengthOf = [](const std::array<double, 3>& v) { return std::hypot(v[0], v[1], v[2]); };
  for (std::size_t t = 0; t < std::size_t(input.m()); ++t) {
    longest = std::max(longest, longestSide(input, t));
    areaBefore += lengthOf(soundArea(input, t));
  }
  for (std::size_t t = 0; t < std::size_t(result.m()); ++t) {
    const auto part = soundArea(result, t);
    const auto whole = soundArea(input, std::size_t(cleaned->triangleOrigins[t]));
    const double along = part[0] * whole[0] + part[1] * whole[1] + part[2] * whole[2];
    if (along < 0.499999 * lengthOf(part) * lengthOf(whole)) {
      return "a triangle turned";
    }
    areaAfter += lengthOf(part);
    degenerate += lengthOf(part) == 0 ? 1 : 0;
  }
  if (degenerate != cleaned->degenerateCount) {
    return "the number of degenerate triangles is wrong";
  }
  const double small = 2e-6 * longest * (1 + input.m());  // what each step may change
  if (std::abs(areaAfter - areaBefore) > small * longest) {
    return "an area was lost or made";
  }
  const auto before = edgeUses(input);
  for (const auto& [edge, count] : edgeUses(result)) {
    if (count != 1) {
      continue;
    }
    const auto p = pointOf(result, edge.first);
    const auto q = pointOf(result, edge.second);
    const bool isOld = std::any_of(before.begin(), before.end(), [&](const auto& old) {
      const auto [a, b] = old.first;
      return old.second == 1 && distanceToSegment(input, p, a, b) <= small &&
             distanceToSegment(input, q, a, b) <= small;
    });
    if (!isOld) {
      return "an edge was opened";
    }
  }
  return {};
}

}  // namespace test
