#include <cstdio>
#include <exception>
#include <fstream>
#include <quor.hpp>

int main() try {
  constexpr int side = 40;
  constexpr std::array<double, 6> dx{0, 1, 1, 0, 1, 0};  // two triangles of a cell
  constexpr std::array<double, 6> dy{0, 0, 1, 0, 1, 1};
  std::vector<double> points;
  std::vector<std::int32_t> triangles;
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      for (std::size_t corner = 0; corner < 6; ++corner) {  // every triangle owns its points
        triangles.push_back(static_cast<std::int32_t>(triangles.size()));
        points.insert(points.end(), {x + dx[corner], y + dy[corner], 0.0});
      }
    }
  }

  const quor::Welded mesh = quor::weld(points, triangles, 1e-6);
  std::vector<std::int32_t> tags;  // 1 and 2: prescribed, 0: free
  std::vector<double> degrees;     // read where the vertex is prescribed
  for (std::size_t i = 0; i < mesh.vertices.size(); i += 3) {
    const double x = mesh.vertices[i];
    const double y = mesh.vertices[i + 1];
    const int hot = x + y > 2 * side - 8 ? 2 : 0;
    tags.push_back(x == 0 ? 1 : hot);
    degrees.push_back(tags.back() == 2 ? 100 : 20);
  }

  const quor::Solver solver(mesh.vertices, mesh.triangles, tags);
  const std::vector<double> field = solver.solve(degrees);
  solver.writeObj(quor::toSolverOrder(field, tags), "plate");
  std::ofstream("plate.json")  // what the colours mean, for the viewer
      << R"({"quor": 1, "unit": "°C", "minimum": 20, "maximum": 100})" << '\n';
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
