// The whole job through quorkit.hpp: a strip of two triangles, refined, prescribed at its ends.
#include <quorkit.hpp>

#include <cmath>

int main() {  // NOLINT(bugprone-exception-escape): none is expected
  const double points[] = {0, 0, 0, 4, 0, 0, 4, 1, 0, 0, 0, 0, 4, 1, 0, 0, 1, 0};
  const quor::Welded strip =
      quor::kit::weld(points, std::array<std::int32_t, 6>{0, 1, 2, 3, 4, 5}, 1e-9);
  const quor::kit::Mesh mesh = quor::kit::refine(strip.vertices, strip.triangles, 0.2);
  const std::size_t n = mesh.vertices().size() / 3;
  std::vector<std::int32_t> tags(n);
  std::vector<double> values(n);
  for (std::size_t i = 0; i < n; ++i) {
    values[i] = mesh.vertices()[3 * i];
    tags[i] = values[i] == 0 || values[i] == 4 ? 1 : 0;
  }
  const quor::kit::Solver solver(mesh.vertices(), mesh.triangles(), tags);
  const std::vector<double> field = solver.solve(values);
  quor::kit::write(mesh.vertices(), mesh.triangles(), field, "strip");
  double error = 0;  // the field is linear along the strip
  for (std::size_t i = 0; i < n; ++i) {
    error = std::fmax(error, std::abs(field[i] - values[i]));
  }
  return error < 1e-9 ? 0 : 1;
}
