// Results as they are handed out: what a caller sees, with the memory behind it. Freed by the
// function that the header names.
#pragma once

#include "kit/faces.h"
#include "kit/mesh.h"
#include "kit/solve_within.h"
#include "quorkit.h"
#include "util/index.h"

#include <cstdint>
#include <utility>

namespace quorkit {

/// A mesh as it is handed out, with what it points to.
struct OwnedMesh : QuorkitMesh {
  explicit OwnedMesh(MeshData&& mesh) : QuorkitMesh(), data(std::move(mesh)) {
    vertexCount = toIndex(data.vertices.size() / 3);
    triangleCount = toIndex(data.triangles.size() / 3);
    vertices = data.vertices.data();
    triangles = data.triangles.data();
    triangleOrigins = data.triangleOrigins.data();
    vertexOrigins = data.vertexOrigins.data();
    vertexMap = data.vertexMap.empty() ? nullptr : data.vertexMap.data();
    vertexMapCount = toIndex(data.vertexMap.size());
    longestEdge = data.longestEdge;
    degenerateCount = data.degenerateCount;
  }
  MeshData data;
};

/// Faces as they are handed out, with what they point to.
struct OwnedFaces : QuorkitFaces {
  explicit OwnedFaces(Faces&& found) : QuorkitFaces(), data(std::move(found)) {
    faceCount = data.faceCount;
    chainCount = data.chainCount;
    edgeCount = toIndex(data.chainOf.size());
    faces = data.faceOf.data();
    edges = data.edges.data();
    chains = data.chainOf.data();
  }
  Faces data;
};

/// A solution as it is handed out, with what it points to.
struct OwnedSolution : QuorkitSolution {
  explicit OwnedSolution(Solution&& solution) : QuorkitSolution(), data(std::move(solution)) {
    outcome = static_cast<std::int32_t>(data.refusal);
    vertex = data.refusedVertex;
    vertexCount = toIndex(data.field.size());
    triangleCount = toIndex(data.mesh.triangles.size() / 3);
    vertices = data.mesh.vertices.data();
    triangles = data.mesh.triangles.data();
    triangleOrigins = data.mesh.triangleOrigins.data();
    vertexOrigins = data.mesh.vertexOrigins.data();
    field = data.field.data();
    error = data.error;
    tolerance = data.tolerance;
    isReached = data.isReached ? 1 : 0;
    rounds = data.rounds;
    jumpCount = toIndex(data.jumps.size());
    jumps = data.jumps.data();
    jumpRadius = data.jumpRadius;
  }
  Solution data;
};
static_assert(static_cast<int>(Refusal::kIsolatedVertex) == QUORKIT_ISOLATED_VERTEX &&
              static_cast<int>(Refusal::kUnprescribed) == QUORKIT_UNPRESCRIBED &&
              static_cast<int>(Refusal::kNotSolvable) == QUORKIT_NOT_SOLVABLE);

}  // namespace quorkit
