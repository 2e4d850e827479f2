#include "kit/clean_steps.h"

#include "kit/measure.h"
#include "kit/triangle_shape.h"
#include "util/disjoint_sets.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>
#include <queue>
#include <tuple>
#include <utility>

namespace quorkit {
namespace {

using Corners = std::array<std::int32_t, 3>;

struct Part {
  Corners corners;
  std::int32_t origin;
  bool isThere = true;
  bool isBlocked = false;  ///< cannot be removed before a triangle at one of its corners changes
};

bool has(const Corners& c, std::int32_t vertex) {
  return c[0] == vertex || c[1] == vertex || c[2] == vertex;
}

bool isRepeated(const Corners& c) {
  return c[0] == c[1] || c[1] == c[2] || c[2] == c[0];
}

Corners replaced(Corners c, std::int32_t from, std::int32_t to) {
  std::replace(c.begin(), c.end(), from, to);
  return c;
}

class Cleaning {
 public:
  Cleaning(const MeshView& mesh, const std::vector<std::int32_t>& degenerate)
      : mesh_(mesh), becameOf_(mesh.vertexCount()), isAround_(mesh.vertexCount()) {
    std::iota(becameOf_.begin(), becameOf_.end(), 0);
    parts_.reserve(mesh.triangleCount());
    for (std::int32_t t = 0; t < mesh.m; ++t) {
      const std::int32_t* const c = mesh.triangles + 3 * toSize(t);
      parts_.push_back({{c[0], c[1], c[2]}, t});
    }
    for (const std::int32_t t : degenerate) {
      if (isRepeated(parts_[toSize(t)].corners)) {
        parts_[toSize(t)].isThere = false;
      }
    }
    if (!degenerate.empty()) {
      listAround();
      for (const std::int32_t t : degenerate) {
        consider(t);
      }
    }
    stepsLeft_ = 64 * mesh.triangleCount() + 65536;
  }

  CleanedTriangles run() {
    while (!waiting_.empty()) {
      if (stepsLeft_ == 0) {
        isStuck_ = true;
        break;
      }
      const auto [longest, t] = waiting_.top();
      waiting_.pop();
      const Part& part = parts_[toSize(t)];
      const bool isCurrent =
          part.isThere && !part.isBlocked && longestSide(part.corners) == longest;
      if (isCurrent && shape(t).isFlat()) {
        if (!(shape(t).isShortestNothing() && collapse(t)) && !split(t)) {
          block(t);
        }
      }
    }
    return result();
  }

 private:
  TriangleShape shapeOfCorners(const Corners& c) const {
    return shapeOf({pointAt(mesh_.vertices, c[0]), pointAt(mesh_.vertices, c[1]),
                    pointAt(mesh_.vertices, c[2])});
  }
  TriangleShape shape(std::int32_t t) const { return shapeOfCorners(parts_[toSize(t)].corners); }

  double longestSide(const Corners& c) const {
    const std::size_t e = shapeOfCorners(c).longest;
    return distance(pointAt(mesh_.vertices, c[e]), pointAt(mesh_.vertices, c[(e + 1) % 3]));
  }

  /// A triangle's normal, brought to length 1 whatever its size.
  Vec3 normal(const Corners& c) const {
    const Vec3 a = pointAt(mesh_.vertices, c[0]);
    Vec3 u = pointAt(mesh_.vertices, c[1]) - a;
    Vec3 v = pointAt(mesh_.vertices, c[2]) - a;
    u = (1.0 / distance({0.0, 0.0, 0.0}, u)) * u;
    v = (1.0 / distance({0.0, 0.0, 0.0}, v)) * v;
    const Vec3 n = cross(u, v);
    return (1.0 / distance({0.0, 0.0, 0.0}, n)) * n;
  }

  Corners inputCorners(std::int32_t t) const {
    const std::int32_t* const c = mesh_.triangles + 3 * toSize(t);
    return {c[0], c[1], c[2]};
  }

  /// Whether a part may become a triangle of these corners. What comes from a triangle with an area
  /// never turns far from that, in all steps together; and what has an area keeps it.
  bool mayBecome(const Part& part, const Corners& after) const {
    constexpr double kMostTurn = 0.5;  // the cosine of 60 degrees
    const bool hadArea = !shapeOfCorners(part.corners).isFlat();
    if (shapeOfCorners(after).isFlat()) {
      return !hadArea;
    }
    const Corners origin = inputCorners(part.origin);
    const bool originHasArea = !isRepeated(origin) && !shapeOfCorners(origin).isFlat();
    return (!originHasArea && !hadArea) ||
           dot(normal(originHasArea ? origin : part.corners), normal(after)) >= kMostTurn;
  }

  void listAround() {
    for (std::int32_t t = 0; t < mesh_.m; ++t) {
      if (parts_[toSize(t)].isThere) {
        addAround(t);
      }
    }
  }
  void addAround(std::int32_t t) {
    for (const std::int32_t corner : parts_[toSize(t)].corners) {
      isAround_[toSize(corner)].push_back(t);
    }
  }

  /// Puts a triangle on the list if it is degenerate.
  void consider(std::int32_t t) {
    if (parts_[toSize(t)].isThere && shape(t).isFlat()) {
      waiting_.push({longestSide(parts_[toSize(t)].corners), t});
    }
  }

  void block(std::int32_t t) {
    assert(parts_[toSize(t)].isThere && shape(t).isFlat());
    isStuck_ = true;
    parts_[toSize(t)].isBlocked = true;
    for (const std::int32_t corner : parts_[toSize(t)].corners) {
      blocked_[corner].push_back(t);
    }
  }
  /// Tries those again that are blocked at a corner of a triangle that changes.
  void unblock(const Corners& changed) {
    for (const std::int32_t corner : changed) {
      const auto place = blocked_.find(corner);
      if (place == blocked_.end()) {
        continue;
      }
      for (const std::int32_t t : place->second) {
        if (parts_[toSize(t)].isBlocked) {
          parts_[toSize(t)].isBlocked = false;
          consider(t);
        }
      }
      blocked_.erase(place);
    }
  }

  /// The triangles at a vertex; those that went away are forgotten on the way.
  std::vector<std::int32_t>& around(std::int32_t vertex) {
    std::vector<std::int32_t>& list = isAround_[toSize(vertex)];
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](std::int32_t t) {
                                return !parts_[toSize(t)].isThere ||
                                       !has(parts_[toSize(t)].corners, vertex);
                              }),
               list.end());
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    stepsLeft_ -= std::min(stepsLeft_, list.size());
    return list;
  }

  /// Makes one vertex of the ends of the shortest side.
  bool collapse(std::int32_t t) {
    const Corners& c = parts_[toSize(t)].corners;
    const std::size_t e = shape(t).shortest;
    const std::int32_t kept = std::min(c[e], c[(e + 1) % 3]);
    const std::int32_t gone = std::max(c[e], c[(e + 1) % 3]);
    assert(kept < gone && becameOf_[toSize(gone)] == gone);
    const std::vector<std::int32_t> changed = around(gone);
    for (const std::int32_t other : changed) {
      const Part& part = parts_[toSize(other)];
      if (!has(part.corners, kept) && !mayBecome(part, replaced(part.corners, gone, kept))) {
        return false;
      }
    }
    // Of a triangle with both nothing is left. One with an area would be lost: it must be
    // degenerate.
    for (const std::int32_t other : changed) {
      if (has(parts_[toSize(other)].corners, kept) && !shape(other).isFlat()) {
        const double lost = longestSide(parts_[toSize(other)].corners);
        if (lost > kSmallLoss * longestSide(c)) {
          return false;
        }
      }
    }
    for (const std::int32_t other : changed) {
      Part& part = parts_[toSize(other)];
      unblock(part.corners);
      part.corners = replaced(part.corners, gone, kept);
      part.isThere = !isRepeated(part.corners);
      if (part.isThere) {
        isAround_[toSize(kept)].push_back(other);
        consider(other);
      }
    }
    becameOf_[toSize(gone)] = kept;
    return true;
  }

  /// Splits what is across the longest side at the middle corner, and takes the triangle away.
  bool split(std::int32_t t) {
    const Corners c = parts_[toSize(t)].corners;
    const std::size_t e = shape(t).longest;
    const std::int32_t a = c[e];
    const std::int32_t b = c[(e + 1) % 3];
    const std::int32_t middle = c[(e + 2) % 3];
    const double longest = longestSide(c);
    std::vector<std::int32_t> across;
    for (const std::int32_t other : around(a)) {
      if (other != t && has(parts_[toSize(other)].corners, b)) {
        across.push_back(other);
      }
    }
    for (const std::int32_t other : across) {
      const Part& whole = parts_[toSize(other)];
      for (const Corners& part :
           {replaced(whole.corners, b, middle), replaced(whole.corners, a, middle)}) {
        const bool isFine =
            isRepeated(part) ||
            (shapeOfCorners(part).isFlat() ? longestSide(part) < longest : mayBecome(whole, part));
        if (!isFine) {
          return false;
        }
      }
    }
    parts_[toSize(t)].isThere = false;
    for (const std::int32_t other : across) {
      divide(other, a, b, middle);
    }
    unblock(c);
    return true;
  }

  void divide(std::int32_t t, std::int32_t a, std::int32_t b, std::int32_t middle) {
    const Part before = parts_[toSize(t)];
    parts_[toSize(t)].isThere = false;
    unblock(before.corners);
    for (const Corners& corners :
         {replaced(before.corners, b, middle), replaced(before.corners, a, middle)}) {
      if (!isRepeated(corners)) {
        parts_.push_back({corners, before.origin});
        addAround(toIndex(parts_.size() - 1));
        consider(toIndex(parts_.size() - 1));
      }
    }
  }

  /// Drops degenerate triangles that are joined by edges to nothing but each other.
  void dropPiecesWithoutArea() {
    struct Use {
      std::int32_t u, v, triangle;
    };
    std::vector<Use> uses;
    std::vector<std::int32_t> parents = quor::DisjointSets::singletons(toIndex(parts_.size()));
    quor::DisjointSets pieces(parents.data());
    std::vector<bool> hasArea(parts_.size());
    for (std::int32_t t = 0; t < toIndex(parts_.size()); ++t) {
      const Corners& c = parts_[toSize(t)].corners;
      for (std::size_t e = 0; parts_[toSize(t)].isThere && e < 3; ++e) {
        uses.push_back({std::min(c[e], c[(e + 1) % 3]), std::max(c[e], c[(e + 1) % 3]), t});
      }
    }
    std::sort(uses.begin(), uses.end(), [](const Use& a, const Use& b) {
      return std::tie(a.u, a.v, a.triangle) < std::tie(b.u, b.v, b.triangle);
    });
    for (std::size_t k = 1; k < uses.size(); ++k) {
      if (uses[k].u == uses[k - 1].u && uses[k].v == uses[k - 1].v) {
        pieces.link(uses[k].triangle, uses[k - 1].triangle);
      }
    }
    std::vector<std::int32_t> degenerate;
    for (std::int32_t t = 0; t < toIndex(parts_.size()); ++t) {
      if (parts_[toSize(t)].isThere && shape(t).isFlat()) {
        degenerate.push_back(t);
      } else if (parts_[toSize(t)].isThere) {
        hasArea[toSize(pieces.root(t))] = true;
      }
    }
    for (const std::int32_t t : degenerate) {
      parts_[toSize(t)].isThere = hasArea[toSize(pieces.root(t))];
      degenerateCount_ += parts_[toSize(t)].isThere ? 1 : 0;
    }
  }

  CleanedTriangles result() {
    if (isStuck_) {
      dropPiecesWithoutArea();
    }
    CleanedTriangles cleaned;
    cleaned.degenerateCount = degenerateCount_;
    std::vector<std::int32_t> order;
    for (std::int32_t t = 0; t < toIndex(parts_.size()); ++t) {
      if (parts_[toSize(t)].isThere) {
        order.push_back(t);
      }
    }
    std::sort(order.begin(), order.end(), [this](std::int32_t s, std::int32_t t) {
      return std::pair(parts_[toSize(s)].origin, s) < std::pair(parts_[toSize(t)].origin, t);
    });
    for (const std::int32_t t : order) {
      const Part& part = parts_[toSize(t)];
      cleaned.triangles.insert(cleaned.triangles.end(), part.corners.begin(), part.corners.end());
      cleaned.origins.push_back(part.origin);
    }
    for (std::int32_t& became : becameOf_) {  // a vertex became a lower one, whose entry is final
      became = becameOf_[toSize(became)];
    }
    cleaned.becameOf = std::move(becameOf_);
    return cleaned;
  }

  /// A triangle with an area that vanishes in a collapse is smaller than this part of the
  /// degenerate one: its sides are at one place as well.
  static constexpr double kSmallLoss = 1e-5;

  const MeshView& mesh_;
  std::vector<Part> parts_;
  std::vector<std::int32_t> becameOf_;
  std::vector<std::vector<std::int32_t>> isAround_;  ///< triangles at each vertex, and former ones
  std::priority_queue<std::pair<double, std::int32_t>> waiting_;  ///< longest side first
  std::map<std::int32_t, std::vector<std::int32_t>> blocked_;     ///< by corner
  std::size_t stepsLeft_ = 0;
  bool isStuck_ = false;  ///< whether a triangle could not be removed, at least once
  std::int32_t degenerateCount_ = 0;
};

}  // namespace

CleanedTriangles removeDegenerate(const MeshView& mesh,
                                  const std::vector<std::int32_t>& degenerate) {
  return Cleaning(mesh, degenerate).run();
}

}  // namespace quorkit
