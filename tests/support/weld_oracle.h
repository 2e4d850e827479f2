// Welding as the rule says it, with nothing clever: the oracle for small inputs.
#pragma once

#include "mesh.h"

#include <quor.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <set>

namespace test {

struct Welded {
  std::int32_t result = 99;
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  std::vector<std::int32_t> map;
};

/// What quorWeld makes of a soup.
inline Welded welded(const Mesh& soup, double tolerance) {
  Welded result{99, soup.vertices, soup.triangles,
                std::vector<std::int32_t>(soup.vertices.size() / 3)};
  std::int32_t n = 0;
  std::int32_t m = 0;
  result.result = quorWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                           result.vertices.data(), result.triangles.data(), result.map.data(), &n,
                           &m, tolerance);
  result.vertices.resize(3 * std::size_t(n));
  result.triangles.resize(3 * std::size_t(m));
  return result;
}

/// Compares every pair.
inline Welded bruteForceWeld(const Mesh& soup, double tolerance) {
  const auto n = std::size_t(soup.n());
  const double* p = soup.vertices.data();
  std::vector<std::int32_t> root(n);
  std::iota(root.begin(), root.end(), 0);
  const double r2 = tolerance * tolerance;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      const double dx = p[3 * i] - p[3 * j];
      const double dy = p[3 * i + 1] - p[3 * j + 1];
      const double dz = p[3 * i + 2] - p[3 * j + 2];
      if ((dx * dx + dy * dy) + dz * dz < r2 && root[i] != root[j]) {
        const std::int32_t from = std::max(root[i], root[j]);
        const std::int32_t to = std::min(root[i], root[j]);
        std::replace(root.begin(), root.end(), from, to);
      }
    }
  }
  Welded welded;
  welded.result = 0;
  welded.map.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    if (root[i] == std::int32_t(i)) {
      welded.map[i] = std::int32_t(welded.vertices.size() / 3);
      welded.vertices.insert(welded.vertices.end(), p + 3 * i, p + 3 * i + 3);
    } else {
      welded.map[i] = welded.map[std::size_t(root[i])];
    }
  }
  std::set<std::array<std::int32_t, 3>> seen;
  for (std::size_t t = 0; t < soup.triangles.size(); t += 3) {
    std::array<std::int32_t, 3> corners{};
    for (std::size_t k = 0; k < 3; ++k) {
      corners[k] = welded.map[std::size_t(soup.triangles[t + k])];
    }
    std::array<std::int32_t, 3> key = corners;
    std::sort(key.begin(), key.end());
    if (key[0] != key[1] && key[1] != key[2] && seen.insert(key).second) {
      welded.triangles.insert(welded.triangles.end(), corners.begin(), corners.end());
    }
  }
  return welded;
}

inline bool same(const Welded& a, const Welded& b) {
  return a.result == b.result && sameBits(a.vertices, b.vertices) && a.triangles == b.triangles &&
         a.map == b.map;
}

}  // namespace test
