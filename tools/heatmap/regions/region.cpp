#include "regions/region.h"

#include "part/geometry.h"
#include "regions/body.h"
#include "regions/cut.h"
#include "regions/face_shape.h"
#include "regions/region_cleaning.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

constexpr double kTolerance = 4e-6;         // of the diagonal: how exact borders of bodies are
constexpr double kNear = 1e-3;              // of the diagonal: how near a point is on a face
constexpr double kTolerancesInRadius = 25;  // that a radius has at least

[[noreturn]] void refuse(const Rule& rule, const std::string& why) {
  throw std::runtime_error(nameOf(rule) + " " + why);
}

[[noreturn]] void refuseEmpty(const Surface& surface, const Rule& rule) {
  refuse(rule, "selects nothing: the part reaches from " + boundsText(surface) +
                   "; face:X,Y,Z selects the face that is nearest to a point");
}

[[noreturn]] void refuseVertex(const Surface& surface, const Rule& rule, Vec3 p) {
  refuse(rule, "selects the single vertex " + placeText(surface, p) +
                   ", which has no capacity: the field around it would depend on the mesh alone. "
                   "Prescribe a face:, an edge:, or a ball: with a radius around it");
}

// The triangles whose three corners are at the end of an axis; where there are none the edges, of
// which both ends are.
Selection endOf(const Surface& part, const Rule& rule) {
  const Bounds bounds = boundsOf(part);
  const double low = bounds.low[rule.axis];
  const double high = bounds.high[rule.axis];
  const double depth = rule.numbers[0] * (high - low);
  const auto isAtEnd = [&](std::int32_t v) {
    const double x = part.vertex(v)[rule.axis];
    return rule.kind == RuleKind::kHighEnd ? x >= high - depth : x <= low + depth;
  };
  Selection selection;
  std::int32_t vertex = -1;
  for (std::int32_t t = 0; t < part.triangleCount(); ++t) {
    const std::int32_t* const corner = part.triangle(t);
    if (std::all_of(corner, corner + 3, isAtEnd)) {
      selection.triangles.push_back(t);
    }
    for (const Edge& edge : edgesOf(part, t)) {
      vertex = isAtEnd(edge[0]) ? edge[0] : isAtEnd(edge[1]) ? edge[1] : vertex;
      if (isAtEnd(edge[0]) && isAtEnd(edge[1])) {
        selection.edges.push_back(edge);
      }
    }
  }
  if (!selection.triangles.empty()) {
    selection.edges.clear();
  } else if (selection.edges.empty()) {
    refuseVertex(part, rule, part.point(vertex));
  }
  std::sort(selection.edges.begin(), selection.edges.end());
  selection.edges.erase(std::unique(selection.edges.begin(), selection.edges.end()),
                        selection.edges.end());
  return selection;
}

// The triangles that lie in the plane of a body without thickness.
Selection trianglesIn(const Body& plane, double tolerance, const Surface& part) {
  Selection selection;
  for (std::int32_t t = 0; t < part.triangleCount(); ++t) {
    const std::int32_t* const corner = part.triangle(t);
    if (std::all_of(corner, corner + 3, [&](std::int32_t v) {
          return std::fabs(plane.flats[0].excess(part.point(v))) <= tolerance;
        })) {
      selection.triangles.push_back(t);
    }
  }
  return selection;
}

// The body of a rule that has one.
std::optional<Body> bodyOf(const Rule& rule, Vec3 origin) {
  const std::vector<double>& n = rule.numbers;
  const auto point = [&](std::size_t i) { return Vec3{n[i], n[i + 1], n[i + 2]} - origin; };
  switch (rule.kind) {
    case RuleKind::kBall:
      return ballBody(point(0), n[3]);
    case RuleKind::kBox:
      return boxBody(point(0), point(3));
    case RuleKind::kCylinder:
      return cylinderBody(point(0), point(3), n[6]);
    case RuleKind::kPlane:
      return planeBody(point(0), {n[3], n[4], n[5]});
    default:
      return std::nullopt;
  }
}

std::string describe(const Surface& surface, const Selection& selection) {
  double sum = 0.0;
  for (const std::int32_t t : selection.triangles) {
    sum += areaOf(surface, t);
  }
  for (const auto& [a, b] : selection.edges) {
    sum += norm(surface.point(a) - surface.point(b));
  }
  return (selection.triangles.empty() ? "length " : "area ") + shortText(sum);
}

}  // namespace

Regions::Regions(Surface part, const Faces& faces)
    : part_(std::move(part)), faces_(faces), surface_(part_), change_(noChange(part_)) {}

void Regions::add(const Rule& rule, double value, Stages& stages) {
  const double diagonal = boundsOf(part_).diagonal();
  const double tolerance = kTolerance * diagonal;
  const std::optional<Body> body = bodyOf(rule, part_.origin);
  if (body && body->round && body->round->radius < kTolerancesInRadius * tolerance) {
    refuse(rule, "has the radius " + text(body->round->radius) + ", and the part a diagonal of " +
                     shortText(diagonal) + ": give a radius of at least a ten-thousandth of it, " +
                     shortText(kTolerancesInRadius * tolerance));
  }
  Region region{rule, value, {}, ""};
  if (body && rule.kind == RuleKind::kPlane) {
    region.selection = trianglesIn(*body, tolerance, part_);
  }
  if (!body) {
    region.selection = select(rule, region, stages);
  }
  if (!body || !region.selection.isEmpty()) {
    follow(change_, region.selection);
  } else {
    Cut cut = cutOut(*body, tolerance, surface_);
    if (cut.inside.isEmpty() && cut.touches >= 0) {
      refuseVertex(surface_, rule, surface_.point(cut.touches));
    }
    if (cut.inside.isEmpty()) {
      refuseEmpty(part_, rule);
    }
    for (Region& other : regions_) {
      follow(cut.change, other.selection);
    }
    append(cut.change, change_);
    region.selection = std::move(cut.inside);
  }
  region.what += describe(surface_, region.selection);
  regions_.push_back(std::move(region));
}

// The triangles of a face, whose number and kind the region says.
Selection Regions::faceOf(std::int32_t face, Region& region) const {
  const std::vector<std::int32_t>& triangles = faces_.triangles(face);
  region.what =
      "face " + std::to_string(face) + ", " + nameOf(shapeOf(part_, triangles).kind) + ", ";
  return {triangles, {}};
}

// Says how far the nearest is, and warns if another one is as near.
void Regions::takeNearest(const Rule& rule, const char* kind, const Faces::Nearest& nearest,
                          Region& region, Stages& stages) const {
  const double diagonal = boundsOf(part_).diagonal();
  if (nearest.distance > kNear * diagonal) {
    region.what += shortText(nearest.distance) + " away, ";
  }
  if (nearest.otherDistance - nearest.distance <= kTolerance * diagonal) {
    stages.warn(nameOf(rule) + " is as near to a second " + kind +
                ": give a point that is nearer to the " + kind + " that is meant");
  }
}

Selection Regions::select(const Rule& rule, Region& region, Stages& stages) const {
  const auto point = [&] {
    return Vec3{rule.numbers[0], rule.numbers[1], rule.numbers[2]} - part_.origin;
  };
  switch (rule.kind) {
    case RuleKind::kFace: {
      const Faces::Nearest nearest = faces_.nearestFace(point());
      Selection selection = faceOf(nearest.number, region);
      takeNearest(rule, "face", nearest, region, stages);
      return selection;
    }
    case RuleKind::kFaceNumber:
      if (!(rule.numbers[0] <= faces_.count())) {
        refuse(rule, "names a face that is not there: the part has " +
                         std::to_string(faces_.count()) + ", numbered from 1; see --list-faces");
      }
      return faceOf(static_cast<std::int32_t>(rule.numbers[0]), region);
    case RuleKind::kEdge: {
      if (faces_.chainCount() == 0) {
        refuse(rule, "selects nothing: the part has no edge between two faces; take face:X,Y,Z");
      }
      const Faces::Nearest nearest = faces_.nearestChain(point());
      takeNearest(rule, "edge", nearest, region, stages);
      Selection selection{{}, faces_.edges(nearest.number)};
      std::sort(selection.edges.begin(), selection.edges.end());
      return selection;
    }
    default:
      return endOf(part_, rule);
  }
}

void Regions::addMissingEnd(double value, Stages& stages) {
  const Bounds bounds = boundsOf(part_);
  const auto extent = [&](std::size_t axis) { return bounds.high[axis] - bounds.low[axis]; };
  std::array<std::size_t, 3> axes{0, 1, 2};
  std::stable_sort(axes.begin(), axes.end(),
                   [&](std::size_t a, std::size_t b) { return extent(a) > extent(b); });
  if (regions_.empty()) {
    add(endOfAxis(axes[0], false), value, stages);
    return;
  }
  const Rule& first = regions_[0].rule;
  if (first.kind == RuleKind::kLowEnd || first.kind == RuleKind::kHighEnd) {
    add(endOpposite(first.axis), value, stages);
    return;
  }
  std::vector<bool> isSelected(toSize(surface_.vertexCount()));
  for (const Region& region : regions_) {
    for (const std::int32_t v : verticesOf(surface_, region.selection)) {
      isSelected[toSize(v)] = true;
    }
  }
  const auto touches = [&](std::size_t axis) {
    Selection end = endOf(part_, endOpposite(axis));
    follow(change_, end);
    const std::vector<std::int32_t> vertices = verticesOf(surface_, end);
    return std::any_of(vertices.begin(), vertices.end(),
                       [&](std::int32_t v) { return isSelected[toSize(v)]; });
  };
  const auto* const apart = std::find_if_not(axes.begin(), axes.end(), touches);
  add(endOpposite(apart == axes.end() ? axes[0] : *apart), value, stages);
}

void Regions::finish() {
  cleanRegions(surface_, regions_);
}

// The end of an axis that is farther from the vertices that are selected, on average.
Rule Regions::endOpposite(std::size_t axis) const {
  const Bounds bounds = boundsOf(part_);
  const double middle = bounds.low[axis] + (bounds.high[axis] - bounds.low[axis]) / 2.0;
  double sum = 0.0;
  for (const Region& region : regions_) {
    for (const std::int32_t v : verticesOf(surface_, region.selection)) {
      sum += surface_.vertex(v)[axis] - middle;
    }
  }
  return endOfAxis(axis, sum <= 0.0);
}

namespace {

[[noreturn]] void refuseOverlap(const Surface& surface, const Region& one, const Region& other,
                                Vec3 p) {
  throw std::runtime_error(
      nameOf(one.rule) + " and " + nameOf(other.rule) + " both select the surface at " +
      placeText(surface, p) + ", with the values " + text(one.value) + " and " + text(other.value) +
      ": give rules that keep apart; the part reaches from " + boundsText(surface));
}

}  // namespace

void requireNoOverlap(const Surface& surface, const std::vector<Region>& regions) {
  std::vector<const Region*> owner(toSize(surface.triangleCount()), nullptr);
  for (const Region& region : regions) {
    for (const std::int32_t t : region.selection.triangles) {
      const Region*& known = owner[toSize(t)];
      if (known != nullptr && known->value != region.value) {
        refuseOverlap(surface, *known, region, centerOf(surface, t));
      }
      known = &region;
    }
  }
  std::map<Edge, const Region*> edges;
  for (const Region& region : regions) {
    for (const Edge& edge : region.selection.edges) {
      const Region*& known = edges[edge];
      if (known != nullptr && known->value != region.value) {
        refuseOverlap(surface, *known, region,
                      0.5 * (surface.point(edge[0]) + surface.point(edge[1])));
      }
      known = &region;
    }
  }
  // An edge on the border of another region only touches it. One inside has all its triangles
  // there.
  std::map<Edge, const Region*> other;
  std::set<Edge> onBorder;
  for (std::int32_t t = 0; t < surface.triangleCount() && !edges.empty(); ++t) {
    for (const Edge& edge : edgesOf(surface, t)) {
      const auto found = edges.find(edge);
      const Region* const region = owner[toSize(t)];
      if (found == edges.end()) {
        continue;
      }
      if (region == nullptr || region->value == found->second->value) {
        onBorder.insert(edge);
      } else {
        other[edge] = region;
      }
    }
  }
  for (const auto& [edge, region] : other) {
    if (onBorder.count(edge) == 0) {
      refuseOverlap(surface, *edges[edge], *region,
                    0.5 * (surface.point(edge[0]) + surface.point(edge[1])));
    }
  }
}

}  // namespace heatmap
