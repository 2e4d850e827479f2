#include "kit/check.h"

#include "kit/edge_weights.h"
#include "kit/measure.h"
#include "kit/triangle_shape.h"
#include "util/disjoint_sets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quorkit {
namespace {

void count(QuorkitFinding& finding, std::int32_t index) {
  finding.first = finding.count == 0 ? index : finding.first;
  ++finding.count;
}

class Check {
 public:
  Check(const MeshView& mesh, const Prescription& prescription)
      : mesh_(mesh),
        prescription_(prescription),
        isSound_(mesh.triangleCount()),
        isUsed_(mesh.vertexCount()),
        isInPiece_(mesh.vertexCount()),
        parents_(quor::DisjointSets::singletons(mesh.n)),
        isJoined_(prescription.isGiven() ? mesh.vertexCount() : 0),
        isTouched_(isJoined_.size()),
        pieces_(parents_.data()) {
    for (QuorkitFinding* finding :
         {&report_.cornersOutOfRange, &report_.repeatedCorners, &report_.notFinite,
          &report_.flatTriangles, &report_.needles, &report_.unusedVertices,
          &report_.prescribedVertices, &report_.pieces, &report_.unprescribedPieces,
          &report_.isolatedPrescribed, &report_.touchingRegions}) {
      *finding = {0, -1};
    }
  }

  QuorkitReport run() {
    for (std::int32_t t = 0; t < mesh_.m; ++t) {
      look(t);
    }
    lookAtVertices();
    if (prescription_.isGiven()) {
      lookAtPrescribed();
    }
    const NegativeWeights negative = negativeWeights(mesh_, isSound_);
    report_.negativeWeights = negative.inside;
    report_.obtuseBorders = negative.atBorder;
    return report_;
  }

 private:
  void look(std::int32_t t) {
    const std::int32_t* const corner = mesh_.triangles + 3 * toSize(t);
    const auto isInRange = [this](std::int32_t c) { return c >= 0 && c < mesh_.n; };
    if (!std::all_of(corner, corner + 3, isInRange)) {
      count(report_.cornersOutOfRange, t);
      for (std::size_t k = 0; k < 3; ++k) {
        if (isInRange(corner[k])) {
          isUsed_[toSize(corner[k])] = true;
        }
      }
      return;
    }
    for (std::size_t k = 0; k < 3; ++k) {
      isUsed_[toSize(corner[k])] = true;
    }
    if (corner[0] == corner[1] || corner[1] == corner[2] || corner[2] == corner[0]) {
      count(report_.repeatedCorners, t);
      return;
    }
    pieces_.link(corner[0], corner[1]);
    pieces_.link(corner[1], corner[2]);
    isInPiece_[toSize(pieces_.root(corner[0]))] = true;
    if (prescription_.isGiven()) {
      lookAtEdges(corner);
    }
    measure(t, {pointAt(mesh_.vertices, corner[0]), pointAt(mesh_.vertices, corner[1]),
                pointAt(mesh_.vertices, corner[2])});
  }

  void measure(std::int32_t t, const std::array<Vec3, 3>& points) {
    if (!std::all_of(points.begin(), points.end(), isFinite)) {
      return;
    }
    const TriangleShape shape = shapeOf(points);
    if (shape.isFlat()) {
      count(report_.flatTriangles, t);
      return;
    }
    if (shape.isNeedle()) {
      count(report_.needles, t);
    }
    isSound_[toSize(t)] = true;
    const std::size_t e = shape.longest;
    report_.longestEdge = std::max(report_.longestEdge, distance(points[e], points[(e + 1) % 3]));
    report_.area += 0.5 * doubledArea(points[0], points[1], points[2]);
  }

  void lookAtEdges(const std::int32_t* corner) {
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t v = corner[k];
      const std::int32_t w = corner[(k + 1) % 3];
      if (prescription_.isPrescribed(v) && prescription_.isPrescribed(w)) {
        auto& ends = prescription_.isOneRegion(v, w) ? isJoined_ : isTouched_;
        ends[toSize(v)] = ends[toSize(w)] = true;
      }
    }
  }

  void lookAtVertices() {
    Vec3 low = {kInfinity, kInfinity, kInfinity};
    Vec3 high = {-kInfinity, -kInfinity, -kInfinity};
    for (std::int32_t v = 0; v < mesh_.n; ++v) {
      const bool isUsed = isUsed_[toSize(v)];
      if (!isUsed) {
        count(report_.unusedVertices, v);
      }
      const Vec3 p = pointAt(mesh_.vertices, v);
      if (!isFinite(p)) {
        count(report_.notFinite, v);
      } else if (isUsed) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
      }
      if (isPiece(v)) {
        count(report_.pieces, v);
      }
    }
    report_.diagonal = low.x <= high.x ? distance(low, high) : 0.0;
  }

  /// Whether a vertex stands for a piece: it is the lowest of a set that has a triangle.
  bool isPiece(std::int32_t v) { return pieces_.root(v) == v && isInPiece_[toSize(v)]; }

  void lookAtPrescribed() {
    std::vector<bool> hasPrescribed(mesh_.vertexCount());
    for (std::int32_t v = 0; v < mesh_.n; ++v) {
      if (!prescription_.isPrescribed(v)) {
        continue;
      }
      count(report_.prescribedVertices, v);
      hasPrescribed[toSize(pieces_.root(v))] = true;
      if (!isJoined_[toSize(v)]) {
        count(report_.isolatedPrescribed, v);
      }
      if (isTouched_[toSize(v)]) {
        count(report_.touchingRegions, v);
      }
    }
    for (std::int32_t v = 0; v < mesh_.n; ++v) {
      if (isPiece(v) && !hasPrescribed[toSize(v)]) {
        count(report_.unprescribedPieces, v);
      }
    }
  }

  const MeshView& mesh_;
  const Prescription& prescription_;
  std::vector<bool> isSound_;
  std::vector<bool> isUsed_;
  std::vector<bool> isInPiece_;  ///< of what once was a root of a set with a triangle
  std::vector<std::int32_t> parents_;
  std::vector<bool> isJoined_;   ///< to another vertex of its region
  std::vector<bool> isTouched_;  ///< by a vertex of another region
  quor::DisjointSets pieces_;
  QuorkitReport report_{};
};

}  // namespace

QuorkitReport check(const MeshView& mesh, const Prescription& prescription) {
  return Check(mesh, prescription).run();
}

}  // namespace quorkit
