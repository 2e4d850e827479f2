// How small elements have to be, and where.
//
// Source: R. Becker, R. Rannacher, An optimal control approach to a posteriori error estimation in
// finite element methods, Acta Numerica 10 (2001), for weighing by the response to a source.
#pragma once

#include "kit/error_estimate.h"
#include "kit/mesh.h"
#include "kit/nested_fields.h"
#include "kit/singular_vertices.h"

#include <cstddef>
#include <vector>

namespace quorkit {

/// The longest edge that is allowed at each vertex of a mesh, as quorkitRefineGraded has it. What
/// was once asked for stays.
class ElementSizes {
 public:
  /// Nothing is asked for yet. Throws std::bad_alloc.
  /// @param smallest  that is ever asked for
  ElementSizes(const std::vector<SingularVertex>& singular, std::size_t vertexCount,
               double smallest);

  /// Asks for smaller elements where the error comes from. Throws std::bad_alloc.
  /// @param target   the largest difference between the two fields that is aimed at
  /// @param allowed  the part of it that an element may miss by itself
  void lower(const NestedFields& nested, const Level& coarse, const Exemption& exempt,
             const ErrorEstimate& estimate, double target, double allowed);

  /// Follows a refinement by these sizes: a midpoint has the lesser size of its edge's ends and a
  /// quarter of its length. Throws std::bad_alloc.
  void follow(const MeshData& refined);

  /// One per vertex, infinite where nothing was asked for.
  const std::vector<double>& perVertex() const { return sizes_; }

 private:
  std::vector<double> exponents_;  ///< per vertex of the input
  std::vector<double> sizes_;
  double smallest_;
};

}  // namespace quorkit
