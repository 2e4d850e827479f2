// Passes the progress of a construction on to a host.
#pragma once

#include "quorkit.h"
#include "util/progress.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace quorkit {

/// The host does not want the result any more.
class Cancelled : public std::exception {
 public:
  const char* what() const noexcept override { return "cancelled"; }
};

/// Calls the host's function, but not more often than a host needs to repaint. Throws Cancelled.
class ProgressReporter final : private quor::Observer {
 public:
  /// @param function  may be null
  ProgressReporter(QuorkitProgress function, void* context)
      : function_(function), context_(context) {}

  void begin() { call(); }
  void end() {
    fraction_ = 1.0;
    call();
  }
  quor::Progress whole() { return quor::Progress(function_ != nullptr ? this : nullptr); }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kBetweenCalls{5};

  void advanceTo(double fraction) override {
    fraction_ = std::clamp(fraction, fraction_, 1.0);  // sums of parts are rounded
    if (Clock::now() - lastCall_ >= kBetweenCalls) {
      call();
    }
  }

  void call() {
    if (function_ == nullptr) {
      return;
    }
    bool goesOn = false;
    try {
      goesOn = function_(fraction_, context_) == 0;
    } catch (...) {  // NOLINT(bugprone-empty-catch): not to be passed on through the library
    }
    if (!goesOn) {
      throw Cancelled();
    }
    lastCall_ = Clock::now();
  }

  QuorkitProgress function_;
  void* context_;
  double fraction_ = 0.0;
  Clock::time_point lastCall_{};
};

}  // namespace quorkit
