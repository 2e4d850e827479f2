// A mesh, a finer one of it, and the field on both: their difference shows the error.
#pragma once

#include "kit/measure.h"
#include "kit/mesh.h"
#include "kit/prescription.h"
#include "kit/problem.h"
#include "kit/singular_vertices.h"

#include "util/progress.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorkit {

/// A mesh with what is prescribed on it.
struct Level {
  MeshData mesh;  ///< triangleOrigins lead to the input
  Prescription prescription;

  MeshView view() const {
    return {toIndex(mesh.vertices.size() / 3), mesh.vertices.data(),
            toIndex(mesh.triangles.size() / 3), mesh.triangles.data()};
  }
};

/// Balls in which nothing is promised: around vertices where regions of different values meet.
struct Exemption {
  std::vector<Vec3> centers;
  double radius = 0.0;

  bool contains(Vec3 p) const;
};

/// The fields on a mesh and on a finer one, whose first vertices are those of the coarse one.
struct NestedFields {
  Level fine;
  std::vector<std::int32_t> coarseTriangles;  ///< per fine triangle the coarse one it is part of
  std::vector<double> field;                  ///< on the fine mesh
  std::vector<double> difference;  ///< per fine vertex: the field less the coarse one, interpolated
  std::vector<double> green;       ///< the response to a source where a coarse vertex differs most
  std::int32_t worstVertex = 0;    ///< that vertex
  bool isRegular = false;          ///< whether both systems could be solved
};

/// Splits every triangle in four, and those at singular vertices further, and solves on both meshes
/// with the weights of their intrinsic Delaunay triangulations.
///
/// Where the field is smooth, the error of the fine field is a third of the difference, since
/// elements half as long have a quarter of the error. At a singular vertex of exponent a it would be
/// 1 / (2^a - 1) of the difference, up to four times as much: there the triangles are halved so
/// often that it is a third as well.
/// Throws what quor::Factorization throws, std::bad_alloc, and what an observer of progress throws.
/// @param most     triangles of the fine mesh
/// @param exempt   places near which the difference does not count
/// @return nothing if the fine mesh would have more triangles
std::optional<NestedFields> solveNested(const Problem& problem, const Level& coarse,
                                        const std::vector<SingularVertex>& singular,
                                        std::int32_t most, const Exemption& exempt,
                                        const quor::Progress& progress);

}  // namespace quorkit
