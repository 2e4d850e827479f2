#include "field.h"

#include "interrupt.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace heatmap {
namespace {

constexpr const char* kThinTriangles =
    "the part has triangles of almost no area. A larger --tolerance welds them away";

// Ends of the field stay this fraction of its range away from the ends of the ramp: viewers that
// repeat textures, as most do, would mix them.
constexpr double kMargin = 0.001;

}  // namespace

Solver buildSolver(const Surface& mesh, const std::vector<std::int32_t>& tags, Stages& stages) {
  try {
    Solver solver(mesh.vertices, mesh.triangles, tags, [&stages](double fraction) {
      stages.advance(fraction);
      return !isInterrupted();
    });
    if (solver.info().factorization != 0) {
      throw std::runtime_error(std::string("the factorization failed: ") + kThinTriangles);
    }
    return solver;
  } catch (const quor::kit::Error& error) {
    if (error.status() == QUORKIT_CANCELLED) {
      throw Interrupted();
    }
    throw;
  }
}

std::vector<double> prescribedValues(const std::vector<std::int32_t>& tags, double hotValue,
                                     double coldValue) {
  std::vector<double> values(tags.size());
  std::transform(tags.begin(), tags.end(), values.begin(), [=](std::int32_t tag) {
    return tag == kHot ? hotValue : tag == kCold ? coldValue : 0.0;
  });
  return values;
}

std::vector<double> solve(const Solver& solver, const std::vector<double>& values) {
  std::vector<double> field = solver.solve(values);
  if (!std::all_of(field.begin(), field.end(), [](double value) { return std::isfinite(value); })) {
    throw std::runtime_error(std::string("the field is not finite everywhere: ") + kThinTriangles);
  }
  return field;
}

void write(const Surface& mesh, const std::vector<double>& field,
           const std::filesystem::path& directory, const std::string& name,
           const std::filesystem::path& ramp) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (!std::filesystem::is_directory(directory)) {
    throw std::runtime_error("cannot make the directory " + directory.string() +
                             (error ? ": " + error.message() : ""));
  }
  const std::filesystem::path base = directory / name;
  try {
    quor::kit::write(mesh.vertices, mesh.triangles, field, base.u8string() + ".obj",
                     ramp.u8string(), kMargin);
  } catch (const quor::kit::Error&) {
    throw std::runtime_error("cannot write " + base.string() +
                             ".obj, .mtl and viridis.PNG: no permission, or no space left on the "
                             "device");
  }
}

}  // namespace heatmap
