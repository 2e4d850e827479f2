// Construction of a solver handle: partition, assembly, factorization.
#pragma once

#include "operator/mesh_check.h"
#include "util/progress.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quor {

struct SolverHandle;

/// The result of a construction. Who keeps one includes api/solver_handle.h, to release the handle.
struct Construction {
  MeshFault fault = MeshFault::none;
  std::uint32_t prescribedCount = 0;     ///< also when the mesh was rejected
  std::unique_ptr<SolverHandle> handle;  ///< null if there is a fault
};

/// Throws std::length_error("vector") for numbers of vertices or triangles without a place in
/// 32-bit indices.
void requireSizesFit(std::int32_t n, std::int32_t m);

/// Builds a handle from arrays in caller order; all of them are copied.
/// Throws std::length_error("vector") for sizes without a place in 32-bit indices, before reading
/// any array, and std::bad_alloc.
/// @param n,vertices   at least 1; 3n coordinates
/// @param m,triangles  at least 1; 3m corners in 0 .. n-1
/// @param tags         n tags
/// @param progress     is reported to during assembly and factorization
Construction constructTagged(std::int32_t n, const double* vertices, std::int32_t m,
                             const std::int32_t* triangles, const std::int32_t* tags,
                             const Progress& progress = {});

/// The part of the construction that works in solver order: checks the mesh, assembles the
/// stiffness matrix, keeps its free-free and free-prescribed blocks and factorizes the former. Its
/// name is fixed, as those of the exported functions are, though it is none of them.
/// @param n, prescribedCount     numbers of all and of prescribed vertices
/// @param coordinates,triangles  the mesh in solver order, moved into the handle
/// @param faultOut               receives why the mesh is rejected, if it is
/// @param handleOut              receives the handle (permutations and tags still empty), or null
void quogeommallocsur(std::int32_t n, std::uint32_t prescribedCount,
                      std::vector<double> coordinates, std::vector<std::int32_t> triangles,
                      MeshFault* faultOut, std::unique_ptr<SolverHandle>* handleOut,
                      const Progress& progress = {});

}  // namespace quor
