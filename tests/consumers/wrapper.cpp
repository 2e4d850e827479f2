// The whole job through quor.hpp: a square of two triangles, prescribed at two corners.
#include <quor.hpp>

#include <cmath>

int main() {  // NOLINT(bugprone-exception-escape): none is expected
  const double points[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0};
  const quor::Welded mesh = quor::weld(points, std::array<std::int32_t, 6>{0, 1, 2, 3, 4, 5}, 1e-9);
  const std::vector<std::int32_t> tags{1, 0, 2, 0};
  const quor::Solver solver(mesh.vertices, mesh.triangles, tags);
  const std::vector<double> field = solver.solve(std::vector<double>{0, 0, 1, 0});
  solver.writeObj(quor::toSolverOrder(field, tags), "square");
  return std::abs(field[1] - 0.5) < 1e-15 ? 0 : 1;
}
