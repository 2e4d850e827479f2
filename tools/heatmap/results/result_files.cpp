#include "results/result_files.h"

#include <quorkit.hpp>

#include <stdexcept>
#include <string>
#include <system_error>

namespace heatmap {
namespace {

// Ends of the field stay this share of its range away from the ends of the ramp: viewers that
// repeat textures, as most do, would mix them.
constexpr double kMargin = 0.001;

}  // namespace

void writeResults(const Surface& mesh, const std::vector<double>& field, const Legend& legend,
                  const Destination& destination) {
  std::error_code error;
  std::filesystem::create_directories(destination.directory, error);
  if (!std::filesystem::is_directory(destination.directory)) {
    throw std::runtime_error("cannot make the directory " + destination.directory.string() +
                             " (--out): " + error.message());
  }
  const std::filesystem::path base = destination.directory / destination.name;
  try {
    quor::kit::write(mesh.vertices, mesh.triangles, field, base.u8string() + ".obj",
                     destination.ramp.u8string(), kMargin);
  } catch (const quor::kit::Error&) {
    throw std::runtime_error("cannot write " + base.string() +
                             ".obj, .mtl and viridis.PNG: permission denied, or the disk is full");
  }
  std::filesystem::path json = base;
  json += ".json";
  writeLegend(legend, json);
}

}  // namespace heatmap
