// The heart of the example: build the solver, solve, write.
#pragma once

#include "stages.h"
#include "surface.h"

#include <quorkit.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace heatmap {

using quor::kit::Solver;

// Tag of a vertex whose value is given: 1, 2 and 3 all mean prescribed.
enum Tag : std::int32_t { kFree = 0, kHot = 1, kCold = 2 };

// Shows how far it is, and throws Interrupted on Ctrl-C. Throws std::runtime_error if the
// factorization fails.
Solver buildSolver(const Surface& mesh, const std::vector<std::int32_t>& tags, Stages& stages);

// One value per vertex: what is given where its tag prescribes one, 0 elsewhere.
std::vector<double> prescribedValues(const std::vector<std::int32_t>& tags, double hotValue,
                                     double coldValue);

// The field for one value per vertex, read where it is prescribed.
// Throws std::runtime_error if it is not finite everywhere.
std::vector<double> solve(const Solver& solver, const std::vector<double>& values);

// Writes directory/name.obj, directory/name.mtl and the colour ramp beside them.
// Throws std::runtime_error if any of them could not be written whole.
void write(const Surface& mesh, const std::vector<double>& field,
           const std::filesystem::path& directory, const std::string& name,
           const std::filesystem::path& ramp);

}  // namespace heatmap
