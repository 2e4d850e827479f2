#include "regions/face_list.h"

#include "regions/face_shape.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace heatmap {
namespace {

// The component of an axis that is largest is positive: either way round it is the same axis. What
// is small next to the others is 0.
std::string directionText(Vec3 direction, bool isAxis) {
  constexpr double kSmall = 1e-4;
  Position d = coordinates(direction);
  const auto largest = std::max_element(
      d.begin(), d.end(), [](double a, double b) { return std::fabs(a) < std::fabs(b); });
  const double sign = isAxis && *largest < 0.0 ? -1.0 : 1.0;
  std::string text;
  for (const double x : d) {
    text += (text.empty() ? "(" : ", ") + shortText(std::fabs(x) < kSmall ? 0.0 : sign * x);
  }
  return text + ")";
}

// Without what rounding leaves of a zero.
Vec3 tidy(Vec3 p, double size) {
  constexpr double kSmall = 1e-6;
  const auto kept = [&](double x) { return std::fabs(x) < kSmall * size ? 0.0 : x; };
  return {kept(p.x), kept(p.y), kept(p.z)};
}

}  // namespace

std::string listOf(const Surface& part, const Faces& faces) {
  std::string list = "face   kind      area        center, normal or axis\n";
  for (std::int32_t face = 1; face <= faces.count(); ++face) {
    const FaceShape shape = shapeOf(part, faces.triangles(face));
    const bool isAxis = shape.kind == FaceKind::kCylinder || shape.kind == FaceKind::kCone;
    const bool hasDirection = norm(shape.direction) > 0.0;
    std::array<char, 64> start{};
    std::snprintf(start.data(), start.size(), "%-6d %-9s %-11s ", face, nameOf(shape.kind),
                  shortText(shape.area).c_str());
    list += start.data() + ("center " + placeText(part, tidy(shape.center, std::sqrt(shape.area))));
    if (hasDirection) {
      list += (isAxis ? ", axis " : ", normal ") + directionText(shape.direction, isAxis);
    }
    list += (shape.radius > 0.0 ? ", radius " + shortText(shape.radius) : "") + "\n";
  }
  return list;
}

}  // namespace heatmap
