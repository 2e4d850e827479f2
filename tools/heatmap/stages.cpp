#include "stages.h"

#include <cmath>
#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#define QUOR_IS_TERMINAL(file) (_isatty(_fileno(file)) != 0)
#else
#include <unistd.h>
#define QUOR_IS_TERMINAL(file) (isatty(fileno(file)) != 0)
#endif

namespace heatmap {

Stages::Stages() : isTerminal_(QUOR_IS_TERMINAL(stdout)) {}

Stages::~Stages() {
  if (name_ != nullptr) {
    std::printf("\n");
    std::fflush(stdout);
  }
  showWarnings();
}

void Stages::begin(const char* name) {
  name_ = name;
  isBarShown_ = false;
  begin_ = Clock::now();
  std::printf("%-7s ", name);
  std::fflush(stdout);
}

void Stages::advance(double fraction) {
  constexpr double kPatience = 2.0;  // seconds
  const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
  if (!isTerminal_ || seconds < kPatience || !(fraction > 0.0)) {
    return;
  }
  constexpr int kWidth = 40;
  const std::string done(static_cast<std::size_t>(std::lround(kWidth * fraction)), '#');
  std::printf("\r%-7s [%-*s] %3.0f %%, %.0f s left  ", name_, kWidth, done.c_str(),
              100.0 * fraction, std::ceil(seconds / fraction - seconds));
  std::fflush(stdout);
  isBarShown_ = true;
}

void Stages::end(const std::string& result) {
  const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
  if (isBarShown_) {
    std::printf("\r%-7s ", name_);
  }
  std::printf("%-64s %8.1f ms\n", result.c_str(), 1000.0 * seconds);
  std::fflush(stdout);
  name_ = nullptr;
  showWarnings();
}

void Stages::warn(const std::string& warning) {
  warnings_.push_back(warning);
  if (name_ == nullptr) {
    showWarnings();
  }
}

void Stages::showWarnings() {
  for (const std::string& warning : warnings_) {
    std::fprintf(stderr, "heatmap: warning: %s\n", warning.c_str());
  }
  warnings_.clear();
}

}  // namespace heatmap
