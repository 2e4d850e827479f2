#include "field.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace heatmap {
namespace {

// The library names the material as it was given the base name, so a viewer finds it only if that
// has no directory in it. Hence: go there first, and come back.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::filesystem::path& directory)
      : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
  }
  ~WorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
  std::filesystem::path before_;
};

std::int64_t linesIn(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return std::count(std::istreambuf_iterator<char>(stream), {}, '\n');
}

// So that what is found there afterwards is what was written.
void removeOld(const std::filesystem::path& file) {
  std::error_code error;
  std::filesystem::remove(file, error);
  if (error) {
    throw std::runtime_error("cannot replace " + file.string() + ": " + error.message());
  }
}

void requireLines(const std::filesystem::path& file, std::int64_t lines) {
  if (linesIn(file) != lines) {
    throw std::runtime_error("cannot write " + file.string() +
                             ": no permission, or no space left on the device");
  }
}

constexpr const char* kThinTriangles =
    "the part has triangles of almost no area. A larger --tolerance welds them away";

}  // namespace

Solver buildSolver(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  StatusCode status = QUOR_SUCCESS;
  void* handle = nullptr;
  quorctorTagged(mesh.vertexCount(), mesh.vertices.data(), mesh.triangleCount(),
                 mesh.triangles.data(), tags.data(), nullptr, &status, &handle);
  if (status != QUOR_SUCCESS) {
    throw std::runtime_error("the mesh was rejected with status " + std::to_string(status));
  }
  Solver solver(handle);
  if (quorinfo(solver.get()) != QUOR_INFO_SUCCESS) {
    throw std::runtime_error(std::string("the factorization failed: ") + kThinTriangles);
  }
  return solver;
}

std::vector<double> prescribedValues(const std::vector<std::int32_t>& tags, double hotValue,
                                     double coldValue) {
  std::vector<double> values(tags.size());
  std::transform(tags.begin(), tags.end(), values.begin(), [=](std::int32_t tag) {
    return tag == kHot ? hotValue : tag == kCold ? coldValue : 0.0;
  });
  return values;
}

std::vector<double> solve(const Solver& solver, std::vector<double> values) {
  StatusCode status = QUOR_SUCCESS;
  quorsolveTagged(solver.get(), values.data(), values.data(), &status);
  if (status != QUOR_SUCCESS) {
    throw std::runtime_error("the solve failed with status " + std::to_string(status));
  }
  if (!std::all_of(values.begin(), values.end(),
                   [](double value) { return std::isfinite(value); })) {
    throw std::runtime_error(std::string("the field is not finite everywhere: ") + kThinTriangles);
  }
  return values;
}

std::vector<double> toSolverOrder(const std::vector<double>& field,
                                  const std::vector<std::int32_t>& tags) {
  std::vector<double> reordered(field.size());
  std::size_t prescribed = 0;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const std::size_t k = tags[i] == kFree ? prescribed + (field.size() - 1 - i) : prescribed++;
    reordered[k] = field[i];
  }
  return reordered;
}

void write(const Solver& solver, const std::vector<double>& solverOrderField, const Mesh& mesh,
           const std::filesystem::path& directory, const std::string& name,
           const std::filesystem::path& ramp) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (!std::filesystem::is_directory(directory)) {
    throw std::runtime_error("cannot make the directory " + directory.string() +
                             (error ? ": " + error.message() : ""));
  }
  const std::filesystem::path rampCopy = std::filesystem::absolute(directory) / "viridis.PNG";
  const std::filesystem::path rampSource = std::filesystem::absolute(ramp);
  if (!std::filesystem::exists(rampCopy) ||
      !std::filesystem::equivalent(rampSource, rampCopy, error)) {
    std::filesystem::copy_file(rampSource, rampCopy,
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error) {
      throw std::runtime_error("cannot write " + rampCopy.string() + ": " + error.message());
    }
  }
  const WorkingDirectory there(directory);
  removeOld(name + ".obj");
  removeOld(name + ".mtl");
  wobj(solver.get(), solverOrderField.data(), name.c_str());
  requireLines(name + ".obj", 2 + 2 * std::int64_t{mesh.vertexCount()} + mesh.triangleCount());
  requireLines(name + ".mtl", 8);
}

}  // namespace heatmap
