#include "within/plain_solve.h"

#include "solve/singular_points.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <map>
#include <set>

namespace within {
namespace {

namespace kit = quor::kit;
using Edge = std::pair<std::int32_t, std::int32_t>;

constexpr double kFree = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::size_t at(std::int32_t index) {
  return static_cast<std::size_t>(index);
}

double seconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// A mesh on its way, with what is prescribed on it.
class Mesh {
 public:
  Mesh(const Part& part, const Prescription& prescription)
      : part_(part), prescription_(prescription) {
    for (std::size_t t = 0; t < part.triangles.size() / 3; ++t) {
      origins_.push_back(static_cast<std::int32_t>(t));
    }
    vertexValues_.assign(part.vertices.size() / 3, kFree);
    for (std::size_t e = 0; e < prescription.edgeValues.size(); ++e) {
      const std::int32_t u = prescription.edges[2 * e];
      const std::int32_t v = prescription.edges[2 * e + 1];
      edges_[std::minmax(u, v)] = prescription.edgeValues[e];
      vertexValues_[at(u)] = vertexValues_[at(v)] = prescription.edgeValues[e];
    }
  }

  const Part& part() const { return part_; }

  void refine(double longest, const std::vector<double>& sizes) {
    const kit::Mesh refined = sizes.empty()
                                  ? kit::refine(part_.vertices, part_.triangles, longest)
                                  : kit::refine(part_.vertices, part_.triangles, longest, sizes);
    const std::size_t before = vertexValues_.size();
    vertexValues_.resize(refined.vertices().size() / 3, kFree);
    for (std::size_t v = before; v < vertexValues_.size(); ++v) {
      const std::int32_t p = refined.vertexOrigins()[2 * v];
      const std::int32_t q = refined.vertexOrigins()[2 * v + 1];
      const auto edge = edges_.find(std::minmax(p, q));
      if (edge != edges_.end()) {
        const double value = vertexValues_[v] = edge->second;
        edges_.erase(edge);
        edges_[{p, static_cast<std::int32_t>(v)}] = value;
        edges_[{q, static_cast<std::int32_t>(v)}] = value;
      }
    }
    take(refined);
  }

  /// Delaunay flips inside flat faces of one value and source.
  void flip() {
    std::map<std::pair<double, double>, std::int32_t> labels;
    std::vector<std::int32_t> faces;
    for (const std::int32_t origin : origins_) {
      const double value =
          prescription_.triangleValues.empty() ? kFree : prescription_.triangleValues[at(origin)];
      const std::pair<double, double> key{std::isnan(value) ? 1e300 : value, sourceAt(origin)};
      faces.push_back(labels.insert({key, static_cast<std::int32_t>(labels.size())}).first->second);
    }
    // An edge that has values must stay: its triangles are told apart.
    for (std::size_t k = 0; !edges_.empty() && k < part_.triangles.size(); ++k) {
      const std::int32_t next = part_.triangles[k / 3 * 3 + (k + 1) % 3];
      if (edges_.count(std::minmax(part_.triangles[k], next)) != 0) {
        faces[k / 3] = static_cast<std::int32_t>(labels.size() + k);
      }
    }
    const QuorkitMesh* flipped = nullptr;
    if (quorkitFlip(part_.n(), part_.vertices.data(), part_.m(), part_.triangles.data(),
                    faces.data(), &flipped) == QUORKIT_DONE) {
      take(kit::Mesh(flipped));
    }
  }

  Field solve() const {
    Field field{part_, {}, 0.0, 0.0};
    std::vector<double> values = vertexValues_;
    for (std::size_t k = 0; k < part_.triangles.size() && !prescription_.triangleValues.empty();
         ++k) {
      const double value = prescription_.triangleValues[at(origins_[k / 3])];
      double& atCorner = values[at(part_.triangles[k])];
      atCorner = std::isnan(value) || !std::isnan(atCorner) ? atCorner : value;
    }
    std::vector<std::int32_t> tags;
    for (double& value : values) {
      tags.push_back(std::isnan(value) ? 0 : 1);
    }
    const double begin = seconds();
    const kit::Solver solver(part_.vertices, part_.triangles, tags);
    field.values =
        prescription_.sources.empty() ? solver.solve(values) : solver.solve(values, sourceValues());
    field.solveSeconds = seconds() - begin;
    return field;
  }

  double sourceAt(std::int32_t origin) const {
    return prescription_.sources.empty() ? 0.0 : prescription_.sources[at(origin)];
  }
  double sourceOf(std::size_t triangle) const { return sourceAt(origins_[triangle]); }
  bool isPrescribed(std::size_t triangle) const {
    return !prescription_.triangleValues.empty() &&
           !std::isnan(prescription_.triangleValues[at(origins_[triangle])]);
  }
  bool isPrescribed(Edge edge) const { return edges_.count(edge) != 0; }

  /// Sizes near the corners of the surface and of what is prescribed, as heatmap has them.
  std::vector<double> sizesNearCorners(const Part& input, double length) const {
    const heatmap::Surface raw{input.vertices, input.triangles, {0.0, 0.0, 0.0}};
    std::vector<bool> isFace(input.triangles.size() / 3);
    std::vector<bool> isVertex(input.vertices.size() / 3);
    for (std::size_t k = 0; k < input.triangles.size(); ++k) {
      if (!prescription_.triangleValues.empty() &&
          !std::isnan(prescription_.triangleValues[k / 3])) {
        isFace[k / 3] = isVertex[at(input.triangles[k])] = true;
      }
    }
    for (const std::int32_t v : prescription_.edges) {
      isVertex[at(v)] = true;
    }
    std::vector<heatmap::Position> points = heatmap::cornersOfSurface(raw);
    const auto others = heatmap::cornersOfPrescribed(raw, isFace, isVertex);
    points.insert(points.end(), others.begin(), others.end());
    return heatmap::sizesNear(points, {part_.vertices, part_.triangles, {0.0, 0.0, 0.0}}, length);
  }

 private:
  void take(const kit::Mesh& mesh) {
    std::vector<std::int32_t> origins;
    for (const std::int32_t origin : mesh.triangleOrigins()) {
      origins.push_back(origins_[at(origin)]);
    }
    origins_ = std::move(origins);
    part_ = {{mesh.vertices().begin(), mesh.vertices().end()},
             {mesh.triangles().begin(), mesh.triangles().end()}};
  }

  std::vector<double> sourceValues() const {
    std::vector<double> values(part_.vertices.size() / 3);
    for (std::size_t t = 0; t < origins_.size(); ++t) {
      const std::vector<double> corners = {
          part_.corner(3 * t)[0],     part_.corner(3 * t)[1],     part_.corner(3 * t)[2],
          part_.corner(3 * t + 1)[0], part_.corner(3 * t + 1)[1], part_.corner(3 * t + 1)[2],
          part_.corner(3 * t + 2)[0], part_.corner(3 * t + 2)[1], part_.corner(3 * t + 2)[2]};
      const std::vector<double> third = kit::areas(corners, std::vector<std::int32_t>{0, 1, 2});
      for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
        values[at(part_.triangles[k])] += sourceOf(t) * third[0];
      }
    }
    return values;
  }

  Part part_;
  const Prescription& prescription_;
  std::vector<std::int32_t> origins_;
  std::map<Edge, double> edges_;
  std::vector<double> vertexValues_;
};

Point minus(const Point& a, const Point& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Point& a, const Point& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// How fast a field grows out of a triangle across its side k, from corner k to corner k + 1, times
/// the length of the side.
double flowOut(const Field& field, std::size_t t, std::size_t k) {
  const Point a = field.mesh.corner(3 * t + k);
  const Point along = minus(field.mesh.corner(3 * t + (k + 1) % 3), a);
  const Point inward = minus(field.mesh.corner(3 * t + (k + 2) % 3), a);
  const auto value = [&](std::size_t corner) {
    return field.values[at(field.mesh.triangles[3 * t + corner % 3])];
  };
  const double square = dot(along, along);
  const double place = dot(inward, along) / square;
  const double height = std::sqrt(std::max(dot(inward, inward) - place * place * square, 0.0));
  const double foot = value(k) + place * (value(k + 1) - value(k));
  return std::sqrt(square) * (foot - value(k + 2)) / height;
}

/// Of each triangle the largest change of the gradient across a side, times its length, or what its
/// source makes of it.
std::vector<double> jumpsOf(const Mesh& mesh, const Field& field) {
  struct Side {
    Edge edge;
    std::size_t triangle;
    double flow;
  };
  std::vector<Side> sides;
  const std::size_t count = field.mesh.triangles.size() / 3;
  std::vector<double> jumps(count);
  for (std::size_t t = 0; t < count; ++t) {
    double longest = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      const Edge edge =
          std::minmax(field.mesh.triangles[3 * t + k], field.mesh.triangles[3 * t + (k + 1) % 3]);
      sides.push_back({edge, t, flowOut(field, t, k)});
      const Point along =
          minus(field.mesh.corner(3 * t + k), field.mesh.corner(3 * t + (k + 1) % 3));
      longest = std::max(longest, dot(along, along));
    }
    jumps[t] = mesh.isPrescribed(t) ? 0.0 : 0.5 * longest * std::abs(mesh.sourceOf(t));
  }
  std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) {
    return std::make_pair(a.edge, a.triangle) < std::make_pair(b.edge, b.triangle);
  });
  for (std::size_t i = 0, j = 0; i < sides.size(); i = j) {
    double sum = 0.0;
    bool isBound = mesh.isPrescribed(sides[i].edge);
    for (j = i; j < sides.size() && sides[j].edge == sides[i].edge; ++j) {
      sum += sides[j].flow;
      isBound = isBound || mesh.isPrescribed(sides[j].triangle);
    }
    for (std::size_t k = i; k < j && !isBound; ++k) {
      if (!mesh.isPrescribed(sides[k].triangle)) {
        jumps[sides[k].triangle] = std::max(jumps[sides[k].triangle], std::abs(sum));
      }
    }
  }
  return jumps;
}

}  // namespace

Field solveByLength(const Part& part, const Prescription& prescription) {
  const double begin = seconds();
  const double length = diagonalOf(part) / 32.0;
  Mesh mesh(part, prescription);
  mesh.refine(length, {});
  const std::vector<double> sizes = mesh.sizesNearCorners(part, length);
  if (!sizes.empty()) {
    mesh.refine(length, sizes);
  }
  Field field = mesh.solve();
  field.seconds = seconds() - begin;
  return field;
}

Field solveUniformly(const Part& part, const Prescription& prescription, double length) {
  Mesh mesh(part, prescription);
  mesh.refine(length, {});
  return mesh.solve();
}

Field referenceByJumps(const Part& part, const Prescription& prescription, double share,
                       std::size_t triangleLimit, const Exempt& exempt) {
  const double diagonal = diagonalOf(part);
  Mesh mesh(part, prescription);
  mesh.flip();
  mesh.refine(diagonal / 100.0, {});  // changes say little while triangles are long
  mesh.flip();
  for (double allowed = 0.05;;) {
    Field field = mesh.solve();
    const double most = std::max(share, allowed) * spanOf(field);
    const std::vector<double> jumps = jumpsOf(mesh, field);
    std::vector<double> sizes(field.values.size(), kInfinity);
    std::size_t count = 0;
    for (std::size_t t = 0; t < jumps.size(); ++t) {
      double longest = 0.0;
      for (std::size_t k = 0; k < 3; ++k) {
        const Point along =
            minus(field.mesh.corner(3 * t + k), field.mesh.corner(3 * t + (k + 1) % 3));
        longest = std::max(longest, std::sqrt(dot(along, along)));
      }
      if (jumps[t] > most && longest > 1e-9 * diagonal &&
          !(longest < exempt.radius / 20.0 && exempt.contains(field.mesh.corner(3 * t)))) {
        ++count;
        for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
          double& size = sizes[at(field.mesh.triangles[k])];
          size = std::min(size, 0.51 * longest);
        }
      }
    }
    if ((count == 0 && allowed <= share) || jumps.size() > triangleLimit) {
      return field;
    }
    if (count * 50 < jumps.size()) {
      allowed /= 2.0;
    }
    if (count != 0) {
      mesh.refine(2.0 * diagonal, sizes);
      mesh.flip();
    }
  }
}

}  // namespace within
