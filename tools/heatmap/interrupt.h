// Ctrl-C: the work is stopped where it can be, and nothing is left half written.
#pragma once

#include <stdexcept>

namespace heatmap {

struct Interrupted : std::runtime_error {
  Interrupted() : std::runtime_error("stopped; nothing was written") {}
};

// From now on the first Ctrl-C is kept in mind, and a second one ends the program at once.
void watchForInterrupt();

bool isInterrupted();

// Throws Interrupted if there was one. For the places between stages.
void stopIfInterrupted();

}  // namespace heatmap
