// Shows what the program is doing.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace heatmap {

// One line per stage: its name when it begins, then what it came to and how long it took. When a
// stage takes longer than two seconds on a terminal, the line shows meanwhile how far it is.
class Stages {
 public:
  Stages();
  // Ends a line that was begun, and shows its warnings.
  ~Stages();
  Stages(const Stages&) = delete;
  Stages& operator=(const Stages&) = delete;

  void begin(const char* name);
  // How much of the stage is done, 0 .. 1.
  void advance(double fraction);
  void end(const std::string& result);
  // Says on the standard error output what should be known and done: at once between stages, else
  // when the line of this one is complete.
  void warn(const std::string& warning);

 private:
  void showWarnings();

  using Clock = std::chrono::steady_clock;

  bool isTerminal_;
  const char* name_ = nullptr;  // null between stages
  bool isBarShown_ = false;
  std::vector<std::string> warnings_;  // of this stage
  Clock::time_point begin_;
};

}  // namespace heatmap
