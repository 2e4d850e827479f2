// How wrong fields are on raw tessellations, and what refining costs: refine_bench [STL AXIS]...
//
// Each part is cold at its low and hot at its high end of the axis, by the faces of the raw
// tessellation. Its field on the raw mesh and on the refined one is compared with that of a mesh
// with ten times shorter edges, at all vertices of that: there it is interpolated.

#include "solve/singular_points.h"

#include <quorkit.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace kit = quor::kit;
using Clock = std::chrono::steady_clock;

using heatmap::Surface;

Surface copyOf(const kit::Mesh& mesh) {
  return {{mesh.vertices().begin(), mesh.vertices().end()},
          {mesh.triangles().begin(), mesh.triangles().end()}};
}

/// The triangles of a binary STL file, welded and cleaned.
Surface readPart(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  constexpr std::size_t kHead = 84;
  constexpr std::size_t kTriangle = 50;
  Surface soup;
  double size = 0.0;
  for (std::size_t at = kHead; at + kTriangle <= bytes.size(); at += kTriangle) {
    float numbers[12];
    std::memcpy(numbers, bytes.data() + at, sizeof numbers);
    for (int i = 3; i < 12; ++i) {
      soup.vertices.push_back(double{numbers[i]});
      size = std::max(size, std::abs(soup.vertices.back()));
    }
  }
  for (std::size_t i = 0; i < soup.vertices.size() / 3; ++i) {
    soup.triangles.push_back(static_cast<std::int32_t>(i));
  }
  const quor::Welded welded = kit::weld(soup.vertices, soup.triangles, 1e-6 * size);
  if (welded.triangles.empty()) {
    throw std::runtime_error(path + " is not a binary STL file");
  }
  return copyOf(kit::clean(welded.vertices, welded.triangles));
}

/// Which input triangles are at the ends of an axis: 1 low, 2 high, else 0. Empty if there are
/// none.
std::vector<std::int32_t> tagFaces(const Surface& raw, std::size_t axis) {
  if (axis > 2) {
    throw std::runtime_error("an axis is x, y or z");
  }
  double low = raw.vertices[axis];
  double high = low;
  for (std::size_t i = axis; i < raw.vertices.size(); i += 3) {
    low = std::min(low, raw.vertices[i]);
    high = std::max(high, raw.vertices[i]);
  }
  const double margin = 1e-3 * (high - low);
  std::vector<std::int32_t> tags(raw.triangles.size() / 3);
  for (std::size_t t = 0; t < tags.size(); ++t) {
    const auto isAt = [&](double end) {
      return std::all_of(&raw.triangles[3 * t], &raw.triangles[3 * t] + 3, [&](std::int32_t c) {
        return std::abs(raw.vertices[3 * static_cast<std::size_t>(c) + axis] - end) < margin;
      });
    };
    tags[t] = isAt(low) ? 1 : isAt(high) ? 2 : 0;
  }
  const bool areBothThere =
      std::count(tags.begin(), tags.end(), 1) > 0 && std::count(tags.begin(), tags.end(), 2) > 0;
  return areBothThere ? tags : std::vector<std::int32_t>();
}

struct Solved {
  std::vector<double> field;
  double seconds;  ///< to build and solve
};

/// @param faces  tag of each triangle
Solved solve(const Surface& mesh, const std::vector<std::int32_t>& faces) {
  std::vector<std::int32_t> tags(mesh.vertices.size() / 3);
  std::vector<double> values(tags.size());
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    if (faces[k / 3] != 0) {
      const auto vertex = static_cast<std::size_t>(mesh.triangles[k]);
      tags[vertex] = faces[k / 3];
      values[vertex] = faces[k / 3] - 1;
    }
  }
  const auto begin = Clock::now();
  const kit::Solver solver(mesh.vertices, mesh.triangles, tags);
  Solved solved{solver.solve(values), 0.0};
  solved.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  return solved;
}

struct Refined {
  Surface mesh;
  std::vector<std::int32_t> faces;
  std::vector<std::int32_t> vertexOrigins;
  double seconds;
};

/// As heatmap does it: all edges, then those near singular points once more.
Refined refine(const Surface& mesh, const std::vector<std::int32_t>& faces, double edge) {
  const auto begin = Clock::now();
  const kit::Mesh even = kit::refine(mesh.vertices, mesh.triangles, edge);
  Refined refined{copyOf(even),
                  {even.triangleOrigins().begin(), even.triangleOrigins().end()},
                  {even.vertexOrigins().begin(), even.vertexOrigins().end()},
                  0.0};
  std::vector<heatmap::Position> points = heatmap::cornersOfSurface(mesh);
  std::vector<bool> isFace(faces.size());
  std::vector<bool> isVertex(mesh.vertices.size() / 3);
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    if (faces[k / 3] != 0) {
      isFace[k / 3] = isVertex[static_cast<std::size_t>(mesh.triangles[k])] = true;
    }
  }
  const std::vector<heatmap::Position> others =
      heatmap::cornersOfPrescribed(mesh, isFace, isVertex);
  points.insert(points.end(), others.begin(), others.end());
  const std::vector<double> sizes = heatmap::sizesNear(std::move(points), refined.mesh, edge);
  if (!sizes.empty()) {
    const kit::Mesh graded = kit::refine(even.vertices(), even.triangles(), edge, sizes);
    // The vertices of the first mesh come first in both, so the origins of both are one table.
    const std::vector<std::int32_t> first = std::move(refined.vertexOrigins);
    refined.mesh = copyOf(graded);
    refined.vertexOrigins.assign(graded.vertexOrigins().begin(), graded.vertexOrigins().end());
    std::copy(first.begin(), first.end(), refined.vertexOrigins.begin());
    refined.faces.clear();
    for (const std::int32_t origin : graded.triangleOrigins()) {
      refined.faces.push_back(even.triangleOrigins()[static_cast<std::size_t>(origin)]);
    }
  }
  refined.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  for (std::int32_t& face : refined.faces) {  // so far the input triangle
    face = faces[static_cast<std::size_t>(face)];
  }
  return refined;
}

struct Errors {
  double largest, average;  ///< per cent of the span, which is 1
};

/// Of a field on the mesh that the fine one was made of.
Errors compare(const std::vector<double>& field, const Refined& fine,
               const std::vector<double>& exact) {
  std::vector<double> interpolated = field;
  for (std::size_t v = field.size(); v < exact.size(); ++v) {
    const auto a = static_cast<std::size_t>(fine.vertexOrigins[2 * v]);
    const auto b = static_cast<std::size_t>(fine.vertexOrigins[2 * v + 1]);
    interpolated.push_back(0.5 * interpolated[a] + 0.5 * interpolated[b]);
  }
  const std::vector<double> areas = kit::areas(fine.mesh.vertices, fine.mesh.triangles);
  Errors errors{0.0, 0.0};
  double area = 0.0;
  for (std::size_t v = 0; v < exact.size(); ++v) {
    const double error = std::abs(interpolated[v] - exact[v]);
    errors.largest = std::max(errors.largest, 100.0 * error);
    errors.average += 100.0 * error * areas[v];
    area += areas[v];
  }
  errors.average /= area;
  return errors;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

void bench(const std::string& path, std::size_t axis) {
  const Surface raw = readPart(path);
  const std::vector<std::int32_t> faces = tagFaces(raw, axis);
  if (faces.empty()) {
    throw std::runtime_error(path + " has no faces at both ends of the axis");
  }
  const double diagonal = kit::check(raw.vertices, raw.triangles).diagonal;
  const double edge = diagonal / 32.0;
  const std::string name =
      path.substr(path.find_last_of('/') + 1) + ", " + std::string(1, "xyz"[axis]);

  const auto row = [&](const char* what, const Surface& mesh,
                       const std::vector<std::int32_t>& tags) {
    const Refined fine = refine(mesh, tags, edge / 10.0);
    const Errors errors =
        compare(solve(mesh, tags).field, fine, solve(fine.mesh, fine.faces).field);
    std::printf("| %s | %s | %zu | %.2f | %.3f | %zu |", name.c_str(), what,
                mesh.triangles.size() / 3, errors.largest, errors.average,
                fine.mesh.triangles.size() / 3);
  };
  row("raw", raw, faces);
  std::printf(" | |\n");
  std::fflush(stdout);
  const Refined refined = refine(raw, faces, edge);
  row("1/32", refined.mesh, refined.faces);

  constexpr int kRounds = 15;
  std::vector<double> shares;
  std::vector<double> solves;
  for (int round = 0; round < kRounds; ++round) {
    const auto begin = Clock::now();
    const kit::Mesh cleaned = kit::clean(raw.vertices, raw.triangles);
    kit::check(cleaned.vertices(), cleaned.triangles());
    const Refined again = refine(copyOf(cleaned), faces, edge);
    const double prepare = std::chrono::duration<double>(Clock::now() - begin).count();
    solves.push_back(solve(refined.mesh, refined.faces).seconds);
    shares.push_back((prepare + solves.back()) / solves.back());
  }
  std::printf(" %.1f | %.2f |\n", 1e3 * median(solves), median(shares));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::printf(
        "| Part, axis | Surface | Triangles | Largest error, %% | Average, %% | Triangles of the "
        "fine "
        "mesh "
        "| Build and solve, ms | With all before, times |\n|---|---|---|---|---|---|---|---|\n");
    for (int i = 1; i + 1 < argc; i += 2) {
      bench(argv[i], std::string("xyz").find(argv[i + 1]));
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "refine_bench: %s\n", error.what());
    return 1;
  }
}
