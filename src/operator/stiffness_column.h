// One column of the stiffness matrix.
#pragma once

#include "operator/element_stiffness.h"
#include "operator/vertex_triangles.h"
#include "util/index.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quor {

/// The column of one vertex after the other.
class StiffnessColumn {
 public:
  /// @param n  number of vertices
  explicit StiffnessColumn(std::int32_t n) : places_(toSize(n), -1) {}

  /// Sums what the triangles around a vertex contribute to its column, in their order. Throws
  /// std::bad_alloc.
  /// @param vertex     was not asked for before
  /// @param corners    at which it stands
  /// @param triangles  all corners of the mesh, no two equal in a triangle
  /// @param elements   of all triangles
  void compute(std::int32_t vertex, const VertexCorners& corners, const std::int32_t* triangles,
               const ElementStiffness* elements);

  struct Entry {
    std::int32_t row;
    double sum;
  };
  /// The entries, rows ascending.
  const Entry* begin() const { return entries_.data(); }
  const Entry* end() const { return entries_.data() + count_; }

 private:
  void sum(std::int32_t vertex, const VertexCorners& corners, const std::int32_t* triangles,
           const ElementStiffness* elements);

  std::vector<std::int32_t> places_;  ///< by row: base_ of a column + place in it, when last met
  std::vector<Entry> entries_;        ///< as many as the longest column so far may have
  std::int32_t base_ = 0;             ///< entries of all columns before, 9m at most
  std::size_t count_ = 0;
};

}  // namespace quor
