// The triangles around each vertex.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quor {

/// A range of corner numbers; kCornersAhead more can be read behind it.
struct VertexCorners {
  const std::int32_t* first;
  const std::int32_t* last;
  const std::int32_t* begin() const { return first; }
  const std::int32_t* end() const { return last; }
  std::size_t size() const { return static_cast<std::size_t>(last - first); }
};

/// How far ahead memory of a triangle is asked for: three or four vertices.
constexpr std::ptrdiff_t kCornersAhead = 24;

/// For every vertex the corners at which it stands, ascending, and so in the order of the
/// triangles.
class VertexTriangles {
 public:
  /// @param n          number of vertices
  /// @param triangles  3m corners in 0 .. n-1, 3m at most 2^31-1
  VertexTriangles(std::int32_t n, const std::vector<std::int32_t>& triangles);

  /// Corner number c is corner c % 3 of triangle c / 3.
  VertexCorners around(std::int32_t vertex) const {
    const auto v = static_cast<std::size_t>(vertex);
    return {corners_.data() + starts_[v], corners_.data() + starts_[v + 1]};
  }

 private:
  std::vector<std::int32_t> starts_;   ///< n+1 places in corners_
  std::vector<std::int32_t> corners_;  ///< 3m, and kCornersAhead zeros
};

}  // namespace quor
