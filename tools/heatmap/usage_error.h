// What is wrong with a command line.
#pragma once

#include <stdexcept>

namespace heatmap {

// The command line asks for something that cannot be.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace heatmap
