// One column of the stiffness matrix.
#pragma once

#include "operator/element_stiffness.h"
#include "operator/vertex_triangles.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace quor {

/// The column of one vertex after the other.
class StiffnessColumn {
 public:
  /// @param n  number of vertices
  explicit StiffnessColumn(std::int32_t n) : places_(static_cast<std::size_t>(n), -1) {}

  /// Sums what the triangles around a vertex contribute to its column, in their order. Throws
  /// std::bad_alloc.
  /// @param vertex     was not asked for before
  /// @param corners    at which it stands
  /// @param triangles  all corners of the mesh, no two equal in a triangle
  /// @param elements   of all triangles
  void compute(std::int32_t vertex, const VertexCorners& corners, const std::int32_t* triangles,
               const ElementStiffness* elements);

  /// The entries, rows ascending.
  std::size_t count() const { return count_; }
  const std::int32_t* rows() const { return rows_.data(); }
  const double* values() const { return sums_.data(); }

 private:
  void sum(std::int32_t vertex, const VertexCorners& corners, const std::int32_t* triangles,
           const ElementStiffness* elements);
  void sort();
  template <std::size_t kMost>
  void sortFew();
  void sortMany();

  std::vector<std::int32_t> places_;  ///< by row: base_ of a column + place in it, when last met
  std::vector<std::int32_t> rows_;    ///< as many as the longest column so far may have, or more
  std::vector<double> sums_;          ///< likewise
  std::vector<std::pair<std::int32_t, double>> sorting_;
  std::int32_t base_ = 0;  ///< entries of all columns before, 9m at most
  std::size_t count_ = 0;
};

}  // namespace quor
