// Soups made to be slow to weld, with knowledge of the source.
#pragma once

#include "soups/soups.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// What a soup made to be slow is compared with: one of the same size that nobody made so.
enum class Harmless {
  kDistinct,  ///< points of a cube, all far from each other
  kRepeated,  ///< the soup of a planar grid
};

struct SlowSoup {
  std::string name;
  Harmless harmless;
  Soup (*make)(std::int32_t count, double& tolerance);  ///< of about `count` points
};

/// A soup of about `count` points, for a tolerance of 1e-9.
Soup harmlessSoup(Harmless kind, std::int32_t count);

/// Against the hash tables and what counts their steps.
const std::vector<SlowSoup>& soupsSlowInTables();

/// Against the tree: surfaces just out of reach of each other, and points that are hard to divide.
const std::vector<SlowSoup>& soupsSlowInTree();

/// Where nothing but asking every pair tells that none is near: N^2.
const std::vector<SlowSoup>& soupsSlowForever();

}  // namespace bench
