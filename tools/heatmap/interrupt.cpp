#include "interrupt.h"

#include <csignal>

namespace heatmap {
namespace {

volatile std::sig_atomic_t wasInterrupted = 0;

extern "C" void keepInMind(int signal) {
  wasInterrupted = 1;
  std::signal(signal, SIG_DFL);
}

}  // namespace

void watchForInterrupt() {
  std::signal(SIGINT, keepInMind);
}

bool isInterrupted() {
  return wasInterrupted != 0;
}

void stopIfInterrupted() {
  if (isInterrupted()) {
    throw Interrupted();
  }
}

}  // namespace heatmap
