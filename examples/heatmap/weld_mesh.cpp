#include "weld_mesh.h"

#include "text.h"

#include <quor.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <stdexcept>

namespace heatmap {
namespace {

// Keeps the triangles for which keep(t) is true, in their order. Returns how many went.
template <typename Keep>
std::int32_t filterTriangles(Mesh& mesh, const Keep& keep) {
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

bool isFlat(const double* a, const double* b, const double* c) {
  using Vector = std::array<double, 3>;
  const Vector u{b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const Vector w{c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  const Vector n{u[1] * w[2] - u[2] * w[1], u[2] * w[0] - u[0] * w[2], u[0] * w[1] - u[1] * w[0]};
  return !(n[0] * n[0] + n[1] * n[1] + n[2] * n[2] > 0.0);
}

}  // namespace

Mesh weld(const Mesh& soup, double tolerance) {
  Mesh mesh = soup;  // has room for the worst case: nothing merged
  std::vector<std::int32_t> vertexOfPoint(static_cast<std::size_t>(soup.vertexCount()));
  std::int32_t vertexCount = 0;
  std::int32_t triangleCount = 0;
  const std::int32_t rejected =
      quorWeld(soup.vertexCount(), soup.vertices.data(), soup.triangleCount(),
               soup.triangles.data(), mesh.vertices.data(), mesh.triangles.data(),
               vertexOfPoint.data(), &vertexCount, &triangleCount, tolerance);
  if (rejected != 0) {
    throw std::runtime_error("the tolerance " + text(tolerance) + " must be a number, 0 or more");
  }
  mesh.vertices.resize(3 * static_cast<std::size_t>(vertexCount));
  mesh.triangles.resize(3 * static_cast<std::size_t>(triangleCount));
  if (mesh.triangles.empty()) {
    throw std::runtime_error("no triangle is left after points nearer than " + text(tolerance) +
                             " became one: the tolerance is too large for a part from " +
                             boundsText(boundsOf(soup)) + "; --tolerance sets it");
  }
  return mesh;
}

std::int32_t dropFlatTriangles(Mesh& mesh) {
  return filterTriangles(mesh, [&mesh](std::int32_t t) {
    const std::int32_t* corner = mesh.triangle(t);
    return !isFlat(mesh.vertex(corner[0]), mesh.vertex(corner[1]), mesh.vertex(corner[2]));
  });
}

std::int32_t dropUnusedVertices(Mesh& mesh) {
  std::vector<std::int32_t> newIndex(static_cast<std::size_t>(mesh.vertexCount()), -1);
  for (const std::int32_t corner : mesh.triangles) {
    newIndex[static_cast<std::size_t>(corner)] = 0;
  }
  std::vector<double> kept;
  std::int32_t count = 0;
  for (std::int32_t i = 0; i < mesh.vertexCount(); ++i) {
    if (newIndex[static_cast<std::size_t>(i)] == 0) {
      newIndex[static_cast<std::size_t>(i)] = count++;
      kept.insert(kept.end(), mesh.vertex(i), mesh.vertex(i) + 3);
    }
  }
  const std::int32_t dropped = mesh.vertexCount() - count;
  mesh.vertices = std::move(kept);
  for (std::int32_t& corner : mesh.triangles) {
    corner = newIndex[static_cast<std::size_t>(corner)];
  }
  return dropped;
}

std::vector<std::int32_t> componentsOf(const Mesh& mesh) {
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

std::int32_t keepLargestComponent(Mesh& mesh) {
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
