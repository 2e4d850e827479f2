#include "regions/face_shape.h"

#include <Eigen/Core>
#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <optional>

namespace heatmap {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;

constexpr double kFit = 1e-3;          // of the size of a face, or of the radius
constexpr double kFlatNormals = 1e-4;  // the mean square by which normals leave a plane
constexpr double kMostRadii = 50.0;    // of the face's size: rounder ones look flat

Vector3d vector(Vec3 p) {
  return {p.x, p.y, p.z};
}

Vec3 vec3(const Vector3d& p) {
  return {p.x(), p.y(), p.z()};
}

using EigenSolver = Eigen::SelfAdjointEigenSolver<Matrix3d>;

// The shortest x that makes A x nearest to b, for a symmetric A without negative eigenvalues.
Vector3d leastSquares(const Matrix3d& a, const Vector3d& b) {
  const EigenSolver solver(a);
  const Vector3d sizes = solver.eigenvalues();
  Vector3d x = Vector3d::Zero();
  for (Eigen::Index k = 0; k < 3; ++k) {
    if (sizes[k] > 1e-12 * sizes[2]) {
      const Vector3d direction = solver.eigenvectors().col(k);
      x += direction.dot(b) / sizes[k] * direction;
    }
  }
  return x;
}

// The triangles of a face: their corners from the face's center, normals and shares of its area.
class Facets {
 public:
  Facets(const Surface& surface, const std::vector<std::int32_t>& triangles) {
    Vector3d sum = Vector3d::Zero();
    for (const std::int32_t t : triangles) {
      const auto [a, b, c] = cornersOf(surface, t);
      const Vector3d normal = vector(0.5 * cross(b - a, c - a));
      const double size = normal.norm();
      if (size > 0.0) {
        sum += size * vector(centerOf(surface, t));
        area_ += size;
        normals_.push_back(normal / size);
        shares_.push_back(size);
      }
    }
    center_ = sum / area_;
    for (const std::int32_t t : triangles) {
      for (const Vec3 corner : cornersOf(surface, t)) {
        corners_.push_back(vector(corner) - center_);
        size_ = std::max(size_, corners_.back().norm());
      }
    }
    for (std::size_t i = 0; i < normals_.size(); ++i) {
      shares_[i] /= area_;
      mean_ += shares_[i] * normals_[i];
    }
  }

  double area() const { return area_; }
  const Vector3d& center() const { return center_; }
  const Vector3d& meanNormal() const { return mean_; }
  double size() const { return size_; }

  // Largest value over all corners.
  template <typename Distance>
  double largest(const Distance& distance) const {
    double most = 0.0;
    for (const Vector3d& corner : corners_) {
      most = std::max(most, std::fabs(distance(corner)));
    }
    return most;
  }

  // The direction that the normals have least of, from `from`, if that is hardly any.
  std::optional<Vector3d> axis(const Vector3d& from) const {
    Matrix3d spread = Matrix3d::Zero();
    for (std::size_t i = 0; i < normals_.size(); ++i) {
      const Vector3d off = normals_[i] - from;
      spread += shares_[i] * off * off.transpose();
    }
    const EigenSolver solver(spread);
    const Vector3d least = solver.eigenvalues();
    const bool isAxis = least[0] < kFlatNormals && least[0] < 0.01 * least[1];
    return isAxis ? std::optional<Vector3d>(solver.eigenvectors().col(0)) : std::nullopt;
  }

  // The center and radius of the sphere, or for corners in a plane through 0 of the circle, nearest
  // to the corners once `flatten` is applied to them.
  template <typename Flatten>
  std::pair<Vector3d, double> round(const Flatten& flatten) const {
    // |p - c|^2 = r^2 is linear in c and r^2 - |c|^2, of which the second drops out of differences
    // from the mean.
    const auto count = static_cast<double>(corners_.size());
    Vector3d mean = Vector3d::Zero();
    double meanSquare = 0.0;
    for (const Vector3d& corner : corners_) {
      const Vector3d p = flatten(corner) / size_;
      mean += p / count;
      meanSquare += p.squaredNorm() / count;
    }
    Matrix3d left = Matrix3d::Zero();
    Vector3d right = Vector3d::Zero();
    for (const Vector3d& corner : corners_) {
      const Vector3d p = flatten(corner) / size_;
      const Vector3d off = p - mean;
      left += 2.0 * off * off.transpose();
      right += (p.squaredNorm() - meanSquare) * off;
    }
    const Vector3d middle = leastSquares(left, right);
    const double square = meanSquare - 2.0 * mean.dot(middle) + middle.squaredNorm();
    return {size_ * middle, size_ * std::sqrt(std::max(square, 0.0))};
  }

  // The point that the planes of all triangles pass by nearest.
  Vector3d apex() const {
    Matrix3d left = Matrix3d::Zero();
    Vector3d right = Vector3d::Zero();
    for (std::size_t i = 0, k = 0; i < normals_.size(); ++i, k += 3) {
      const Vector3d& n = normals_[i];
      left += shares_[i] * n * n.transpose();
      right += shares_[i] * n.dot(corners_[k]) * n;
    }
    return leastSquares(left, right);
  }

 private:
  std::vector<Vector3d> corners_;  // three per triangle
  std::vector<Vector3d> normals_;
  std::vector<double> shares_;
  Vector3d center_ = Vector3d::Zero();
  Vector3d mean_ = Vector3d::Zero();
  double area_ = 0.0;
  double size_ = 0.0;
};

std::optional<FaceShape> cylinder(const Facets& facets) {
  const std::optional<Vector3d> axis = facets.axis(Vector3d::Zero());
  if (!axis) {
    return std::nullopt;
  }
  const auto flatten = [&](const Vector3d& p) -> Vector3d { return p - p.dot(*axis) * *axis; };
  const auto [middle, radius] = facets.round(flatten);
  const double off = facets.largest(
      [&, m = middle, r = radius](const Vector3d& p) { return (flatten(p) - m).norm() - r; });
  if (!(off <= kFit * radius) || radius > kMostRadii * facets.size()) {
    return std::nullopt;
  }
  return FaceShape{FaceKind::kCylinder, 0.0, {}, vec3(*axis), radius};
}

std::optional<FaceShape> cone(const Facets& facets) {
  const std::optional<Vector3d> axis = facets.axis(facets.meanNormal());
  if (!axis) {
    return std::nullopt;
  }
  const Vector3d apex = facets.apex();
  // The cosine between the axis and the line from the apex to a corner, which all corners share.
  const auto cosine = [&](const Vector3d& p) {
    return std::fabs((p - apex).dot(*axis)) / (p - apex).norm();
  };
  const double most = facets.largest(cosine);
  const double off =
      facets.largest([&](const Vector3d& p) { return (most - cosine(p)) * (p - apex).norm(); });
  const double slope = std::fabs(facets.meanNormal().dot(*axis));
  return off <= kFit * facets.size() && slope > kFit
             ? std::optional(FaceShape{FaceKind::kCone, 0.0, {}, vec3(*axis), 0.0})
             : std::nullopt;
}

std::optional<FaceShape> sphere(const Facets& facets) {
  const auto [middle, radius] = facets.round([](const Vector3d& p) { return p; });
  const double off =
      facets.largest([m = middle, r = radius](const Vector3d& p) { return (p - m).norm() - r; });
  return off <= kFit * radius && radius <= kMostRadii * facets.size()
             ? std::optional(FaceShape{FaceKind::kSphere, 0.0, {}, {}, radius})
             : std::nullopt;
}

FaceShape fit(const Facets& facets) {
  const Vector3d& mean = facets.meanNormal();
  const Vector3d normal =
      mean.norm() > kFit ? Vector3d(mean.normalized()) : Vector3d(0.0, 0.0, 0.0);
  const double bulge = facets.largest([&](const Vector3d& p) { return normal.dot(p); });
  if (normal.norm() > 0.0 && bulge <= kFit * facets.size()) {
    return {FaceKind::kPlane, 0.0, {}, vec3(normal), 0.0};
  }
  if (const auto shape = cylinder(facets)) {
    return *shape;
  }
  if (const auto shape = cone(facets)) {
    return *shape;
  }
  if (auto shape = sphere(facets)) {
    shape->direction = vec3(normal);
    return *shape;
  }
  return {FaceKind::kCurved, 0.0, {}, vec3(normal), 0.0};
}

}  // namespace

FaceShape shapeOf(const Surface& surface, const std::vector<std::int32_t>& triangles) {
  const Facets facets(surface, triangles);
  FaceShape shape = fit(facets);
  shape.area = facets.area();
  shape.center = vec3(facets.center());
  return shape;
}

const char* nameOf(FaceKind kind) {
  switch (kind) {
    case FaceKind::kPlane:
      return "plane";
    case FaceKind::kCylinder:
      return "cylinder";
    case FaceKind::kCone:
      return "cone";
    case FaceKind::kSphere:
      return "sphere";
    default:
      return "curved";
  }
}

}  // namespace heatmap
