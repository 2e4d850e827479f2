// Refinement by the letter of quorkit.h, and nothing else: a mesh to compare with, bit for bit.
#pragma once

#include "kit_mesh.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace test {

struct Refined {
  Mesh mesh;
  std::vector<std::int32_t> triangleOrigins;
  std::vector<std::int32_t> vertexOrigins;
};

class ExactRefinement {
 public:
  /// @param sizes  of the vertices, infinity for none; empty: none
  /// @return nothing if there are more triangles than `most`
  static std::optional<Refined> of(const Mesh& input, double longest,
                                   const std::vector<double>& sizes = {}, int most = 1 << 20) {
    ExactRefinement refinement(input, longest, sizes, most);
    for (std::int32_t t = 0; t < input.m(); ++t) {
      const std::int32_t* const c = input.triangles.data() + 3 * std::size_t(t);
      refinement.divide(c[0], c[1], c[2], t);
    }
    if (refinement.result_.mesh.m() > most) {
      return std::nullopt;
    }
    return std::move(refinement.result_);
  }

 private:
  ExactRefinement(const Mesh& input, double longest, const std::vector<double>& sizes, int most)
      : longest_(longest), most_(most) {
    result_.mesh.vertices = input.vertices;
    for (std::int32_t v = 0; v < input.n(); ++v) {
      sizes_.push_back(sizes.empty() ? longest : std::min(longest, sizes[std::size_t(v)]));
      result_.vertexOrigins.insert(result_.vertexOrigins.end(), {v, v});
    }
  }

  void divide(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t origin) {
    if (result_.mesh.m() > most_) {
      return;
    }
    const std::int32_t p = middleOf(a, b);
    const std::int32_t q = middleOf(b, c);
    const std::int32_t r = middleOf(c, a);
    if (p >= 0 && q >= 0 && r >= 0) {
      divide(a, p, r, origin);
      divide(p, b, q, origin);
      divide(p, q, r, origin);
      divide(r, q, c, origin);
    } else if (p < 0 && q < 0 && r < 0) {
      result_.mesh.triangles.insert(result_.mesh.triangles.end(), {a, b, c});
      result_.triangleOrigins.push_back(origin);
    } else if (q >= 0 && r >= 0) {
      divideTwoSides(a, b, c, q, r, origin);
    } else if (r >= 0 && p >= 0) {
      divideTwoSides(b, c, a, r, p, origin);
    } else if (p >= 0 && q >= 0) {
      divideTwoSides(c, a, b, p, q, origin);
    } else if (p >= 0) {
      divideOneSide(a, b, c, p, origin);
    } else if (q >= 0) {
      divideOneSide(b, c, a, q, origin);
    } else {
      divideOneSide(c, a, b, r, origin);
    }
  }

  void divideOneSide(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t p,
                     std::int32_t origin) {
    divide(a, p, c, origin);
    divide(p, b, c, origin);
  }

  void divideTwoSides(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t q,
                      std::int32_t r, std::int32_t origin) {
    if (squaredLength(result_.mesh, a, q) <= squaredLength(result_.mesh, b, r)) {
      divide(a, b, q, origin);
      divide(a, q, r, origin);
    } else {
      divide(a, b, r, origin);
      divide(b, q, r, origin);
    }
    divide(r, q, c, origin);
  }

  /// The vertex on the middle of an edge, -1 if it is not split.
  std::int32_t middleOf(std::int32_t a, std::int32_t b) {
    const auto x = pointOf(result_.mesh, a);
    const auto y = pointOf(result_.mesh, b);
    const double size = std::min(sizes_[std::size_t(a)], sizes_[std::size_t(b)]);
    std::array<double, 3> middle{};
    double largest = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      middle[axis] = 0.5 * x[axis] + 0.5 * y[axis];
      largest = std::max({largest, std::abs(x[axis]), std::abs(y[axis])});
    }
    const double least = std::max(size, 16 * std::ldexp(1.0, -52) * largest);
    const double squared = squaredLength(result_.mesh, a, b);
    if (!(squared > least * least) || middle == x || middle == y) {
      return -1;
    }
    const auto [place, isNew] = middles_.emplace(std::minmax(a, b), result_.mesh.n());
    if (isNew) {
      result_.mesh.vertices.insert(result_.mesh.vertices.end(), middle.begin(), middle.end());
      result_.vertexOrigins.insert(result_.vertexOrigins.end(), {std::min(a, b), std::max(a, b)});
      sizes_.push_back(std::min(longest_, size + 0.25 * std::sqrt(squared)));
    }
    return place->second;
  }

  double longest_;
  int most_;
  std::vector<double> sizes_;
  std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> middles_;
  Refined result_;
};

/// @return empty if the meshes are the same to the last bit, else where they differ
inline std::string differenceOf(const QuorkitMesh& made, const Refined& expected) {
  const auto n = std::ptrdiff_t(made.vertexCount);
  const auto m = std::ptrdiff_t(made.triangleCount);
  if (!sameBits({made.vertices, made.vertices + 3 * n}, expected.mesh.vertices)) {
    return "vertices";
  }
  if (std::vector<std::int32_t>(made.triangles, made.triangles + 3 * m) !=
      expected.mesh.triangles) {
    return "triangles";
  }
  if (std::vector<std::int32_t>(made.triangleOrigins, made.triangleOrigins + m) !=
      expected.triangleOrigins) {
    return "triangle origins";
  }
  if (std::vector<std::int32_t>(made.vertexOrigins, made.vertexOrigins + 2 * n) !=
      expected.vertexOrigins) {
    return "vertex origins";
  }
  return {};
}

}  // namespace test
