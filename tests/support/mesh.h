// Meshes for tests, benchmarks and fuzzers, always the same for the same arguments.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace test {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Mesh {
  std::vector<double> vertices;
  std::vector<std::int32_t> triangles;
  std::int32_t n() const { return static_cast<std::int32_t>(vertices.size() / 3); }
  std::int32_t m() const { return static_cast<std::int32_t>(triangles.size() / 3); }
};

/// nx x ny vertices over the unit square, lifted by `position`; vertex i + nx*j is at (i, j).
inline Mesh gridMesh(
    int nx, int ny,
    const std::function<std::array<double, 3>(double, double)>& position = [](double u, double v) {
      return std::array<double, 3>{u, v, 0.0};
    }) {
  Mesh mesh;
  for (int j = 0; j < ny; ++j) {
    for (int i = 0; i < nx; ++i) {
      const auto p = position(double(i) / (nx - 1), double(j) / (ny - 1));
      mesh.vertices.insert(mesh.vertices.end(), p.begin(), p.end());
    }
  }
  for (int j = 0; j + 1 < ny; ++j) {
    for (int i = 0; i + 1 < nx; ++i) {
      const int a = i + nx * j;
      mesh.triangles.insert(mesh.triangles.end(), {a, a + 1, a + nx + 1, a, a + nx + 1, a + nx});
    }
  }
  return mesh;
}

/// A grid that is neither flat nor regular, always the same for a seed.
inline Mesh bumpyMesh(int nx, int ny, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> jitter(-0.3, 0.3);
  return gridMesh(nx, ny, [&](double u, double v) {
    return std::array<double, 3>{u + jitter(random) / nx, v + jitter(random) / ny,
                                 0.2 * std::sin(5 * u) * std::cos(4 * v)};
  });
}

/// Random triangles over random points, each vertex in at least one of the first n: no surface, but
/// a matrix whose factor is nearly full.
/// @param n  at least 4
inline Mesh tangledMesh(int n, int m, unsigned seed) {
  std::mt19937 random(seed);
  Mesh mesh;
  for (int i = 0; i < 3 * n; ++i) {
    mesh.vertices.push_back(std::ldexp(double(random()), -32));
  }
  for (int t = 0; t < m; ++t) {
    const int a = t % n;
    const int half = n / 2;
    const int b = (a + 1 + int(random() % unsigned(half - 1))) % n;
    const int c = (a + half + int(random() % unsigned(half - 1))) % n;
    mesh.triangles.insert(mesh.triangles.end(), {a, b, c});
  }
  return mesh;
}

/// Every triangle with points of its own.
inline Mesh soupOf(const Mesh& mesh) {
  Mesh soup;
  for (const std::int32_t corner : mesh.triangles) {
    soup.triangles.push_back(soup.n());
    for (int axis = 0; axis < 3; ++axis) {
      soup.vertices.push_back(mesh.vertices[3 * std::size_t(corner) + std::size_t(axis)]);
    }
  }
  return soup;
}

inline bool isPrescribed(std::int32_t tag) {
  return tag >= 1 && tag <= 3;
}

/// Tags of a grid mesh: its first column 1, its last column 3, all others 0.
inline std::vector<std::int32_t> tagEnds(int nx, int ny) {
  std::vector<std::int32_t> tags(std::size_t(nx) * std::size_t(ny), 0);
  for (std::size_t j = 0; j < std::size_t(ny); ++j) {
    tags[j * std::size_t(nx)] = 1;
    tags[(j + 1) * std::size_t(nx) - 1] = 3;
  }
  return tags;
}

inline std::uint64_t bitsOf(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

inline bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

}  // namespace test
