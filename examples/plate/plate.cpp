#include <cstdio>
#include <exception>
#include <quor.hpp>

int main() try {
  const int side = 40, m = 2 * side * side;
  const int dx[] = {0, 1, 1, 0, 1, 0}, dy[] = {0, 0, 1, 0, 1, 1};  // two triangles of a cell
  std::vector<double> points;
  std::vector<std::int32_t> triangles;
  for (int point = 0; point < 3 * m; ++point) {  // every triangle owns its points
    const int cell = point / 6;
    points.push_back(cell % side + dx[point % 6]);
    points.push_back(cell / side + dy[point % 6]);
    points.push_back(0);
    triangles.push_back(point);
  }

  const quor::Welded mesh = quor::weld(points, triangles, 1e-6);
  std::vector<std::int32_t> tags;  // 0: free
  std::vector<double> degrees;     // read where the tag is not 0
  for (std::size_t i = 0; i < mesh.vertices.size(); i += 3) {
    const double x = mesh.vertices[i], y = mesh.vertices[i + 1];
    tags.push_back(x == 0 ? 1 : x + y > 2 * side - 8 ? 2 : 0);
    degrees.push_back(tags.back() == 2 ? 100 : 20);
  }

  const quor::Solver solver(mesh.vertices, mesh.triangles, tags);
  const std::vector<double> field = solver.solve(degrees);
  solver.writeObj(quor::toSolverOrder(field, tags), "plate");
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
