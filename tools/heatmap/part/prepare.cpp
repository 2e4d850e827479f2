#include "part/prepare.h"

#include "part/components.h"
#include "part/geometry.h"
#include "part/kit_mesh.h"
#include "text.h"

#include <quorkit.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

namespace heatmap {
namespace {

constexpr double kTolerance = 1e-6;  // of the diagonal
constexpr double kFar = 10.0;        // diagonals from zero
// Parts of other sizes stay where they are.
constexpr double kSmallest = 1e-15;
constexpr double kLargest = 1e15;
// Parts of the diagonal that neighbouring floats may be apart before a part is warned of, or
// refused: far from zero a float cannot hold small details.
constexpr double kCoarse = 1e-4;
constexpr double kTooCoarse = 1e-2;
// Share of the area that welding may take away before it is worth a warning.
constexpr double kLostArea = 1e-4;

// A round number near x, in steps of a power of ten that is at most `size`.
double rounded(double x, double size) {
  double step = 1.0;  // or the number of steps in one, where that is above 1
  if (size >= 1.0) {
    while (10.0 * step <= size) {
      step *= 10.0;
    }
    return std::round(x / step) * step;
  }
  while (size * step < 1.0) {
    step *= 10.0;
  }
  return std::round(x * step) / step;
}

// Moves the coordinates by round numbers, so that neither text with six digits nor the floats of a
// viewer lose details.
void center(Surface& surface) {
  const Bounds bounds = boundsOf(surface);
  const double diagonal = bounds.diagonal();
  Position origin{};
  for (std::size_t axis = 0; axis < 3 && diagonal > kSmallest && diagonal < kLargest; ++axis) {
    const double middle = bounds.low[axis] + (bounds.high[axis] - bounds.low[axis]) / 2.0;
    origin[axis] = std::fabs(middle) > kFar * diagonal ? rounded(middle, diagonal) : 0.0;
  }
  for (std::size_t k = 0; k < surface.vertices.size(); ++k) {
    surface.vertices[k] -= origin[k % 3];
  }
  surface.origin = {origin[0], origin[1], origin[2]};
}

void requireDetails(const std::filesystem::path& file, const PartFile& part, Stages& stages) {
  if (!part.isSinglePrecision) {
    return;
  }
  const Bounds bounds = boundsOf(part.surface);
  double largest = 0.0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    largest = std::max({largest, std::fabs(bounds.low[axis]), std::fabs(bounds.high[axis])});
  }
  const double spacing = largest * double{std::numeric_limits<float>::epsilon()};
  const double diagonal = bounds.diagonal();
  if (spacing <= kCoarse * diagonal) {
    return;
  }
  const std::string what =
      file.string() + ": the file holds single precision, in which neighbouring coordinates at " +
      shortText(largest) + " are " + shortText(spacing, 2) +
      " apart, and the part has a diagonal of " + shortText(diagonal) +
      ": export it nearer to the origin, or as text";
  if (spacing > kTooCoarse * diagonal) {
    throw std::runtime_error(what);
  }
  stages.warn(what + "; details smaller than that are lost");
}

// Triangles with an area whose corners became one vertex.
void warnOfLoss(const Surface& soup, const std::vector<std::int32_t>& map, double tolerance,
                Stages& stages) {
  double area = 0.0;
  double lost = 0.0;
  std::int32_t count = 0;
  std::int32_t first = -1;
  for (std::int32_t t = 0; t < soup.triangleCount(); ++t) {
    const std::int32_t* const corner = soup.triangle(t);
    const std::int32_t a = map[toSize(corner[0])];
    const std::int32_t b = map[toSize(corner[1])];
    const std::int32_t c = map[toSize(corner[2])];
    const double own = areaOf(soup, t);
    area += own;
    if ((a == b || b == c || c == a) && own > 0.0) {
      lost += own;
      first = first < 0 ? t : first;
      ++count;
    }
  }
  if (lost > kLostArea * area) {
    stages.warn("welding points nearer than " + shortText(tolerance) + " (--tolerance) took " +
                shortText(100.0 * lost / area, 2) + " % of the area away, " +
                counted(count, "triangle") + ", the first at " +
                placeText(soup, centerOf(soup, first)) +
                ": give a smaller --tolerance unless these details may go");
  }
}

Surface weld(const Surface& soup, double tolerance, Stages& stages) {
  quor::Welded welded = quor::kit::weld(soup.vertices, soup.triangles, tolerance);
  if (welded.triangles.empty()) {
    throw std::runtime_error("no triangle is left after points nearer than " +
                             shortText(tolerance) +
                             " became one vertex, and the part reaches from " + boundsText(soup) +
                             ": give a smaller --tolerance");
  }
  warnOfLoss(soup, welded.pointMap, tolerance, stages);
  return {std::move(welded.vertices), std::move(welded.triangles), soup.origin};
}

// Returns what went, in words. What could not go is warned of where the regions are complete, which
// may cut more.
std::string clean(Surface& surface) {
  const std::int32_t degenerate =
      quor::kit::check(surface.vertices, surface.triangles).flatTriangles.count;
  const quor::kit::Mesh cleaned = quor::kit::clean(surface.vertices, surface.triangles);
  surface = copyOf(cleaned, surface.origin);
  if (surface.triangles.empty()) {
    throw std::runtime_error(
        "no triangle of the part has an area: its points lie on one line, or are too near to each "
        "other for their distance from the origin; export it again");
  }
  return "dropped " + counted(degenerate - cleaned.degenerateCount(), "degenerate triangle");
}

}  // namespace

Surface preparePart(const std::filesystem::path& file, std::optional<double> tolerance,
                    bool keepsLargest, Stages& stages) {
  stages.begin("read");
  PartFile part = readPart(file);
  for (const std::string& warning : part.warnings) {
    stages.warn(file.string() + ": " + warning);
  }
  requireDetails(file, part, stages);
  center(part.surface);
  stages.end(counts(part.surface));

  stages.begin("weld");
  const double near = tolerance ? *tolerance : kTolerance * boundsOf(part.surface).diagonal();
  Surface surface = weld(part.surface, near, stages);
  stages.end(counts(surface));

  stages.begin("clean");
  const std::int32_t smaller = keepsLargest ? keepLargestComponent(surface) : 0;
  const std::string dropped = clean(surface);
  stages.end(dropped +
             (keepsLargest ? ", " + counted(smaller, "triangle") + " of smaller components" : ""));
  return surface;
}

}  // namespace heatmap
