#include "soups/slow_soups.h"
#include "soups/soup_points.h"
#include "weld/hashing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>

namespace bench {
namespace {

using Word = std::uint64_t;

/// The factor whose product with an odd one is 1, by Newton's method.
constexpr Word inverse(Word odd) {
  Word x = odd;
  for (int k = 0; k < 6; ++k) {
    x *= 2 - odd * x;
  }
  return x;
}

constexpr Word kX = 0x9E3779B97F4A7C15U;
constexpr Word kY = 0xD6E8FEB86659FD93U;
constexpr Word kZ = 0xA0761D6478BD642FU;

Word folded(Word hash) {
  return hash ^ hash >> 32U;  // its own inverse
}

/// The word whose mixing into `before` gives `after`.
Word unmixed(Word before, Word after) {
  return folded(after) * inverse(kX) ^ before;
}

Word bits(double value) {
  Word word = 0;
  std::memcpy(&word, &value, sizeof word);
  return word;
}

double number(Word word) {
  double value = 0;
  std::memcpy(&value, &word, sizeof value);
  return value;
}

/// As many distinct points as can share a cell, or a hash, before the steps for `count` points
/// are used up.
std::int32_t crowdFor(std::int32_t count) {
  return static_cast<std::int32_t>(2 * std::sqrt(count));
}

/// Half of the points are one, which gives a budget of steps for as many; then comes a crowd in one
/// cell. Tolerance 1, so that cells are 64 wide.
std::vector<double> crowdedCell(std::int32_t count) {
  Random random(1);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count / 2; ++i) {
    append(points, {1000, 1000, 1000});
  }
  for (std::int32_t i = 0; i < crowdFor(count); ++i) {
    append(points, {uniform(random, -31, 31), uniform(random, -31, 31), uniform(random, -31, 31)});
  }
  return points;
}

Vector pointAt(const std::vector<double>& points, std::size_t i) {
  return {points[3 * i], points[3 * i + 1], points[3 * i + 2]};
}

Soup crowdedCellRepeated(std::int32_t count, double& tolerance) {
  tolerance = 1;
  std::vector<double> points = crowdedCell(count);
  const std::size_t first = points.size() / 3 - static_cast<std::size_t>(crowdFor(count));
  for (std::size_t i = first; points.size() < 3 * static_cast<std::size_t>(count); ++i) {
    append(points, pointAt(points, i));
  }
  return soupOfPoints(std::move(points));
}

/// Two points that share a place in the table of recent points drive each other out of it.
Soup crowdedCellAlternating(std::int32_t count, double& tolerance) {
  tolerance = 1;
  std::vector<double> points = crowdedCell(count);
  std::map<Word, std::size_t> atPlace;
  std::vector<Vector> pairs;
  for (auto i = static_cast<std::size_t>(count / 2); i < points.size() / 3; ++i) {
    const Vector p = pointAt(points, i);
    const auto halves = [](double c) { return bits(c) << 32U | bits(c) >> 32U; };
    const Word place =
        quor::sumOfMultiples(halves(p[0]), halves(p[1]), halves(p[2])) >> (64U - 14U);
    const auto [other, isFirst] = atPlace.try_emplace(place, i);
    if (!isFirst) {
      pairs.push_back(pointAt(points, other->second));
      pairs.push_back(p);
    }
  }
  for (std::size_t k = 0; points.size() < 3 * static_cast<std::size_t>(count); ++k) {
    // One pair a hundred times before the next.
    append(points, pairs.empty() ? Vector{} : pairs[(k / 200 * 2 + k % 2) % pairs.size()]);
  }
  return soupOfPoints(std::move(points));
}

/// Pairs of equal points, all of which have one hash in the search for equal points. Too far apart
/// for cells.
Soup equalHashes(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(2);
  std::vector<double> points;
  while (points.size() < 3 * static_cast<std::size_t>(count)) {
    const Vector p{uniform(random, 0, 1), uniform(random, 0, 1), 0};
    const Word xy = quor::mixHash(quor::mixHash(0, bits(p[0])), bits(p[1]));
    const double z = number(unmixed(xy, 0x123456789ABCDEF1U));
    if (std::isfinite(z)) {
      append(points, {p[0], p[1], z});
      append(points, {p[0], p[1], z});
    }
  }
  return soupOfPoints(std::move(points));
}

/// Small numbers y and z for which y * kY + z * kZ is the given word: those of a lattice that come
/// nearest to one solution.
class SmallFactors {
 public:
  SmallFactors() {
    // Euclid's algorithm on 2^64 and the slope, as far as the remainders are of the size of the
    // multiples that lead to them.
    Word before = slope_;
    Word remainder = (0 - slope_) % slope_;
    std::int64_t multiple = 1;
    std::int64_t next = -static_cast<std::int64_t>((0 - slope_) / slope_ + 1);
    while (remainder >> 32U != 0) {
      const Word quotient = before / remainder;
      before = std::exchange(remainder, before % remainder);
      multiple = std::exchange(next, multiple - static_cast<std::int64_t>(quotient) * next);
    }
    y_ = {static_cast<double>(multiple), static_cast<double>(next)};
    z_ = {static_cast<double>(before), static_cast<double>(remainder)};
  }

  std::array<double, 2> of(Word sum) const {
    const auto z = static_cast<std::int64_t>(sum * inverse(kZ));
    const double determinant = y_[0] * z_[1] - y_[1] * z_[0];
    const auto a =
        static_cast<std::int64_t>(std::round(-static_cast<double>(z) * y_[1] / determinant));
    const auto b =
        static_cast<std::int64_t>(std::round(static_cast<double>(z) * y_[0] / determinant));
    const auto combined = [&](const std::array<double, 2>& v) {
      return static_cast<Word>(a) * static_cast<Word>(static_cast<std::int64_t>(v[0])) +
             static_cast<Word>(b) * static_cast<Word>(static_cast<std::int64_t>(v[1]));
    };
    return {static_cast<double>(static_cast<std::int64_t>(0 - combined(y_))),
            static_cast<double>(static_cast<std::int64_t>(static_cast<Word>(z) - combined(z_)))};
  }

 private:
  Word slope_ = 0 - kY * inverse(kZ);  ///< y and slope * y give the sum 0
  std::array<double, 2> y_{};
  std::array<double, 2> z_{};
};

/// Pairs of equal points whose cells have one home and different tags, and go on in a 256th of the
/// table from each home.
Soup cellsOfOneHome(std::int32_t count, double& tolerance) {
  tolerance = 1.0 / 64;  // cells are 1 wide
  const SmallFactors factors;
  const Word origin = bits(0x1.8p52);
  std::vector<double> points;
  Word hash = 0x5A5A5A5A00000000U;
  for (Word x = 1; points.size() < 3 * static_cast<std::size_t>(count); ++x) {
    do {
      hash += 1 << 10U;
    } while (((hash * kX) >> 56U) != 0);
    // The sum that is mixed with its own upper half.
    const Word sum = folded(unmixed(0, hash));
    const auto [y, z] = factors.of(sum - origin * (kX + kY + kZ) - x * kX);
    for (int k = 0; k < 2; ++k) {
      append(points, {static_cast<double>(x), y, z});
    }
  }
  return soupOfPoints(std::move(points));
}

/// A point that is not a number, over and over, and its cell has the hash of a crowded one.
Soup nanInCrowdedCell(std::int32_t count, double& tolerance) {
  tolerance = 1;
  std::vector<double> points = crowdedCell(count);
  const Word origin = bits(0x1.8p52);
  double nan = 0;
  double y = 0;
  while (!std::isnan(nan) || (bits(nan) >> 51U & 1U) == 0) {
    y += 64;
    nan = number((origin * (kX + kY) - bits(y / 64 + 0x1.8p52) * kY) * inverse(kX));
  }
  while (points.size() < 3 * static_cast<std::size_t>(count)) {
    append(points, {nan, y, 0});
  }
  return soupOfPoints(std::move(points));
}

/// The same in the search for equal points.
Soup nanAmongEqualHashes(std::int32_t count, double& tolerance) {
  tolerance = 1;
  double ignored = 0;
  std::vector<double> points(3 * static_cast<std::size_t>(count / 2), 1e300);
  const Soup crowd = equalHashes(crowdFor(count), ignored);
  points.insert(points.end(), crowd.points.begin(), crowd.points.end());
  double x = 1;
  double nan = 0;
  while (!std::isnan(nan) || (bits(nan) >> 51U & 1U) == 0) {
    x += 1;
    nan = number(unmixed(quor::mixHash(quor::mixHash(0, bits(x)), 0), 0x123456789ABCDEF1U));
  }
  while (points.size() < 3 * static_cast<std::size_t>(count)) {
    append(points, {x, 0, nan});
  }
  return soupOfPoints(std::move(points));
}

/// Distinct points, and triangles whose corners have one sum, so that they start from one stretch
/// of the table, and go on in a 256th of it.
Soup trianglesOfOneHome(std::int32_t count, double& tolerance) {
  tolerance = 1e-9;
  Soup soup = harmlessSoup(Harmless::kDistinct, count);
  const std::size_t corners = soup.triangles.size();
  soup.triangles.clear();
  const auto vertices = static_cast<Word>(soup.pointCount());
  const Word sum = vertices * 3 / 2;
  const Word homes = sum * (~Word{0} / 3 / vertices);
  for (Word a = 0; soup.triangles.size() < corners && a < sum / 3; ++a) {
    for (Word b = a + 1; b < sum - a - b && soup.triangles.size() < corners; ++b) {
      const Word c = sum - a - b;
      const Word mixed = quor::mixHash(quor::mixHash(0, a << 32U | b), c);
      const Word hash = homes + (mixed >> 12U);
      if (c < vertices && (hash >> 5U) % 32 == 0 && (hash * kX) >> 56U == 0) {
        for (const Word corner : {a, b, c}) {
          soup.triangles.push_back(static_cast<std::int32_t>(corner));
        }
      }
    }
  }
  return soup;
}

/// Cells with as many points as just do not make the search in cells stop, in random order, with
/// just enough repeats, up to a crowd that makes it stop at the very end.
Soup cellsCrowdedAtLast(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(3);
  std::vector<double> points;
  const std::int32_t perCell = 12;
  const std::int32_t spread = count - 2 * crowdFor(count);
  for (std::int32_t i = 0; i < spread; ++i) {
    if (i % 16 == 15) {
      append(points, pointAt(points, points.size() / 3 - 1));
      continue;
    }
    const auto cell = static_cast<double>(random() % static_cast<Word>(spread / perCell + 1));
    append(points, {64 * cell + uniform(random, -30, 30), uniform(random, -30, 30),
                    uniform(random, -30, 30)});
  }
  while (points.size() < 3 * static_cast<std::size_t>(count)) {
    append(points, {uniform(random, -31, 31), uniform(random, -31, 31), uniform(random, -31, 31)});
  }
  return soupOfPoints(std::move(points));
}

}  // namespace

Soup harmlessSoup(Harmless kind, std::int32_t count) {
  if (kind == Harmless::kRepeated) {
    return planarGrid(static_cast<int>(std::sqrt(count / 6)));
  }
  Random random(9);
  std::vector<double> points;
  for (std::int32_t i = 0; i < 3 * count; ++i) {
    points.push_back(uniform(random, 0, 1));
  }
  return soupOfPoints(std::move(points));
}

const std::vector<SlowSoup>& soupsSlowInTables() {
  static const std::vector<SlowSoup> soups = {
      {"a crowded cell, then repeats of its points", Harmless::kRepeated, crowdedCellRepeated},
      {"the same, repeats that miss the table of recent points", Harmless::kRepeated,
       crowdedCellAlternating},
      {"cells in random order, crowded at last", Harmless::kDistinct, cellsCrowdedAtLast},
      {"points of one hash, twice each", Harmless::kDistinct, equalHashes},
      {"cells of one home, with different tags", Harmless::kDistinct, cellsOfOneHome},
      {"triangles of one home", Harmless::kDistinct, trianglesOfOneHome},
      {"a NaN that leads to a crowded cell", Harmless::kRepeated, nanInCrowdedCell},
      {"a NaN with the hash of many points", Harmless::kRepeated, nanAmongEqualHashes},
  };
  return soups;
}

}  // namespace bench
