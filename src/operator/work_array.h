// Uninitialised memory for numbers, aligned to cache lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quor {

/// An array of doubles that nobody has written yet: memory that is never used costs nothing.
class WorkArray {
 public:
  /// Throws std::bad_alloc.
  explicit WorkArray(std::size_t count) : memory_(new double[count + kLine - 1]) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory_.get()) / sizeof(double);
    data_ = memory_.get() + (kLine - address % kLine) % kLine;
  }
  double* data() const { return data_; }

 private:
  static constexpr std::size_t kLine = 64 / sizeof(double);
  std::unique_ptr<double[]> memory_;
  double* data_;
};

}  // namespace quor
