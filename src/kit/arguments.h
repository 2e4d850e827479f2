// Checks of the arguments of the exported functions. Each throws BadArgument for the first fault.
#pragma once

#include "kit/mesh.h"
#include "quorkit.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace quorkit {

/// @param isNeeded  whether anything is behind the pointer
void requireNotNull(const void* pointer, const char* argument, bool isNeeded = true);

/// @param high  INT32_MAX for no limit
void requireInRange(std::int32_t number, std::int32_t low, std::int32_t high, const char* argument);
void requireAtLeast(std::int32_t number, std::int32_t low, const char* argument);

/// Finite and above 0.
void requireLength(double length, const char* argument);

/// In low .. high; NaN is not.
void requireBetween(double number, double low, double high, const char* argument);

/// Above low and below high; NaN is not.
void requireInside(double number, double low, double high, const char* argument);

void requireFinite(double number, const char* argument);

/// @param isMissingNan  whether NaN is a value that is missing, and no fault
void requireFinite(const double* values, std::size_t count, const char* argument,
                   bool isMissingNan = false);

/// All above 0; NaN is not. Infinity is.
void requireSizes(const double* sizes, std::size_t count);

void requireBelow(const std::int32_t* numbers, std::size_t count, std::int32_t end,
                  const char* argument);

/// What the arguments of a mesh are called.
struct MeshNames {
  const char* n = "n";
  const char* vertices = "vertices";
  const char* m = "m";
};

/// Counts and pointers; whatever is in the arrays.
/// @param fewest  of vertices, and of triangles
void requireArrays(const MeshView& mesh, std::int32_t fewest = 0, const MeshNames& names = {});

/// Of a mesh whose arrays are there.
void requireCornersInRange(const MeshView& mesh);

/// Arrays that are there, corners in range.
void requireMesh(const MeshView& mesh);

/// Of a mesh with corners in range, as all that follow.
void requireVerticesFinite(const MeshView& mesh);
void requireUsedVerticesFinite(const MeshView& mesh);
void requireCornersDifferent(const MeshView& mesh);

/// Throws std::bad_alloc.
void requireVerticesUsed(const MeshView& mesh);
void requireNoDegenerateTriangle(const MeshView& mesh);

/// A mesh with finite coordinates and no repeated corner.
void requireSoundMesh(const MeshView& mesh);

/// All that QuorkitProblem asks for. Throws std::bad_alloc.
void requireProblem(const QuorkitProblem& problem, const MeshView& mesh);

/// The path without an ".obj" at its end, if it names a file.
std::string requireBasePath(const char* path);

}  // namespace quorkit
