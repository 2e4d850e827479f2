// What the error of a field is, from its difference to the field on a coarser mesh.
#pragma once

#include "kit/mesh.h"
#include "kit/nested_fields.h"
#include "kit/singular_vertices.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// Where a field is smooth, halving the elements leaves a quarter of its error: the error of the
/// fine field is a third of the difference. At a singular vertex of exponent a it leaves 2^-a, and
/// the fine field's error is 1 / (2^a - 1) of what is local of the difference.
class ErrorEstimate {
 public:
  /// The share of the largest difference that is reported as the error: more than twice a third.
  static constexpr double kReported = 0.75;

  /// Throws std::bad_alloc.
  /// @param singular     vertices of the input
  /// @param vertexCount  of the input
  ErrorEstimate(const std::vector<SingularVertex>& singular, std::size_t vertexCount);

  /// The share of the surplus in a triangle that is added to the reported error: 0 away from
  /// singular vertices.
  double localPart(const std::int32_t* corners) const;

  /// The largest error of the fine field, in its unit.
  double of(const NestedFields& nested, const MeshView& coarse) const;

 private:
  std::vector<double> localAt_;  ///< per vertex of the input
};

}  // namespace quorkit
