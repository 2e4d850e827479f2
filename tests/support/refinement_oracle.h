// What makes a refined mesh right, whatever it was made by.
#pragma once

#include "kit_mesh.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace test {

/// @param shortest  a length that no split edge is below, where they are not all the same
/// @return empty if the mesh is the refinement of `input` that quorkit.h describes, else why not
inline std::string faultOfRefinement(const Mesh& input, const QuorkitMesh& refined, double longest,
                                     double shortest = 0) {
  const Mesh mesh{
      {refined.vertices, refined.vertices + 3 * std::ptrdiff_t(refined.vertexCount)},
      {refined.triangles, refined.triangles + 3 * std::ptrdiff_t(refined.triangleCount)}};
  if (mesh.n() < input.n() ||
      (input.n() > 0 && std::memcmp(mesh.vertices.data(), input.vertices.data(),
                                    input.vertices.size() * sizeof(double)) != 0)) {
    return "an input vertex moved";
  }
  const double limit = longest * longest;
  std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> midpoints;
  for (std::int32_t v = 0; v < mesh.n(); ++v) {
    const std::int32_t* const ends = refined.vertexOrigins + 2 * std::size_t(v);
    const std::int32_t a = ends[0];
    const std::int32_t b = ends[1];
    if (v < input.n()) {
      if (a != v || b != v) {
        return "an input vertex has another origin";
      }
      continue;
    }
    if (!(0 <= a && a < b && b < v)) {
      return "a vertex comes before the ends of its edge";
    }
    if (!midpoints.insert({{a, b}, v}).second) {
      return "an edge has two midpoints";
    }
    if (!(squaredLength(mesh, a, b) > (shortest > 0 ? shortest * shortest : limit))) {
      return "an edge was split that is not too long";
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
      if (pointOf(mesh, v)[axis] != 0.5 * pointOf(mesh, a)[axis] + 0.5 * pointOf(mesh, b)[axis]) {
        return "a vertex is not the midpoint of its edge";
      }
    }
  }
  std::vector<double> areas(std::size_t(input.m()), 0.0);
  std::int32_t last = 0;
  for (std::size_t t = 0; t < std::size_t(mesh.m()); ++t) {
    const std::int32_t origin = refined.triangleOrigins[t];
    if (origin < last || origin >= input.m()) {
      return "the triangles are not in the order of the input";
    }
    last = origin;
    for (std::size_t e = 0; e < 3; ++e) {
      const std::int32_t u = mesh.triangles[3 * t + e];
      const std::int32_t v = mesh.triangles[3 * t + (e + 1) % 3];
      if (u < 0 || u >= mesh.n() || u == v) {
        return "a corner is wrong";
      }
      if (midpoints.count(std::minmax(u, v)) != 0) {
        return "a vertex hangs on an edge";
      }
      const auto p = pointOf(mesh, u);
      const auto q = pointOf(mesh, v);
      std::array<double, 3> middle{};
      for (std::size_t axis = 0; axis < 3; ++axis) {
        middle[axis] = 0.5 * p[axis] + 0.5 * q[axis];
      }
      double largest = 0;
      for (std::size_t axis = 0; axis < 3; ++axis) {
        largest = std::max({largest, std::abs(p[axis]), std::abs(q[axis])});
      }
      const double few = 16 * std::numeric_limits<double>::epsilon() * largest;
      const bool isSplittable = middle != p && middle != q && squaredLength(mesh, u, v) > few * few;
      if (squaredLength(mesh, u, v) > limit && isSplittable) {
        return "an edge is too long";
      }
    }
    const auto part = doubleAreaVector(mesh, t);
    const auto whole = doubleAreaVector(input, std::size_t(origin));
    const double along = part[0] * whole[0] + part[1] * whole[1] + part[2] * whole[2];
    const double size = whole[0] * whole[0] + whole[1] * whole[1] + whole[2] * whole[2];
    double side = 0;  // squared, the longest one
    for (std::size_t e = 0; e < 3; ++e) {
      side = std::max(side, squaredLength(input, input.triangles[3 * std::size_t(origin) + e],
                                          input.triangles[3 * std::size_t(origin) + (e + 1) % 3]));
    }
    if (size > 1e-10 * side * side) {  // else rounding decides about the areas of parts
      if (!(along > 0)) {
        return "a part is turned over";
      }
      areas[std::size_t(origin)] += along / size;
    } else {
      areas[std::size_t(origin)] = 1;
    }
  }
  for (const double area : areas) {
    if (!(std::abs(area - 1) < 1e-6)) {
      return "the parts do not cover their triangle: " + std::to_string(area);
    }
  }
  return {};
}

}  // namespace test
