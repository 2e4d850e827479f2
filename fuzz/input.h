// Turns the fuzzer's bytes into numbers worth trying.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace fuzz {

/// Makes the input a failure unless this holds.
/// @param what  is printed then
inline void require(bool holds, const std::string& what = {}) {
  if (!holds) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
  }
}

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), end_(data + size) {}

  bool isEmpty() const { return data_ == end_; }

  /// The next byte, 0 when all are used up.
  int byte() { return isEmpty() ? 0 : *data_++; }

  template <typename Value>
  Value raw() {
    Value value{};
    const std::size_t size = std::min(sizeof value, static_cast<std::size_t>(end_ - data_));
    std::memcpy(&value, data_, size);
    data_ += size;
    return value;
  }

  /// A double: mostly from a small lattice and a rounding step beside it, so that distances meet
  /// tolerances; sometimes a special value; sometimes any bit pattern.
  double coordinate() {
    const int kind = byte();
    const double lattice = byte() % 16 * 0.25;
    switch (kind % 8) {
      case 0:
        return raw<double>();
      case 1:
        return special(kind / 8);
      case 2:
        return std::nextafter(lattice, 100.0);
      case 3:
        return std::nextafter(lattice, -100.0);
      case 4:
        return std::ldexp(lattice, 40 * (kind / 8 - 16));
      default:
        return lattice;
    }
  }

  /// The coordinates of 1 to `most` vertices.
  std::vector<double> vertices(int most) {
    std::vector<double> coordinates(3 * static_cast<std::size_t>(1 + byte() % most));
    for (double& value : coordinates) {
      value = coordinate();
    }
    return coordinates;
  }

  /// The corners of triangles on n vertices.
  std::vector<std::int32_t> triangles(int count, int n) {
    std::vector<std::int32_t> corners(3 * static_cast<std::size_t>(count));
    for (std::int32_t& corner : corners) {
      corner = byte() % n;
    }
    return corners;
  }

 private:
  static double special(int which) {
    using Limits = std::numeric_limits<double>;
    const double values[] = {
        Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),  Limits::max(),
        -Limits::max(),     Limits::min(),       Limits::denorm_min(), -0.0};
    return values[which % 8];
  }

  const std::uint8_t* data_;
  const std::uint8_t* end_;
};

}  // namespace fuzz
