// What is prescribed on a mesh, followed through its refinements.
#pragma once

#include "kit/mesh.h"
#include "kit/problem.h"

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorkit {

/// The prescribed edges of a mesh, with a value at each end, and the prescribed triangles. They are
/// bound to the input: a midpoint is prescribed if its edge is, or if it lies in a triangle that
/// is, and never because both ends of its edge are.
class BoundaryValues {
 public:
  /// Throws std::bad_alloc.
  explicit BoundaryValues(const Problem& problem);

  /// Follows a refinement of the mesh. Throws std::bad_alloc.
  /// @param refined  of the mesh that this belongs to, with vertexOrigins
  /// @param origins  per triangle of it the one of the input
  void follow(const MeshData& refined, const std::vector<std::int32_t>& origins);

  /// Per vertex its value, NaN where it is free. Where regions of different values meet it is the
  /// middle of the lowest and the highest.
  const std::vector<double>& perVertex() const { return values_; }

  /// Whether an edge of the mesh is prescribed along its whole length.
  bool isPrescribed(std::int32_t u, std::int32_t v) const {
    return edges_.find(keyOf(u, v)) != edges_.end();
  }

  /// Vertices of the input where regions of different values meet, ascending.
  const std::vector<std::int32_t>& jumps() const { return jumps_; }

  /// Edges of the input along which regions of different values meet, by their ends.
  const std::vector<std::pair<std::int32_t, std::int32_t>>& jumpEdges() const { return jumpEdges_; }

  /// The first vertex of the input that has a value but no prescribed edge; -1 if there is none.
  std::int32_t isolatedVertex() const { return isolatedVertex_; }

 private:
  /// Values at the ends of lower and of higher index.
  struct EdgeValues {
    double low, high;
  };
  static std::uint64_t keyOf(std::int32_t u, std::int32_t v);

  void addEdge(std::int32_t u, std::int32_t v, double atU, double atV);
  void addVertexValues(const Problem& problem);
  void setVertexValues(const Problem& problem);

  const double* triangleValues_;
  std::unordered_map<std::uint64_t, EdgeValues> edges_;
  std::vector<double> values_;
  std::vector<std::int32_t> jumps_;
  std::vector<std::pair<std::int32_t, std::int32_t>> jumpEdges_;
  std::int32_t isolatedVertex_ = -1;
};

/// The first pair of vertices, of any numbers, that is no edge of the mesh; -1 if there is none.
/// Throws std::bad_alloc.
/// @param pairs  2 * count vertices
std::int32_t firstNoEdge(const MeshView& mesh, std::int32_t count, const std::int32_t* pairs);

}  // namespace quorkit
