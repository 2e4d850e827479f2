#include "weld_mesh.h"

#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

// Keeps the triangles for which keep(t) is true, in their order. Returns how many went.
template <typename Keep>
std::int32_t filterTriangles(Surface& mesh, const Keep& keep) {
  const std::int32_t before = mesh.triangleCount();
  std::vector<std::int32_t> kept;
  for (std::int32_t t = 0; t < before; ++t) {
    if (keep(t)) {
      kept.insert(kept.end(), mesh.triangle(t), mesh.triangle(t) + 3);
    }
  }
  mesh.triangles = std::move(kept);
  return before - mesh.triangleCount();
}

}  // namespace

Surface weld(const Surface& soup, double tolerance) {
  quor::Welded welded = quor::kit::weld(soup.vertices, soup.triangles, tolerance);
  Surface mesh{std::move(welded.vertices), std::move(welded.triangles)};
  if (mesh.triangles.empty()) {
    throw std::runtime_error("no triangle is left after points nearer than " + text(tolerance) +
                             " became one: the tolerance is too large for a part from " +
                             boundsText(boundsOf(soup)) + "; --tolerance sets it");
  }
  return mesh;
}

namespace {

// Numbers the pieces of the mesh that no edge connects: the piece of every vertex.
std::vector<std::int32_t> componentsOf(const Surface& mesh) {
  std::vector<std::int32_t> parent(static_cast<std::size_t>(mesh.vertexCount()));
  std::iota(parent.begin(), parent.end(), 0);
  const auto root = [&parent](std::int32_t i) {
    while (parent[static_cast<std::size_t>(i)] != i) {
      std::int32_t& up = parent[static_cast<std::size_t>(i)];
      up = parent[static_cast<std::size_t>(up)];
      i = up;
    }
    return i;
  };
  for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
    for (int corner = 1; corner < 3; ++corner) {
      const std::int32_t a = root(mesh.triangle(t)[0]);
      const std::int32_t b = root(mesh.triangle(t)[corner]);
      parent[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    }
  }
  std::vector<std::int32_t> component(parent.size(), -1);
  std::int32_t count = 0;
  for (std::size_t i = 0; i < parent.size(); ++i) {
    const auto r = static_cast<std::size_t>(root(static_cast<std::int32_t>(i)));  // r <= i
    component[i] = r == i ? count++ : component[r];
  }
  return component;
}

}  // namespace

std::int32_t keepLargestComponent(Surface& mesh) {
  const std::vector<std::int32_t> component = componentsOf(mesh);
  std::vector<std::int32_t> size(component.size(), 0);
  for (const std::int32_t c : component) {
    ++size[static_cast<std::size_t>(c)];
  }
  const auto largest =
      static_cast<std::int32_t>(std::max_element(size.begin(), size.end()) - size.begin());
  return filterTriangles(mesh, [&](std::int32_t t) {
    return component[static_cast<std::size_t>(mesh.triangle(t)[0])] == largest;
  });
}

}  // namespace heatmap
