#include "part/polygon.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace heatmap {
namespace {

using Flat = std::array<double, 2>;

// Twice the signed area of a triangle, positive if it turns left.
double turn(const Flat& a, const Flat& b, const Flat& c) {
  return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

// The corners without the axis along which the polygon looks largest, turning left.
std::vector<Flat> projected(const std::vector<std::int32_t>& corners, const Surface& surface) {
  const double* const base = surface.vertex(corners[0]);
  Position normal{};  // by Newell's method, relative to a corner so that far away is like near
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const double* const p = surface.vertex(corners[i]);
    const double* const q = surface.vertex(corners[(i + 1) % corners.size()]);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const std::size_t u = (axis + 1) % 3;
      const std::size_t v = (axis + 2) % 3;
      normal[axis] += (p[u] - base[u]) * (q[v] - base[v]) - (p[v] - base[v]) * (q[u] - base[u]);
    }
  }
  std::size_t axis = 0;
  for (std::size_t other = 1; other < 3; ++other) {
    axis = std::fabs(normal[other]) > std::fabs(normal[axis]) ? other : axis;
  }
  const std::size_t u = (axis + (normal[axis] < 0.0 ? 2U : 1U)) % 3;
  const std::size_t v = 3 - axis - u;
  std::vector<Flat> flat;
  for (const std::int32_t corner : corners) {
    const double* const p = surface.vertex(corner);
    flat.push_back({p[u] - base[u], p[v] - base[v]});
  }
  return flat;
}

// The places of the polygon that are left, in order around it.
class Remainder {
 public:
  explicit Remainder(const std::vector<Flat>& points) : points_(points) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      left_.push_back(i);
    }
  }

  std::size_t count() const { return left_.size(); }
  std::array<std::size_t, 3> around(std::size_t k) const {
    return {left_[(k + count() - 1) % count()], left_[k], left_[(k + 1) % count()]};
  }

  // The place of an ear, that is a corner turning left whose triangle has no other corner in it;
  // else of the corner that turns left most. Looks from where the last one was, so that ears are
  // clipped all around and do not form one fan of slivers.
  std::size_t ear() {
    std::size_t best = 0;
    double most = -HUGE_VAL;
    for (std::size_t tried = 0; tried < count(); ++tried) {
      const std::size_t k = (next_ + tried) % count();
      const auto [a, b, c] = around(k);
      const double area = turn(points_[a], points_[b], points_[c]);
      if (area > 0.0 && isEmpty(a, b, c)) {
        next_ = k + 1;
        return k;
      }
      if (area > most) {
        best = k;
        most = area;
      }
    }
    return best;
  }

  void clip(std::size_t k) { left_.erase(left_.begin() + static_cast<std::ptrdiff_t>(k)); }

 private:
  // Corners at the very place of one of the three are those of a slit, and do not count.
  bool isEmpty(std::size_t a, std::size_t b, std::size_t c) const {
    return std::none_of(left_.begin(), left_.end(), [&](std::size_t i) {
      const Flat& p = points_[i];
      return p != points_[a] && p != points_[b] && p != points_[c] &&
             turn(points_[a], points_[b], p) >= 0.0 && turn(points_[b], points_[c], p) >= 0.0 &&
             turn(points_[c], points_[a], p) >= 0.0;
    });
  }

  const std::vector<Flat>& points_;
  std::vector<std::size_t> left_;
  std::size_t next_ = 0;
};

}  // namespace

void appendPolygon(const std::vector<std::int32_t>& corners, Surface& surface) {
  if (corners.size() < 3) {
    return;
  }
  const auto append = [&](std::size_t a, std::size_t b, std::size_t c) {
    surface.triangles.insert(surface.triangles.end(), {corners[a], corners[b], corners[c]});
  };
  if (corners.size() == 3) {
    append(0, 1, 2);
    return;
  }
  const std::vector<Flat> points = projected(corners, surface);
  Remainder rest(points);
  while (rest.count() > 3) {
    const std::size_t k = rest.ear();
    const auto [a, b, c] = rest.around(k);
    append(a, b, c);
    rest.clip(k);
  }
  const auto [a, b, c] = rest.around(1);
  append(a, b, c);
}

}  // namespace heatmap
