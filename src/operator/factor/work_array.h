// Uninitialised memory for numbers, aligned to cache lines.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace quor {

/// An array of doubles that nobody has written yet: memory that is never used costs nothing.
class WorkArray {
 public:
  /// Throws std::bad_alloc.
  explicit WorkArray(std::ptrdiff_t count)
      : size_(count),
        data_(static_cast<double*>(
            ::operator new(static_cast<std::size_t>(count) * sizeof(double), kLine))) {}
  double* data() const { return data_.get(); }
  std::ptrdiff_t size() const { return size_; }

 private:
  static constexpr std::align_val_t kLine{64};
  struct Release {
    void operator()(double* data) const { ::operator delete(data, kLine); }
  };
  std::ptrdiff_t size_;
  std::unique_ptr<double, Release> data_;
};

}  // namespace quor
