#include "soups/tagged_mesh.h"

#include <quor.h>

#include <algorithm>
#include <numeric>

namespace bench {
namespace {

/// Keeps the triangles that are connected with most others.
/// @param n  number of vertices
void keepLargestPiece(std::size_t n, std::vector<std::int32_t>& triangles) {
  std::vector<std::size_t> up(n);
  std::iota(up.begin(), up.end(), std::size_t{0});
  const auto root = [&up](std::int32_t vertex) {
    auto at = static_cast<std::size_t>(vertex);
    while (up[at] != at) {
      at = up[at] = up[up[at]];
    }
    return at;
  };
  for (std::size_t t = 0; t < triangles.size(); t += 3) {
    up[root(triangles[t])] = up[root(triangles[t + 1])] = root(triangles[t + 2]);
  }
  std::vector<std::size_t> corners(n);
  for (const std::int32_t corner : triangles) {
    ++corners[root(corner)];
  }
  const auto largest =
      static_cast<std::size_t>(std::max_element(corners.begin(), corners.end()) - corners.begin());
  triangles.erase(std::remove_if(triangles.begin(), triangles.end(),
                                 [&](std::int32_t corner) { return root(corner) != largest; }),
                  triangles.end());
}

/// @return the largest piece of the welded soup, without unused vertices
TaggedMesh welded(const Soup& soup) {
  TaggedMesh mesh;
  mesh.vertices.resize(soup.points.size());
  mesh.triangles.resize(soup.triangles.size());
  std::vector<std::int32_t> map(static_cast<std::size_t>(soup.pointCount()));
  std::int32_t n = 0;
  std::int32_t m = 0;
  quorWeld(soup.pointCount(), soup.points.data(), soup.triangleCount(), soup.triangles.data(),
           mesh.vertices.data(), mesh.triangles.data(), map.data(), &n, &m,
           1e-9 * diagonalOf(soup));
  mesh.triangles.resize(3 * static_cast<std::size_t>(m));
  keepLargestPiece(static_cast<std::size_t>(n), mesh.triangles);
  std::vector<std::int32_t> place(static_cast<std::size_t>(n), -1);
  for (const std::int32_t corner : mesh.triangles) {
    place[static_cast<std::size_t>(corner)] = 0;
  }
  std::int32_t kept = 0;
  for (std::size_t i = 0; i < place.size(); ++i) {
    if (place[i] == 0) {
      std::copy_n(mesh.vertices.begin() + 3 * static_cast<std::ptrdiff_t>(i), 3,
                  mesh.vertices.begin() + 3 * std::ptrdiff_t{kept});
      place[i] = kept++;
    }
  }
  for (std::int32_t& corner : mesh.triangles) {
    corner = place[static_cast<std::size_t>(corner)];
  }
  mesh.vertices.resize(3 * static_cast<std::size_t>(kept));
  mesh.tags.resize(static_cast<std::size_t>(kept));
  return mesh;
}

}  // namespace

TaggedMesh tagEnds(const std::string& name, const Soup& soup, std::size_t axis) {
  TaggedMesh mesh = welded(soup);
  mesh.name = name;
  double lo = mesh.vertices[axis];
  double hi = lo;
  for (std::size_t i = axis; i < mesh.vertices.size(); i += 3) {
    lo = std::min(lo, mesh.vertices[i]);
    hi = std::max(hi, mesh.vertices[i]);
  }
  const double rim = 0.01 * (hi - lo);
  for (std::size_t i = 0; i < mesh.tags.size(); ++i) {
    const double at = mesh.vertices[3 * i + axis];
    mesh.tags[i] = at < lo + rim ? 1 : at > hi - rim ? 2 : 0;
  }
  return mesh;
}

Soup lowestShare(const Soup& soup, double share) {
  const auto sumX = [&soup](std::int32_t triangle) {
    const double* p = soup.points.data() + 9 * static_cast<std::ptrdiff_t>(triangle);
    return p[0] + p[3] + p[6];
  };
  std::vector<double> sums;
  for (std::int32_t t = 0; t < soup.triangleCount(); ++t) {
    sums.push_back(sumX(t));
  }
  const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(sums.size() - 1));
  std::nth_element(sums.begin(), sums.begin() + rank, sums.end());
  const double limit = sums[static_cast<std::size_t>(rank)];
  std::vector<double> points;
  for (std::int32_t t = 0; t < soup.triangleCount(); ++t) {
    if (sumX(t) <= limit) {
      points.insert(points.end(), soup.points.begin() + 9 * std::ptrdiff_t{t},
                    soup.points.begin() + 9 * (std::ptrdiff_t{t} + 1));
    }
  }
  return soupOfPoints(std::move(points));
}

}  // namespace bench
