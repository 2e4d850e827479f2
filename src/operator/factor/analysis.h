// What the pattern of a matrix decides about its factor, before any number is computed.
#pragma once

#include "operator/factor/front_tree.h"
#include "operator/factor/permuted_triangles.h"
#include "operator/factor/supernodes.h"

#include <Eigen/Core>

namespace quor {

/// The symbolic half of the factorization.
struct Analysis {
  Eigen::VectorXi parent;        ///< of each column in the elimination tree, -1 at a root
  Eigen::VectorXi columnCounts;  ///< entries of each column of L below the diagonal
  bool blocksPay = false;        ///< whether the numeric step is to work by fronts
  Supernodes supernodes;         ///< of L; none unless blocksPay
  FrontTree fronts;              ///< likewise
};

/// Analyzes a matrix that is in the order of elimination.
/// Throws std::length_error("vector") if L would have more than 2^31 - 1 entries, before anything
/// of that size is allocated; and std::bad_alloc.
Analysis analyze(const PermutedTriangles& matrix);

}  // namespace quor
