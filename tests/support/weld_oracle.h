// Welding as the rule says it, with nothing clever: the oracles.
#pragma once

#include "mesh.h"

#include <quor.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>
#include <set>
#include <unordered_map>

namespace test {

struct Welded {
  std::int32_t result = 99;
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  std::vector<std::int32_t> map;
  bool isBehindWritten = false;  ///< whether quorWeld wrote behind what it counted
};

/// Leaves what was written, and says whether anything else differs from what was there before.
template <typename Value>
bool isChangedBehind(std::vector<Value>& array, std::int32_t written,
                     const std::vector<Value>& before) {
  const std::ptrdiff_t kept = std::ptrdiff_t{3} * written;
  if (written < 0 || kept > std::ptrdiff_t(array.size())) {
    return true;
  }
  const bool isChanged = std::memcmp(array.data() + kept, before.data() + kept,
                                     (array.size() - std::size_t(kept)) * sizeof(Value)) != 0;
  array.resize(std::size_t(kept));
  return isChanged;
}

/// Calls quorWeld with outputs that hold something already.
inline Welded weldedInto(const Mesh& soup, double tolerance, std::vector<double> vertices,
                         std::vector<std::int32_t> triangles, bool isInPlace) {
  Welded welded{99, vertices, triangles, std::vector<std::int32_t>(std::size_t(soup.n()) + 1, -77)};
  std::int32_t n = -5;
  std::int32_t m = -5;
  welded.result =
      quorWeld(soup.n(), isInPlace ? welded.vertices.data() : soup.vertices.data(), soup.m(),
               isInPlace ? welded.triangles.data() : soup.triangles.data(), welded.vertices.data(),
               welded.triangles.data(), welded.map.data(), &n, &m, tolerance);
  welded.isBehindWritten = isChangedBehind(welded.vertices, n, vertices);
  welded.isBehindWritten |= isChangedBehind(welded.triangles, m, triangles);
  welded.isBehindWritten |= welded.map.back() != -77;
  welded.map.pop_back();
  return welded;
}

/// What quorWeld makes of a soup.
inline Welded welded(const Mesh& soup, double tolerance) {
  return weldedInto(soup, tolerance, std::vector<double>(soup.vertices.size() + 1, 12345.678),
                    std::vector<std::int32_t>(soup.triangles.size() + 1, -77), false);
}

/// The same, where the outputs are the inputs.
inline Welded weldedInPlace(const Mesh& soup, double tolerance) {
  return weldedInto(soup, tolerance, soup.vertices, soup.triangles, true);
}

/// Whether the rule makes one vertex of points i and j.
inline bool areNear(const Mesh& soup, std::size_t i, std::size_t j, double tolerance) {
  const double* p = soup.vertices.data() + 3 * i;
  const double* q = soup.vertices.data() + 3 * j;
  const double dx = p[0] - q[0];
  const double dy = p[1] - q[1];
  const double dz = p[2] - q[2];
  return (dx * dx + dy * dy) + dz * dz < tolerance * tolerance;
}

/// The outputs that follow from which points belong together.
/// @param root  the first point of each point's cluster
inline Welded weldedByRoots(const Mesh& soup, const std::vector<std::int32_t>& root) {
  Welded welded;
  welded.result = 0;
  welded.map.resize(root.size());
  for (std::size_t i = 0; i < root.size(); ++i) {
    if (root[i] == std::int32_t(i)) {
      const double* p = soup.vertices.data() + 3 * i;
      welded.map[i] = std::int32_t(welded.vertices.size() / 3);
      welded.vertices.insert(welded.vertices.end(), p, p + 3);
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

/// Compares every pair.
inline Welded bruteForceWeld(const Mesh& soup, double tolerance) {
  const auto n = std::size_t(soup.n());
  std::vector<std::int32_t> root(n);
  std::iota(root.begin(), root.end(), 0);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      if (root[i] != root[j] && areNear(soup, i, j, tolerance)) {
        const std::int32_t from = std::max(root[i], root[j]);
        const std::int32_t to = std::min(root[i], root[j]);
        std::replace(root.begin(), root.end(), from, to);
      }
    }
  }
  return weldedByRoots(soup, root);
}

/// Compares pairs in neighbouring cells of a grid only, and goes through clusters point by point:
/// for finite points by the hundred thousand, as long as few share a cell. Cells are a thousandth
/// wider than the tolerance, so that no rounding puts near points further apart than neighbours.
inline Welded gridWeld(const Mesh& soup, double tolerance) {
  using Cell = std::array<std::int64_t, 3>;
  const auto cellOf = [&](std::size_t i) {
    const double* p = soup.vertices.data() + 3 * i;
    Cell cell{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      cell[axis] = std::int64_t(std::floor(p[axis] / (1.001 * tolerance)));
    }
    return cell;
  };
  struct Hash {
    std::size_t operator()(const Cell& cell) const {
      return std::size_t(cell[0] * 73856093 ^ cell[1] * 19349663 ^ cell[2] * 83492791);
    }
  };
  std::unordered_map<Cell, std::vector<std::size_t>, Hash> cells;
  for (std::size_t i = 0; i < std::size_t(soup.n()); ++i) {
    cells[cellOf(i)].push_back(i);
  }
  std::vector<std::int32_t> root(std::size_t(soup.n()), -1);
  for (std::size_t first = 0; first < root.size(); ++first) {
    if (root[first] != -1) {
      continue;
    }
    std::vector<std::size_t> open{first};
    root[first] = std::int32_t(first);
    while (!open.empty()) {
      const std::size_t i = open.back();
      open.pop_back();
      const auto [x, y, z] = cellOf(i);
      for (int k = 0; k < 27; ++k) {
        const auto cell = cells.find(Cell{x - 1 + k % 3, y - 1 + k / 3 % 3, z - 1 + k / 9});
        if (cell == cells.end()) {
          continue;
        }
        for (const std::size_t j : cell->second) {
          if (root[j] == -1 && areNear(soup, i, j, tolerance)) {
            root[j] = std::int32_t(first);
            open.push_back(j);
          }
        }
      }
    }
  }
  return weldedByRoots(soup, root);
}

inline bool same(const Welded& a, const Welded& b) {
  return a.result == b.result && a.isBehindWritten == b.isBehindWritten &&
         sameBits(a.vertices, b.vertices) && a.triangles == b.triangles && a.map == b.map;
}

}  // namespace test
