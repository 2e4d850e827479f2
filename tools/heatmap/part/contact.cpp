#include "part/contact.h"

#include "part/geometry.h"
#include "part/point_tree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>

namespace heatmap {
namespace {

using Corners = std::array<Vec3, 3>;

// The middle of the shortest way between two segments, if it is shorter than a distance.
std::optional<Vec3> meeting(Vec3 a, Vec3 b, Vec3 c, Vec3 d, double distance) {
  // C. Ericson, Real-Time Collision Detection (2005), 5.1.9: nearest on the lines, then clamped.
  const Vec3 u = b - a;
  const Vec3 v = d - c;
  const Vec3 w = a - c;
  const double uu = dot(u, u);
  const double uv = dot(u, v);
  const double vv = dot(v, v);
  const double determinant = uu * vv - uv * uv;
  const double share = determinant > 0.0
                           ? std::clamp((uv * dot(v, w) - vv * dot(u, w)) / determinant, 0.0, 1.0)
                           : 0.0;
  const Vec3 q = nearestOfSegment(a + share * u, c, d);
  const Vec3 p = nearestOfSegment(q, a, b);
  return norm(p - q) < distance ? std::optional(0.5 * (p + q)) : std::nullopt;
}

// A place where the edges or corners of one triangle come near another, or pass through it.
std::optional<Vec3> reaching(const Corners& one, const Corners& other, double distance) {
  const auto [a, b, c] = other;
  const Vec3 normal = cross(b - a, c - a);
  for (std::size_t k = 0; k < 3; ++k) {
    const Vec3 p = one[k];
    const Vec3 q = one[(k + 1) % 3];
    const double before = dot(p - a, normal);
    const double behind = dot(q - a, normal);
    const bool passes = before * behind < 0.0;
    for (const Vec3 r : {p, passes ? p + before / (before - behind) * (q - p) : q}) {
      if (norm(nearestOfTriangle(r, a, b, c) - r) < distance) {
        return r;
      }
    }
    for (std::size_t j = 0; j < 3; ++j) {
      if (const auto place = meeting(p, q, other[j], other[(j + 1) % 3], distance)) {
        return place;
      }
    }
  }
  return std::nullopt;
}

// Triangles of like size, by their centers.
struct SizeClass {
  PointCloud centers;
  std::vector<std::int32_t> triangles;
  double radius = 0.0;  // around its center, the largest one
  std::unique_ptr<PointTree> tree;
};

class ContactSearch {
 public:
  ContactSearch(const Surface& surface, const std::vector<std::int32_t>& component)
      : surface_(surface), component_(component) {
    for (std::int32_t t = 0; t < surface.triangleCount(); ++t) {
      const double radius = radiusOf(t);
      SizeClass& one = classes_[std::ilogb(radius)];
      one.centers.points.push_back(coordinates(centerOf(surface, t)));
      one.triangles.push_back(t);
      one.radius = std::max(one.radius, radius);
    }
    for (auto& [size, one] : classes_) {
      one.tree = std::make_unique<PointTree>(3, one.centers);
    }
  }

  // Contacts are mutual, so the component with most triangles need not look for any.
  std::optional<Contact> find(double distance) const {
    std::vector<std::int32_t> sizes(component_.size(), 0);
    for (std::int32_t t = 0; t < surface_.triangleCount(); ++t) {
      ++sizes[toSize(componentOf(t))];
    }
    const auto largest = std::max_element(sizes.begin(), sizes.end()) - sizes.begin();
    for (std::int32_t t = 0; t < surface_.triangleCount(); ++t) {
      if (componentOf(t) == largest) {
        continue;
      }
      for (const auto& [size, one] : classes_) {
        if (const auto contact = findNear(t, one, distance)) {
          return contact;
        }
      }
    }
    return std::nullopt;
  }

 private:
  double radiusOf(std::int32_t t) const {
    const Vec3 center = centerOf(surface_, t);
    double radius = 0.0;
    for (const Vec3 corner : cornersOf(surface_, t)) {
      radius = std::max(radius, norm(corner - center));
    }
    return radius;
  }

  std::int32_t componentOf(std::int32_t t) const {
    return component_[toSize(surface_.triangle(t)[0])];
  }

  std::optional<Contact> findNear(std::int32_t t, const SizeClass& one, double distance) const {
    const Position center = coordinates(centerOf(surface_, t));
    const double reach = radiusOf(t) + one.radius + distance;
    std::vector<std::pair<std::size_t, double>> found;
    one.tree->radiusSearch(center.data(), reach * reach, found, nanoflann::SearchParams());
    for (const auto& [index, squared] : found) {
      const std::int32_t other = one.triangles[index];
      if (componentOf(other) == componentOf(t)) {
        continue;
      }
      if (const auto place =
              reaching(cornersOf(surface_, t), cornersOf(surface_, other), distance)) {
        return Contact{componentOf(t), componentOf(other), *place};
      }
    }
    return std::nullopt;
  }

  const Surface& surface_;
  const std::vector<std::int32_t>& component_;
  std::map<int, SizeClass> classes_;
};

}  // namespace

std::optional<Contact> findContact(const Surface& surface,
                                   const std::vector<std::int32_t>& component, double distance) {
  const bool isOne = std::all_of(component.begin(), component.end(),
                                 [&](std::int32_t root) { return root == component.front(); });
  return isOne ? std::nullopt : ContactSearch(surface, component).find(distance);
}

}  // namespace heatmap
