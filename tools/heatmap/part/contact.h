// Where components of a part touch without being connected.
#pragma once

#include "part/surface.h"

#include <optional>
#include <vector>

namespace heatmap {

struct Contact {
  std::int32_t component;  // as componentsOf names them
  std::int32_t other;
  quor::Vec3 place;
};

// A place at which two components come nearer to each other than a distance, or pass through each
// other; nothing if there is none. CAD systems export solids that touch with triangles of their
// own, which share no vertices and so no heat. Compares triangles with those of like size nearby: n
// log n for parts of any shape.
//
//   component  of each vertex, from componentsOf
std::optional<Contact> findContact(const Surface& surface,
                                   const std::vector<std::int32_t>& component, double distance);

}  // namespace heatmap
