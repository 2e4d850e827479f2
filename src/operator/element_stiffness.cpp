#include "operator/element_stiffness.h"

#include "operator/factor/vectors.h"
#include "util/exact_arithmetic.h"

#include <array>
#include <cmath>

namespace quor {
namespace {

// Number is a double, or a vector with a triangle in each lane: the same operations.

template <typename Number>
struct Vec3 {
  Number x, y, z;
};

template <typename Number>
Vec3<Number> operator+(const Vec3<Number>& p, const Vec3<Number>& q) {
  return {p.x + q.x, p.y + q.y, p.z + q.z};
}
template <typename Number>
Vec3<Number> operator-(const Vec3<Number>& p, const Vec3<Number>& q) {
  return {p.x - q.x, p.y - q.y, p.z - q.z};
}
template <typename Number>
Vec3<Number> operator*(const Number& s, const Vec3<Number>& p) {
  return {s * p.x, s * p.y, s * p.z};
}
template <typename Number>
Number dot(const Vec3<Number>& p, const Vec3<Number>& q) {
  return (p.x * q.x + p.y * q.y) + p.z * q.z;
}
template <typename Number>
Vec3<Number> cross(const Vec3<Number>& p, const Vec3<Number>& q) {
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

/// Gradient of the hat function at `corner`, whose altitude of squared length
/// `inverseEdge2 * doubleArea2` ends at `foot`.
template <typename Number>
Vec3<Number> hatGradient(const Vec3<Number>& corner, const Vec3<Number>& foot,
                         const Number& inverseEdge2, const Number& doubleArea2) {
  return (1.0 / (inverseEdge2 * doubleArea2)) * (corner - foot);
}

/// The entries of an element: its corners', then those from each corner to the next.
template <typename Number>
std::array<Number, 6> entries(const Vec3<Number>& A, const Vec3<Number>& B, const Vec3<Number>& C) {
  const Vec3<Number> BA = B - A;
  const Vec3<Number> CA = C - A;
  const Vec3<Number> CB = C - B;
  const Vec3<Number> AB = A - B;

  const Vec3<Number> normal = cross(BA, CA);
  const Number doubleArea2 = dot(normal, normal);  // the squared double area
  const Number area = 0.5 * squareRoot(doubleArea2);

  const Number inverseCB2 = 1.0 / dot(CB, CB);
  const Number inverseCA2 = 1.0 / dot(CA, CA);
  const Number inverseAB2 = 1.0 / dot(AB, AB);

  const Vec3<Number> footA = B + (dot(CB, AB) * inverseCB2) * CB;
  const Vec3<Number> footB = A + (dot(BA, CA) * inverseCA2) * CA;
  const Vec3<Number> footC = B + (dot(CB, AB) * inverseAB2) * AB;

  const Vec3<Number> gA = hatGradient(A, footA, inverseCB2, doubleArea2);
  const Vec3<Number> gB = hatGradient(B, footB, inverseCA2, doubleArea2);
  const Vec3<Number> gC = hatGradient(C, footC, inverseAB2, doubleArea2);

  return {area * dot(gA, gA), area * dot(gB, gB), area * dot(gC, gC),
          area * dot(gA, gB), area * dot(gB, gC), area * dot(gA, gC)};
}

Vec3<double> at(const double* vertices, std::int32_t vertex) {
  const double* const p = vertices + 3 * static_cast<std::size_t>(vertex);
  return {p[0], p[1], p[2]};
}

#if defined(QUOR_GNU_EXTENSIONS)
Vec3<Vectors2::Type> at(const double* vertices, std::int32_t vertex, std::int32_t otherVertex) {
  const Vec3<double> p = at(vertices, vertex);
  const Vec3<double> q = at(vertices, otherVertex);
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
