// part FILE.stl RAMP: a part from a CAD system, 80 degrees at the low end of x and 30 at the
// other: from the triangles to a coloured OBJ, part.obj, with numbers on its legend, part.json.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <numeric>
#include <quorkit.hpp>
#include <sstream>

namespace {

// Binary STL is 80 bytes of anything, a count, and per triangle twelve floats, of which the first
// three are a normal, and two bytes; the lowest byte comes first. Empty if it is not that.
std::vector<double> readBinary(const std::string& bytes) {
  std::uint32_t count = 0;
  if (bytes.size() >= 84) {
    std::memcpy(&count, bytes.data() + 80, sizeof count);
  }
  std::vector<double> points;
  if (bytes.size() != 84 + std::size_t{50} * count) {
    return points;
  }
  for (std::size_t at = 84; at < bytes.size(); at += 50) {
    std::array<float, 9> corners{};
    std::memcpy(corners.data(), bytes.data() + at + 12, sizeof corners);
    points.insert(points.end(), corners.begin(), corners.end());
  }
  return points;
}

// The other STL is text: the coordinates follow the word "vertex", of every corner of a triangle.
std::vector<double> readText(const std::string& text) {
  std::istringstream words(text);
  std::vector<double> points;
  std::string word;
  while (words >> word) {
    if (word == "vertex") {
      std::array<double, 3> corner{};
      if (!(words >> corner[0] >> corner[1] >> corner[2])) {
        throw std::runtime_error("the part is damaged: a number is missing");
      }
      points.insert(points.end(), corner.begin(), corner.end());
    }
  }
  if (points.empty() || points.size() % 9 != 0 || text.find("endsolid") == std::string::npos) {
    throw std::runtime_error("the part is not an STL file, or damaged");
  }
  return points;
}

// The corners of all triangles.
std::vector<double> readStl(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot open the part");
  }
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  std::vector<double> points = readBinary(bytes);
  return points.empty() ? readText(bytes) : points;
}

// Files have six digits and viewers floats, too few far away from zero: coordinates there become
// relative to whole numbers near the low corner, which are returned.
std::array<double, 3> moveNearZero(std::vector<double>& points, double diagonal) {
  std::array<double, 3> origin{points[0], points[1], points[2]};
  for (std::size_t k = 0; k < points.size(); ++k) {
    origin[k % 3] = std::min(origin[k % 3], points[k]);
  }
  for (double& low : origin) {
    const double size = std::abs(low);
    low = size > 10 * diagonal && size < 1e15 ? std::trunc(low) + 0.0 : 0.0;
  }
  for (std::size_t k = 0; k < points.size(); ++k) {
    points[k] -= origin[k % 3];
  }
  return origin;
}

// Welded, without flat triangles, and fine enough: no edge longer than a 32nd part of the diagonal.
quor::kit::Mesh prepare(std::vector<double>& points, std::array<double, 3>& origin) {
  std::vector<std::int32_t> triangles(points.size() / 3);  // every triangle owns its points
  std::iota(triangles.begin(), triangles.end(), 0);
  const QuorkitReport report = quor::kit::check(points, triangles);
  if (report.notFinite.count > 0) {
    throw std::runtime_error("the part is damaged: a coordinate is not finite");
  }
  const double diagonal = report.diagonal;
  origin = moveNearZero(points, diagonal);
  const quor::Welded soup = quor::kit::weld(points, triangles, 1e-6 * diagonal);
  const quor::kit::Mesh clean = quor::kit::clean(soup.vertices, soup.triangles);
  if (clean.triangles().size() / 3 <= points.size() / 9 / 2) {
    throw std::runtime_error(
        "most triangles have no area: export the part again, near zero or as text");
  }
  return quor::kit::refine(clean.vertices(), clean.triangles(), diagonal / 32);
}

// The outermost 2 % at both ends of x: 1 and 2 are prescribed, 0 is free.
std::vector<std::int32_t> tagEnds(const quor::kit::Mesh& mesh) {
  std::vector<double> x;
  for (std::size_t k = 0; k < mesh.vertices().size(); k += 3) {
    x.push_back(mesh.vertices()[k]);
  }
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  std::vector<std::int32_t> tags;
  for (const double value : x) {
    const double share = (value - *low) / (*high - *low);
    tags.push_back(share <= 0.02 ? 1 : share >= 0.98 ? 2 : 0);
  }
  return tags;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    throw std::runtime_error("usage: part FILE.stl viridis.PNG");
  }
  std::vector<double> points = readStl(argv[1]);
  std::array<double, 3> origin{};
  const quor::kit::Mesh mesh = prepare(points, origin);
  const std::vector<std::int32_t> tags = tagEnds(mesh);
  if (quor::kit::check(mesh.vertices(), mesh.triangles(), tags).unprescribedPieces.count > 0) {
    throw std::runtime_error("a piece of the part reaches neither end of x");
  }
  std::vector<double> degrees;  // read where the vertex is prescribed
  std::transform(tags.begin(), tags.end(), std::back_inserter(degrees),
                 [](std::int32_t tag) { return tag == 1 ? 80.0 : 30.0; });

  const quor::kit::Solver solver(mesh.vertices(), mesh.triangles(), tags);
  const std::vector<double> field = solver.solve(degrees);
  quor::kit::write(mesh.vertices(), mesh.triangles(), field, "part", argv[2]);
  std::ofstream("part.json") << R"({"quor": 1, "field": "temperature", "unit": "°C", )"
                             << R"("minimum": 30, "maximum": 80, "origin": [)" << std::fixed
                             << std::setprecision(0) << origin[0] << ", " << origin[1] << ", "
                             << origin[2] << "]}\n";
  std::printf("part.obj: %zu vertices, %zu triangles of %zu\n", field.size(),
              mesh.triangles().size() / 3, points.size() / 9);
} catch (const std::exception& error) {
  std::fprintf(stderr, "part: %s\n", error.what());
  return 1;
}
