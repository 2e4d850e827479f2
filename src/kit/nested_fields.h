// A mesh, a finer one of it, and the field on both: their difference shows the error.
#pragma once

#include "kit/boundary_values.h"
#include "kit/measure.h"
#include "kit/mesh.h"
#include "kit/problem.h"

#include "util/progress.h"

#include <cstdint>
#include <vector>

namespace quorkit {

/// A mesh with what is prescribed on it.
struct Level {
  MeshData mesh;  ///< triangleOrigins lead to the input
  BoundaryValues values;

  MeshView view() const {
    return {toIndex(mesh.vertices.size() / 3), mesh.vertices.data(),
            toIndex(mesh.triangles.size() / 3), mesh.triangles.data()};
  }
};

/// Where nothing is promised: around vertices, and along edges, where regions of different values
/// meet.
struct Exemption {
  struct Segment {
    Vec3 from, to;  ///< one point if they are equal
  };
  std::vector<Segment> segments;
  double radius = 0.0;

  bool contains(Vec3 p) const;
};

/// The fields on a mesh and on a finer one, whose first vertices are those of the coarse one.
struct NestedFields {
  Level fine;
  std::vector<double> field;       ///< on the fine mesh
  std::vector<double> difference;  ///< per fine vertex: the field less the coarse one, interpolated
  std::vector<double> surplus;     ///< the field less itself on the coarse mesh, interpolated
  std::vector<double> green;       ///< the response to a source where a coarse vertex differs most
  std::int32_t worstVertex = 0;    ///< that vertex
  bool isRegular = false;          ///< whether both systems could be solved
};

/// Splits every triangle in four, and solves on both meshes with the weights of their intrinsic
/// Delaunay triangulations. Fine triangles 4t to 4t + 3 are the parts of coarse triangle t.
/// Throws what quor::Factorization throws, std::bad_alloc, and what an observer of progress throws.
/// @param exempt  places where the difference does not count
NestedFields solveNested(const Problem& problem, const Level& coarse, const Exemption& exempt,
                         const quor::Progress& progress);

}  // namespace quorkit
