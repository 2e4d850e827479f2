// What CAD users prescribe, on parts as CAD hosts draw them.
#pragma once

#include "within/part.h"

#include <string>
#include <vector>

namespace within {

struct Case {
  std::string name;
  std::string part;  ///< name of a file, or of a mesh that generated() makes
  std::vector<Region> regions;
  Where source;  ///< null for none
};

/// The cases of the table, in its order.
std::vector<Case> cases();

/// Parts that are made here: cylinders whose facets are twisted, as needles across the axis. Empty
/// if the name is not known.
Part generated(const std::string& name);

}  // namespace within
