// The heart of the example: build the solver, solve, write.
#pragma once

#include "mesh.h"

#include <quor.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace heatmap {

struct FreeSolver {
  void operator()(void* handle) const { quorfree(handle); }
};
using Solver = std::unique_ptr<void, FreeSolver>;

// Tag of a vertex whose value is given: 1, 2 and 3 all mean prescribed.
enum Tag : std::int32_t { kFree = 0, kHot = 1, kCold = 2, kRampEnd = 3 };

// Throws std::runtime_error if the mesh is rejected or the factorization fails.
Solver buildSolver(const Mesh& mesh, const std::vector<std::int32_t>& tags);

// One value per vertex: what is given where its tag prescribes one, 0 elsewhere.
std::vector<double> prescribedValues(const std::vector<std::int32_t>& tags, double hotValue,
                                     double coldValue);

// The field, in the mesh's vertex order, for one value per vertex, read where it is prescribed.
// Throws std::runtime_error if it is not finite everywhere.
std::vector<double> solve(const Solver& solver, std::vector<double> values);

// Reorders a field into the order in which the solver keeps its vertices.
std::vector<double> toSolverOrder(const std::vector<double>& field,
                                  const std::vector<std::int32_t>& tags);

// Writes directory/name.obj, directory/name.mtl and the colour ramp beside them.
// Throws std::runtime_error if any of them could not be written whole.
void write(const Solver& solver, const std::vector<double>& solverOrderField, const Mesh& mesh,
           const std::filesystem::path& directory, const std::string& name,
           const std::filesystem::path& ramp);

}  // namespace heatmap
