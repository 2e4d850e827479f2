#include "operator/element_stiffness.h"

#include "util/exact_arithmetic.h"

#include <cmath>

namespace quor {
namespace {

struct Vec3 {
  double x, y, z;
};

Vec3 at(const double* p) {
  return {p[0], p[1], p[2]};
}
Vec3 operator+(Vec3 p, Vec3 q) {
  return {p.x + q.x, p.y + q.y, p.z + q.z};
}
Vec3 operator-(Vec3 p, Vec3 q) {
  return {p.x - q.x, p.y - q.y, p.z - q.z};
}
Vec3 operator*(double s, Vec3 p) {
  return {s * p.x, s * p.y, s * p.z};
}
double dot(Vec3 p, Vec3 q) {
  return (p.x * q.x + p.y * q.y) + p.z * q.z;
}
Vec3 cross(Vec3 p, Vec3 q) {
  return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

/// Gradient of the hat function at `corner`, whose altitude of squared length
/// `inverseEdge2 * doubleArea2` ends at `foot`.
Vec3 hatGradient(Vec3 corner, Vec3 foot, double inverseEdge2, double doubleArea2) {
  return (1.0 / (inverseEdge2 * doubleArea2)) * (corner - foot);
}

}  // namespace

ElementStiffness elementStiffness(const double* cornerA, const double* cornerB,
                                  const double* cornerC) {
  const Vec3 A = at(cornerA);
  const Vec3 B = at(cornerB);
  const Vec3 C = at(cornerC);
  const Vec3 BA = B - A;
  const Vec3 CA = C - A;
  const Vec3 CB = C - B;
  const Vec3 AB = A - B;

  const Vec3 normal = cross(BA, CA);
  const double doubleArea2 = dot(normal, normal);  // the squared double area
  const double area = 0.5 * std::sqrt(doubleArea2);

  const double inverseCB2 = 1.0 / dot(CB, CB);
  const double inverseCA2 = 1.0 / dot(CA, CA);
  const double inverseAB2 = 1.0 / dot(AB, AB);

  const Vec3 footA = B + (dot(CB, AB) * inverseCB2) * CB;
  const Vec3 footB = A + (dot(BA, CA) * inverseCA2) * CA;
  const Vec3 footC = B + (dot(CB, AB) * inverseAB2) * AB;

  const Vec3 gA = hatGradient(A, footA, inverseCB2, doubleArea2);
  const Vec3 gB = hatGradient(B, footB, inverseCA2, doubleArea2);
  const Vec3 gC = hatGradient(C, footC, inverseAB2, doubleArea2);

  return {{area * dot(gA, gA), area * dot(gB, gB), area * dot(gC, gC)},
          {area * dot(gA, gB), area * dot(gB, gC), area * dot(gA, gC)}};
}

}  // namespace quor
