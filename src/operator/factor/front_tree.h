// The fronts in which supernodes are eliminated.
//
// Source: C. Ashcraft, R. Grimes, The influence of relaxed supernode partitions on the multifrontal
// method, ACM Trans. Math. Softw. 15 (1989).
#pragma once

#include "operator/factor/supernodes.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace quor {

/// A dense symmetric matrix in which some columns of L are eliminated: those of one or more
/// supernodes, a top one and descendants of it. Its rows are these columns and the shared rows of
/// the top supernode; of the descendants' shared rows there are no others.
struct Front {
  int top = 0;          ///< the supernode whose shared rows are left after the elimination
  int columns = 0;      ///< number of columns to eliminate
  int rows = 0;         ///< number of rows left
  int children = 0;     ///< number of fronts whose remainders this one takes in
  int memberBegin = 0;  ///< its supernodes are members[memberBegin .. memberEnd-1]
  int memberEnd = 0;

  int size() const { return columns + rows; }
  /// Floating-point operations of its elimination, in pairs of a product and a sum.
  double operations() const {
    const auto squares = [](double n) { return n * (n + 1) * (2 * n + 1) / 6; };  // 1 + 4 + ... n^2
    return squares(size()) - squares(rows);
  }
  /// Entries of the lower triangle of what is left.
  std::int64_t remainder() const { return std::int64_t{rows} * (rows + 1) / 2; }
};

/// All fronts, each behind its children, and the children's subtrees side by side.
struct FrontTree {
  std::vector<Front> fronts;
  Eigen::VectorXi members;        ///< the supernodes, by fronts
  int largestFront = 0;           ///< its number of rows
  std::int64_t largestStack = 0;  ///< entries of remainders that wait at the same time, at most
};

/// Groups supernodes into fronts: a front takes in a child as long as the zeros that this stores
/// and computes with stay few, the fewer the larger the front. Large fronts compute faster, small
/// ones cost more to set up than to compute.
FrontTree groupIntoFronts(const Supernodes& supernodes);

}  // namespace quor
