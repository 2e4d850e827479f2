// Cleaning by the letter of quorkit.h, one triangle after the other with nothing to make it fast: a
// mesh to compare with, bit for bit.
#pragma once

#include "kit_mesh.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace test {

/// For finite coordinates whose fourth powers are in the range of double.
class PlainCleaning {
 public:
  explicit PlainCleaning(const Mesh& input) : input_(input) {
    for (std::int32_t v = 0; v < input.n(); ++v) {
      becameOf_.push_back(v);
    }
    for (std::int32_t t = 0; t < input.m(); ++t) {
      parts_.push_back({inputCorners(t), t});
    }
    remove([](const Part& part) { return hasEqual(part.corners); });
    while (removeOne()) {
    }
    dropPiecesWithoutArea();
    std::stable_sort(parts_.begin(), parts_.end(),
                     [](const Part& a, const Part& b) { return a.origin < b.origin; });
  }

  /// Whether the rounding of a cosine decided about a step: then any result will do.
  bool isClose() const { return isClose_; }

  /// @return empty if the mesh is the same to the last bit, else what differs
  std::string differenceOf(const QuorkitMesh& made) const {
    std::vector<std::int32_t> numbers(std::size_t(input_.n()), -1);
    for (const Part& part : parts_) {
      for (const std::int32_t corner : part.corners) {
        numbers[std::size_t(corner)] = 0;
      }
    }
    std::int32_t count = 0;
    for (std::int32_t v = 0; v < input_.n(); ++v) {
      if (numbers[std::size_t(v)] == 0) {
        if (count >= made.vertexCount || made.vertexOrigins[2 * count] != v ||
            made.vertexOrigins[2 * count + 1] != v ||
            !std::equal(made.vertices + 3 * count, made.vertices + 3 * count + 3,
                        input_.vertices.data() + 3 * std::size_t(v))) {
          return "a vertex";
        }
        numbers[std::size_t(v)] = count++;
      }
    }
    if (count != made.vertexCount || made.vertexMapCount != input_.n()) {
      return "the number of vertices";
    }
    for (std::int32_t v = 0; v < input_.n(); ++v) {
      std::int32_t kept = v;
      while (becameOf_[std::size_t(kept)] != kept) {
        kept = becameOf_[std::size_t(kept)];
      }
      if (made.vertexMap[v] != numbers[std::size_t(kept)]) {
        return "the map of vertices";
      }
    }
    if (made.triangleCount != std::int32_t(parts_.size())) {
      return "the number of triangles";
    }
    int degenerate = 0;
    for (std::size_t t = 0; t < parts_.size(); ++t) {
      for (std::size_t k = 0; k < 3; ++k) {
        if (made.triangles[3 * t + k] != numbers[std::size_t(parts_[t].corners[k])]) {
          return "a triangle";
        }
      }
      if (made.triangleOrigins[t] != parts_[t].origin) {
        return "the origin of a triangle";
      }
      degenerate += isDegenerate(parts_[t].corners) ? 1 : 0;
    }
    return made.degenerateCount == degenerate ? "" : "the number of degenerate triangles";
  }

 private:
  using Corners = std::array<std::int32_t, 3>;
  using Vector = std::array<double, 3>;
  struct Part {
    Corners corners;
    std::int32_t origin;
  };

  static bool hasEqual(const Corners& c) { return c[0] == c[1] || c[1] == c[2] || c[2] == c[0]; }
  static bool has(const Corners& c, std::int32_t v) {
    return std::find(c.begin(), c.end(), v) != c.end();
  }
  static Corners with(Corners c, std::int32_t from, std::int32_t to) {
    std::replace(c.begin(), c.end(), from, to);
    return c;
  }
  static double dot(const Vector& u, const Vector& v) {
    return u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
  }

  Corners inputCorners(std::int32_t t) const {
    const std::int32_t* const c = input_.triangles.data() + 3 * std::size_t(t);
    return {c[0], c[1], c[2]};
  }
  /// Along the normal, as long as twice the area.
  Vector normal(const Corners& c) const {
    return doubleAreaVector({input_.vertices, {c[0], c[1], c[2]}}, 0);
  }
  /// The squares of the sides ab, bc, ca.
  Vector squaredSides(const Corners& c) const {
    return {squaredLength(input_, c[0], c[1]), squaredLength(input_, c[1], c[2]),
            squaredLength(input_, c[2], c[0])};
  }
  double longest(const Corners& c) const {
    const Vector sides = squaredSides(c);
    return std::sqrt(*std::max_element(sides.begin(), sides.end()));
  }
  bool isDegenerate(const Corners& c) const {
    const Vector n = normal(c);
    const Vector sides = squaredSides(c);
    return hasEqual(c) ||
           std::sqrt(dot(n, n)) <= 1e-6 * *std::max_element(sides.begin(), sides.end());
  }

  template <typename Condition>
  void remove(const Condition& condition) {
    parts_.erase(std::remove_if(parts_.begin(), parts_.end(), condition), parts_.end());
  }

  /// What has an area keeps it, and is within 60 degrees of the triangle that it is part of.
  bool mayBecome(const Part& part, const Corners& after) {
    const bool hadArea = !isDegenerate(part.corners);
    if (isDegenerate(after)) {
      return !hadArea;
    }
    const Corners origin = inputCorners(part.origin);
    if (isDegenerate(origin) && !hadArea) {
      return true;
    }
    const Vector n = normal(isDegenerate(origin) ? part.corners : origin);
    const Vector k = normal(after);
    const double cosine = dot(n, k) / std::sqrt(dot(n, n) * dot(k, k));
    isClose_ = isClose_ || std::abs(cosine - 0.5) < 1e-6;
    return cosine >= 0.5;
  }

  /// Of all that can be removed the one with the longest side; of equal ones that made last.
  bool removeOne() {
    std::vector<std::pair<double, std::size_t>> degenerate;
    for (std::size_t t = 0; t < parts_.size(); ++t) {
      if (isDegenerate(parts_[t].corners)) {
        degenerate.push_back({longest(parts_[t].corners), t});
      }
    }
    std::sort(degenerate.rbegin(), degenerate.rend());
    return std::any_of(degenerate.begin(), degenerate.end(),
                       [this](const auto& it) { return collapse(it.second) || split(it.second); });
  }

  bool collapse(std::size_t t) {
    const Corners c = parts_[t].corners;
    const Vector sides = squaredSides(c);
    const auto shortest = std::min_element(sides.begin(), sides.end());
    if (*shortest > 1e-12 * *std::max_element(sides.begin(), sides.end())) {
      return false;
    }
    const auto e = std::size_t(shortest - sides.begin());
    const auto [kept, gone] = std::minmax({c[e], c[(e + 1) % 3]});
    for (const Part& part : parts_) {
      if (!has(part.corners, gone)) {
        continue;
      }
      if (has(part.corners, kept)
              ? !isDegenerate(part.corners) && longest(part.corners) > 1e-5 * longest(c)
              : !mayBecome(part, with(part.corners, gone, kept))) {
        return false;
      }
    }
    for (Part& part : parts_) {
      part.corners = with(part.corners, gone, kept);
    }
    becameOf_[std::size_t(gone)] = kept;
    remove([](const Part& part) { return hasEqual(part.corners); });
    return true;
  }

  bool split(std::size_t t) {
    const Corners c = parts_[t].corners;
    const Vector sides = squaredSides(c);
    const auto e = std::size_t(std::max_element(sides.begin(), sides.end()) - sides.begin());
    const std::int32_t a = c[e];
    const std::int32_t b = c[(e + 1) % 3];
    const std::int32_t middle = c[(e + 2) % 3];
    std::vector<Part> made;
    for (std::size_t other = 0; other < parts_.size(); ++other) {
      const Part& whole = parts_[other];
      if (other == t || !has(whole.corners, a) || !has(whole.corners, b)) {
        continue;
      }
      for (const Corners& part : {with(whole.corners, b, middle), with(whole.corners, a, middle)}) {
        if (hasEqual(part)) {
          continue;
        }
        if (isDegenerate(part) ? longest(part) >= longest(c) : !mayBecome(whole, part)) {
          return false;
        }
        made.push_back({part, whole.origin});
      }
    }
    std::size_t number = 0;
    remove([&](const Part& part) {
      return number++ == t || (has(part.corners, a) && has(part.corners, b));
    });
    parts_.insert(parts_.end(), made.begin(), made.end());
    return true;
  }

  /// Lets what is degenerate take part only if edges join it to something with an area.
  void dropPiecesWithoutArea() {
    std::vector<bool> isKept(parts_.size());
    for (bool hasGrown = true; hasGrown;) {
      hasGrown = false;
      for (std::size_t s = 0; s < parts_.size(); ++s) {
        for (std::size_t t = 0; t < parts_.size() && !isKept[s]; ++t) {
          int common = 0;
          for (const std::int32_t corner : parts_[s].corners) {
            common += has(parts_[t].corners, corner) ? 1 : 0;
          }
          isKept[s] = !isDegenerate(parts_[s].corners) || (isKept[t] && common >= 2);
          hasGrown = hasGrown || isKept[s];
        }
      }
    }
    std::size_t number = 0;
    remove([&](const Part&) { return !isKept[number++]; });
  }

  const Mesh& input_;
  std::vector<Part> parts_;
  std::vector<std::int32_t> becameOf_;
  bool isClose_ = false;
};

}  // namespace test
