#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <numeric>
#include <quorkit.hpp>

namespace {

// The nine coordinates of each triangle. Binary STL: 80 bytes, a count, and for each triangle
// twelve floats, of which the first three are its normal, and two bytes.
std::vector<double> readStl(const char* path) {
  std::ifstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.seekg(80);
  std::uint32_t count = 0;
  file.read(reinterpret_cast<char*>(&count), 4);
  std::vector<double> points;
  for (std::uint32_t t = 0; t < count; ++t) {
    std::array<float, 12> facet{};
    file.read(reinterpret_cast<char*>(facet.data()), 48).ignore(2);
    points.insert(points.end(), facet.begin() + 3, facet.end());
  }
  return points;
}

// 80 degrees on the face at the low end of x, 30 at the other end, and NaN, which is free, on all
// other triangles.
std::vector<double> prescribe(const quor::kit::Mesh& part) {
  double low = part.vertices()[0];
  double high = low;
  for (std::size_t i = 0; i < part.vertices().size(); i += 3) {
    low = std::min(low, part.vertices()[i]);
    high = std::max(high, part.vertices()[i]);
  }
  std::vector<double> values;
  for (std::size_t k = 0; k < part.triangles().size(); k += 3) {
    const auto x = [&](std::size_t corner) {
      return part.vertices()[3 * static_cast<std::size_t>(part.triangles()[k + corner])];
    };
    const auto [least, greatest] = std::minmax({x(0), x(1), x(2)});
    values.push_back(greatest < low + 0.001 ? 80 : least > high - 0.001 ? 30 : std::nan(""));
  }
  return values;
}

}  // namespace

int main() try {
  const std::vector<double> points = readStl("bracket.stl");
  std::vector<std::int32_t> triangles(points.size() / 3);
  std::iota(triangles.begin(), triangles.end(), 0);  // every triangle owns its points

  const quor::Welded soup = quor::kit::weld(points, triangles, 1e-4);
  const quor::kit::Mesh part = quor::kit::clean(soup.vertices, soup.triangles);
  const std::vector<double> values = prescribe(part);
  quor::kit::Problem problem;
  problem.vertices = part.vertices();
  problem.triangles = part.triangles();
  problem.triangleValues = values;
  problem.tolerance = 0.01;
  problem.isShareOfSpan = true;
  const quor::kit::Solution result = quor::kit::solveWithin(problem);
  quor::kit::write(result.vertices(), result.triangles(), result.field(), "bracket", "viridis.PNG");
  std::ofstream("bracket.json")
      << R"({"quor": 1, "unit": "\u00b0C", "minimum": 30, "maximum": 80, "error": )"
      << std::round(100 * result.info().error) / 100 << '}';
  std::printf("%zu triangles, estimated error %.2f degrees\n", result.triangles().size() / 3,
              result.info().error);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
