#include "operator/element_stiffness.h"

#include "util/exact_arithmetic.h"
#include "util/vectors.h"

#include <array>
#include <cmath>

namespace quor {
namespace {

// Number is a double, or a vector with a triangle in each lane: the same operations.

template <typename Number>
struct Vec3Of {
  Number x, y, z;
};

template <typename Number>
Vec3Of<Number> operator+(const Vec3Of<Number>& p, const Vec3Of<Number>& q) {
  return {p.x + q.x, p.y + q.y, p.z + q.z};
}
template <typename Number>
Vec3Of<Number> operator-(const Vec3Of<Number>& p, const Vec3Of<Number>& q) {
  return {p.x - q.x, p.y - q.y, p.z - q.z};
}
template <typename Number>
Vec3Of<Number> operator*(const Number& s, const Vec3Of<Number>& p) {
  return {s * p.x, s * p.y, s * p.z};
}
template <typename Number>
Number dot(const Vec3Of<Number>& p, const Vec3Of<Number>& q) {
  return (p.x * q.x + p.y * q.y) + p.z * q.z;
}
template <typename Number>
Vec3Of<Number> cross(const Vec3Of<Number>& p, const Vec3Of<Number>& q) {
  return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

double squareRoot(double number) {
  return std::sqrt(number);
}
#if defined(QUOR_GNU_EXTENSIONS)
Vectors2::Type squareRoot(Vectors2::Type numbers) {
  return Vectors2::Type{std::sqrt(numbers[0]), std::sqrt(numbers[1])};
}
#endif

/// Gradient of the hat function at `corner`, whose altitude ends at `foot`. The squared length of
/// the altitude is `inverseSquaredEdge * squaredDoubleArea`.
template <typename Number>
Vec3Of<Number> hatGradient(const Vec3Of<Number>& corner, const Vec3Of<Number>& foot,
                           const Number& inverseSquaredEdge, const Number& squaredDoubleArea) {
  return (1.0 / (inverseSquaredEdge * squaredDoubleArea)) * (corner - foot);
}

/// The entries of an element: its corners', then those from each corner to the next.
template <typename Number>
std::array<Number, 6> entries(const Vec3Of<Number>& A, const Vec3Of<Number>& B,
                              const Vec3Of<Number>& C) {
  const Vec3Of<Number> BA = B - A;
  const Vec3Of<Number> CA = C - A;
  const Vec3Of<Number> CB = C - B;
  const Vec3Of<Number> AB = A - B;

  const Vec3Of<Number> normal = cross(BA, CA);
  const Number squaredDoubleArea = dot(normal, normal);
  const Number area = 0.5 * squareRoot(squaredDoubleArea);

  const Number inverseSquaredCB = 1.0 / dot(CB, CB);
  const Number inverseSquaredCA = 1.0 / dot(CA, CA);
  const Number inverseSquaredAB = 1.0 / dot(AB, AB);

  const Vec3Of<Number> footA = B + (dot(CB, AB) * inverseSquaredCB) * CB;
  const Vec3Of<Number> footB = A + (dot(BA, CA) * inverseSquaredCA) * CA;
  const Vec3Of<Number> footC = B + (dot(CB, AB) * inverseSquaredAB) * AB;

  const Vec3Of<Number> gA = hatGradient(A, footA, inverseSquaredCB, squaredDoubleArea);
  const Vec3Of<Number> gB = hatGradient(B, footB, inverseSquaredCA, squaredDoubleArea);
  const Vec3Of<Number> gC = hatGradient(C, footC, inverseSquaredAB, squaredDoubleArea);

  return {area * dot(gA, gA), area * dot(gB, gB), area * dot(gC, gC),
          area * dot(gA, gB), area * dot(gB, gC), area * dot(gA, gC)};
}

Vec3Of<double> at(const double* vertices, std::int32_t vertex) {
  const double* const p = vertices + 3 * static_cast<std::size_t>(vertex);
  return {p[0], p[1], p[2]};
}

#if defined(QUOR_GNU_EXTENSIONS)
Vec3Of<Vectors2::Type> at(const double* vertices, std::int32_t vertex, std::int32_t otherVertex) {
  const Vec3Of<double> p = at(vertices, vertex);
  const Vec3Of<double> q = at(vertices, otherVertex);
  return {Vectors2::Type{p.x, q.x}, Vectors2::Type{p.y, q.y}, Vectors2::Type{p.z, q.z}};
}
#endif

}  // namespace

void elementStiffnesses(const double* vertices, const std::int32_t* triangles, std::size_t m,
                        ElementStiffness* elements) {
  std::size_t t = 0;
#if defined(QUOR_GNU_EXTENSIONS)
  for (; t + 2 <= m; t += 2) {
    const std::int32_t* const corners = triangles + 3 * t;
    const auto both =
        entries(at(vertices, corners[0], corners[3]), at(vertices, corners[1], corners[4]),
                at(vertices, corners[2], corners[5]));
    for (std::size_t lane = 0; lane < 2; ++lane) {
      for (std::size_t k = 0; k < 3; ++k) {
        elements[t + lane].corner[k] = both[k][lane];
        elements[t + lane].edge[k] = both[3 + k][lane];
      }
    }
  }
#endif
  for (; t < m; ++t) {
    const std::int32_t* const corners = triangles + 3 * t;
    const auto [aa, bb, cc, ab, bc, ca] =
        entries(at(vertices, corners[0]), at(vertices, corners[1]), at(vertices, corners[2]));
    elements[t] = {{aa, bb, cc}, {ab, bc, ca}};
  }
}

}  // namespace quor
