// How a triangle is divided when some of its sides are split.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorkit {

/// Parts of a triangle, of its orientation, in an order of their own. Their corners are numbered 0
/// to 2 for the triangle's own and 3 + e for the point that splits side e, which leads from corner
/// e to corner e + 1 modulo 3.
struct SplitPattern {
  std::size_t count = 0;
  std::array<std::array<std::uint8_t, 3>, 4> parts{};
};

/// For two split sides, the four corners besides the one between them: i and j, the ends of the
/// side that is not split, and the points p on the side from j and q on the side to i. The diagonal
/// of the quadrilateral i j p q is i-p or j-q.
struct Quadrilateral {
  std::size_t i, j, p, q;
};

/// @param sides  bit e: whether side e is split; two of the three
constexpr Quadrilateral quadrilateralOf(unsigned sides) {
  const std::size_t e = (sides & 1U) == 0 ? 0 : (sides & 2U) == 0 ? 1 : 2;
  return {e, (e + 1) % 3, 3 + (e + 1) % 3, 3 + (e + 2) % 3};
}

/// @param sides          bit e: whether side e is split, 0 .. 7
/// @param otherDiagonal  for two split sides: take the diagonal j-q rather than i-p
constexpr SplitPattern splitPattern(unsigned sides, bool otherDiagonal) {
  SplitPattern pattern;
  const auto add = [&pattern](std::size_t a, std::size_t b, std::size_t c) {
    auto& part = pattern.parts[pattern.count++];
    part[0] = static_cast<std::uint8_t>(a);
    part[1] = static_cast<std::uint8_t>(b);
    part[2] = static_cast<std::uint8_t>(c);
  };
  switch (sides) {
    case 0:
      add(0, 1, 2);
      break;
    case 1:
    case 2:
    case 4: {
      const std::size_t e = sides / 2;
      const std::size_t opposite = (e + 2) % 3;
      add(e, 3 + e, opposite);
      add(3 + e, (e + 1) % 3, opposite);
      break;
    }
    case 7:
      add(0, 3, 5);
      add(3, 1, 4);
      add(3, 4, 5);
      add(5, 4, 2);
      break;
    default: {
      const Quadrilateral quad = quadrilateralOf(sides);
      if (otherDiagonal) {
        add(quad.i, quad.j, quad.q);
        add(quad.j, quad.p, quad.q);
      } else {
        add(quad.i, quad.j, quad.p);
        add(quad.i, quad.p, quad.q);
      }
      add(quad.q, quad.p, (quad.j + 1) % 3);
    }
  }
  return pattern;
}

}  // namespace quorkit
