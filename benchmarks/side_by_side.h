// Measures several methods of doing one thing in turn, so that all of them meet the same machine.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

namespace bench {

/// Seconds of one call.
inline double seconds(const std::function<void()>& job) {
  const auto start = std::chrono::steady_clock::now();
  job();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Calls every job once to warm up, then all of them in turn, `rounds` times.
/// @param clear  called after every job, outside the time
/// @return the median seconds of each
inline std::vector<double> sideBySide(
    int rounds, const std::vector<std::function<void()>>& jobs,
    const std::function<void()>& clear = [] {}) {
  std::vector<std::vector<double>> times(jobs.size());
  for (const auto& job : jobs) {
    job();
    clear();
  }
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t k = 0; k < jobs.size(); ++k) {
      times[k].push_back(seconds(jobs[k]));
      clear();
    }
  }
  std::vector<double> medians;
  for (auto& of : times) {
    medians.push_back(median(std::move(of)));
  }
  return medians;
}

}  // namespace bench
