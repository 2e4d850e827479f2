// What the WebAssembly module exports next to the kit: progress as an import, and OBJ as text.
#include "quorkit.h"

#include "kit/arguments.h"
#include "kit/exception_guard.h"
#include "kit/obj_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

// src/layout.js reads these structures by offset.
static_assert(sizeof(QuorkitError) == 532 && offsetof(QuorkitError, text) == 20);
static_assert(sizeof(QuorkitReport) == 128 && offsetof(QuorkitReport, cornersOutOfRange) == 24);
static_assert(sizeof(QuorkitMesh) == 48 && offsetof(QuorkitMesh, longestEdge) == 32);
static_assert(sizeof(QuorkitFaces) == 24 && offsetof(QuorkitFaces, faces) == 12);
static_assert(sizeof(QuorkitProblem) == 64 && offsetof(QuorkitProblem, tolerance) == 48);
static_assert(sizeof(QuorkitSolution) == 80 && offsetof(QuorkitSolution, error) == 40 &&
              offsetof(QuorkitSolution, jumpRadius) == 72);
static_assert(sizeof(QuorkitSolverInfo) == 28 && offsetof(QuorkitSolverInfo, vertices) == 16);

extern "C" {

/// Implemented by src/core.js. It must not throw: an exception cannot cross the module's frames.
/// @return 0 to go on
__attribute__((import_module("env"), import_name("quorProgress"))) std::int32_t quorProgress(
    double fraction, void* context);

/// Returns the address of the imported function, for the functions that report progress.
QuorkitProgress quorjsProgress() {
  return quorProgress;
}

/// Composes the text of an OBJ file like quorkitWrite, without a file system.
/// @param name     of the material file, as it is to stand in the text
/// @param textOut  receives the text, to be released with free
/// @param sizeOut  receives the number of bytes
QuorkitStatus quorjsObjText(std::int32_t n, const double* vertices, std::int32_t m,
                            const std::int32_t* triangles, const double* field, const char* name,
                            double margin, char** textOut, std::uint32_t* sizeOut,
                            QuorkitError* errorOut) {
  return quorkit::guarded(errorOut, [&] {
    const quorkit::MeshView mesh = {n, vertices, m, triangles};
    quorkit::requireAtLeast(n, 1, "n");
    quorkit::requireMesh(mesh);
    quorkit::requireVerticesFinite(mesh);
    quorkit::requireNotNull(field, "field");
    quorkit::requireFinite(field, mesh.vertexCount(), "field");
    quorkit::requireBetween(margin, 0.0, 1.0, "margin");
    std::string text;
    quorkit::composeObj(mesh, field, name, margin,
                        [&text](std::string_view block) { text += block; });
    char* const copy = static_cast<char*>(std::malloc(text.size()));
    if (copy == nullptr) {
      throw std::bad_alloc();
    }
    std::copy(text.begin(), text.end(), copy);
    *textOut = copy;
    *sizeOut = static_cast<std::uint32_t>(text.size());
  });
}

/// Returns the text of the material file that goes with it.
const char* quorjsMaterial() {
  return quor::kMaterial.data();
}

}  // extern "C"
