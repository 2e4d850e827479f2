#include "within/part.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <stdexcept>

namespace within {
namespace {

constexpr double kFree = std::numeric_limits<double>::quiet_NaN();

/// Ends of the edges of a part, each edge once, ascending.
std::set<std::pair<std::int32_t, std::int32_t>> edgesOf(const Part& part) {
  std::set<std::pair<std::int32_t, std::int32_t>> edges;
  for (std::size_t k = 0; k < part.triangles.size(); ++k) {
    edges.insert(std::minmax(part.triangles[k], part.triangles[k / 3 * 3 + (k + 1) % 3]));
  }
  return edges;
}

std::size_t prescribeTriangles(const Part& part, const Region& region, Prescription& to) {
  std::size_t count = 0;
  to.triangleValues.resize(part.triangles.size() / 3, kFree);
  for (std::size_t t = 0; t < to.triangleValues.size(); ++t) {
    if (region.where(part.corner(3 * t)) && region.where(part.corner(3 * t + 1)) &&
        region.where(part.corner(3 * t + 2))) {
      to.triangleValues[t] = region.value;
      ++count;
    }
  }
  return count;
}

std::size_t prescribeEdges(const Part& part, const Region& region, Prescription& to) {
  std::size_t count = 0;
  for (const auto& [u, v] : edgesOf(part)) {
    if (region.where(part.point(static_cast<std::size_t>(u))) &&
        region.where(part.point(static_cast<std::size_t>(v)))) {
      to.edges.insert(to.edges.end(), {u, v});
      to.edgeValues.push_back(region.value);
      ++count;
    }
  }
  return count;
}

}  // namespace

Part readPart(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  constexpr std::size_t kHead = 84;
  constexpr std::size_t kTriangle = 50;
  Part soup;
  for (std::size_t at = kHead; at + kTriangle <= bytes.size(); at += kTriangle) {
    float numbers[12];
    std::memcpy(numbers, bytes.data() + at, sizeof numbers);
    for (int i = 3; i < 12; ++i) {
      soup.vertices.push_back(double{numbers[i]});
    }
  }
  for (std::int32_t i = 0; i < soup.n(); ++i) {
    soup.triangles.push_back(i);
  }
  if (soup.triangles.empty()) {
    throw std::runtime_error(path + " is not a binary STL file");
  }
  const quor::Welded welded =
      quor::kit::weld(soup.vertices, soup.triangles, 1e-6 * diagonalOf(soup));
  const quor::kit::Mesh clean = quor::kit::clean(welded.vertices, welded.triangles);
  return {{clean.vertices().begin(), clean.vertices().end()},
          {clean.triangles().begin(), clean.triangles().end()}};
}

double diagonalOf(const Part& part) {
  return quor::kit::check(part.vertices, part.triangles).diagonal;
}

QuorkitProblem Prescription::problem(const Part& part) const {
  QuorkitProblem problem{};
  problem.n = part.n();
  problem.vertices = part.vertices.data();
  problem.m = part.m();
  problem.triangles = part.triangles.data();
  problem.triangleValues = triangleValues.empty() ? nullptr : triangleValues.data();
  problem.edgeCount = static_cast<std::int32_t>(edgeValues.size());
  problem.edges = edges.data();
  problem.edgeValues = edgeValues.data();
  problem.sources = sources.empty() ? nullptr : sources.data();
  return problem;
}

Prescription prescribe(const Part& part, const std::vector<Region>& regions, const Where& source) {
  Prescription prescription;
  for (const Region& region : regions) {
    const std::size_t count = region.kind == Region::Kind::kEdges
                                  ? prescribeEdges(part, region, prescription)
                                  : prescribeTriangles(part, region, prescription);
    if (count == 0) {
      throw std::runtime_error("a region selects nothing");
    }
  }
  if (source) {
    Prescription sources;
    if (prescribeTriangles(part, {Region::Kind::kTriangles, source, -1.0}, sources) == 0) {
      throw std::runtime_error("a source selects nothing");
    }
    prescription.sources = sources.triangleValues;
    for (double& density : prescription.sources) {
      density = std::isnan(density) ? 0.0 : density;
    }
  }
  return prescription;
}

}  // namespace within
