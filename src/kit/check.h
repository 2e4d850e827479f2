// What is wrong with a mesh.
#pragma once

#include "kit/mesh.h"
#include "quorkit.h"

#include <cstdint>

namespace quorkit {

/// What is prescribed at the vertices: by tags, by regions, or nothing if all are null.
struct Prescription {
  const std::int32_t* tags = nullptr;     ///< n; 1, 2 and 3 make one region
  const std::int32_t* regions = nullptr;  ///< n region numbers, negative where a vertex is free
  const double* values = nullptr;         ///< n values at vertices of regions, or null

  bool isGiven() const { return tags != nullptr || regions != nullptr; }
  bool isPrescribed(std::int32_t v) const {
    return regions != nullptr ? regions[v] >= 0 : tags[v] >= 1 && tags[v] <= 3;
  }
  /// Whether two prescribed vertices may be joined: they are of one region, or have one value.
  bool isOneRegion(std::int32_t v, std::int32_t w) const {
    return regions == nullptr || regions[v] == regions[w] ||
           (values != nullptr && values[v] == values[w]);
  }
};

/// Looks at any mesh, corners out of range and numbers that are not finite included. See
/// quorkitCheck and quorkitCheckRegions for what is counted.
/// Throws std::bad_alloc.
QuorkitReport check(const MeshView& mesh, const Prescription& prescription);

}  // namespace quorkit
