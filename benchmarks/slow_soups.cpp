#include "slow_soups.h"

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

using Random = std::mt19937_64;
using Vector = std::array<double, 3>;
using Word = std::uint64_t;

constexpr double kPi = 3.141592653589793;
constexpr double kBeyond = 1.0 + 1e-9;  ///< a distance just out of reach of a tolerance of 1

double uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

void append(std::vector<double>& points, const Vector& p) {
  points.insert(points.end(), p.begin(), p.end());
}

/// Turned so that no axis stays one.
Vector turned(const Vector& p) {
  const auto [x, y, z] = p;
  return {0.48 * x - 0.64 * y + 0.6 * z, 0.8 * x + 0.6 * y, -0.36 * x + 0.48 * y + 0.8 * z};
}

Vector onUnitSphere(Random& random) {
  const double z = uniform(random, -1, 1);
  const double angle = uniform(random, 0, 2 * kPi);
  const double r = std::sqrt(1 - z * z);
  return {r * std::cos(angle), r * std::sin(angle), z};
}

// --- Inverses of what hashes are made of.

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

// --- Points for the tables.

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
  for (std::size_t i = static_cast<std::size_t>(count / 2); i < points.size() / 3; ++i) {
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

// --- Points for the tree.

/// Half of the points in a ball, half on a sphere around it.
template <int kThousandths>
Soup ballInSphere(std::int32_t count, double& tolerance) {
  tolerance = 1;
  const double radius = kThousandths / 1000.0;
  Random random(4);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    Vector p = onUnitSphere(random);
    const double r = i % 2 == 0 ? radius * std::cbrt(uniform(random, 0, 1)) : radius + kBeyond;
    append(points, {r * p[0], r * p[1], r * p[2]});
  }
  return soupOfPoints(std::move(points));
}

/// The points from which the grid of the tree is made are far apart, all others in one voxel.
Soup oneVoxel(std::int32_t count, double& tolerance) {
  tolerance = 1e-12;
  Random random(5);
  std::vector<double> points;
  for (std::int32_t i = 0; i < 3 * count; ++i) {
    points.push_back(uniform(random, 0, 1e-6));
  }
  const std::size_t share = std::max<std::size_t>(1, static_cast<std::size_t>(count) / 1024);
  std::uint32_t noise = 1;
  for (std::size_t first = 0; first + share <= static_cast<std::size_t>(count); first += share) {
    noise = noise * 1664525U + 1013904223U;
    const std::size_t i = first + (std::uint64_t{noise} * share >> 32U);
    for (std::size_t k = 0; k < 3; ++k) {
      points[3 * i + k] = uniform(random, -1, 1);
    }
  }
  return soupOfPoints(std::move(points));
}

/// Ever finer towards one point, by a factor that leaves a third of the points on one side of each
/// half.
Soup everFiner(std::int32_t count, double& tolerance) {
  tolerance = 1e-150;
  Random random(6);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const double r = std::exp(uniform(random, -300, 0));
    append(points,
           {r * uniform(random, 0, 1), r * uniform(random, 0, 1), r * uniform(random, 0, 1)});
  }
  return soupOfPoints(std::move(points));
}

/// Dense balls, each with twelve points that are near to all of it and to nothing else.
Soup ballsWithSatellites(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(7);
  std::vector<double> points;
  const double golden = (1 + std::sqrt(5)) / 2;
  const double size = 0.999 / std::sqrt(1 + golden * golden);
  const std::int32_t perBall = std::max(64, count / 16);
  for (std::int32_t i = 0; i < count; ++i) {
    const double x = 8.0 * (i / perBall);
    const std::int32_t k = i % perBall;
    const double s = k % 2 == 0 ? size : -size;
    const double t = golden * (k / 2 % 2 == 0 ? size : -size);
    const Vector corner{s, t, 0};
    const auto shift = static_cast<std::size_t>(k / 4);
    append(points, k < 12
                       ? Vector{x + corner[shift], corner[(shift + 1) % 3], corner[(shift + 2) % 3]}
                       : Vector{x + uniform(random, 0, 1e-4), uniform(random, 0, 1e-4),
                                uniform(random, 0, 1e-4)});
  }
  return soupOfPoints(std::move(points));
}

// --- Surfaces just out of reach of a tolerance of 1.

/// @param surface  takes two numbers from 0 to 1, and which of two surfaces
template <typename Surface>
Soup twoSurfaces(std::int32_t count, double& tolerance, const Surface& surface) {
  tolerance = 1;
  Random random(8);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const double u = uniform(random, 0, 1);
    append(points, turned(surface(u, uniform(random, 0, 1), i % 2 == 0)));
  }
  return soupOfPoints(std::move(points));
}

template <int kThousandths>
Soup sheets(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double size = kThousandths / 1000.0;
    return Vector{size * u, size * v, isFirst ? 0 : kBeyond};
  });
}

template <int kThousandths>
Soup spheres(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double z = 2 * u - 1;
    const double inner = kThousandths / 1000.0;
    const double radius = isFirst ? inner : inner + kBeyond;
    const double r = radius * std::sqrt(1 - z * z);
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), radius * z};
  });
}

template <int kThousandths>
Soup ringAndDisc(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double disc = kThousandths / 1000.0;
    const double r = isFirst ? disc * std::sqrt(u) : disc + kBeyond;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), 0};
  });
}

template <int kThousandths>
Soup axisAndCylinder(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double r = isFirst ? 0 : kBeyond;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v), kThousandths / 1000.0 * u};
  });
}

Soup sixSpheres(std::int32_t count, double& tolerance) {
  tolerance = 1;
  Random random(10);
  std::vector<double> points;
  for (std::int32_t i = 0; i < count; ++i) {
    const Vector p = onUnitSphere(random);
    const double r = 0.1 + i % 6 * kBeyond;
    append(points, {r * p[0], r * p[1], r * p[2]});
  }
  return soupOfPoints(std::move(points));
}

/// Where coordinates are so large that a millionth of the tolerance is as near as points come.
Soup spheresFarAway(std::int32_t count, double& tolerance) {
  Soup soup = spheres<10>(count, tolerance);
  for (double& coordinate : soup.points) {
    coordinate = coordinate * (1 + 1e-6) + 1e8;
  }
  return soup;
}

Soup circleInTorus(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double tube = isFirst ? 0 : kBeyond;
    const double r = 1.5 + tube * std::cos(2 * kPi * v);
    return Vector{r * std::cos(2 * kPi * u), r * std::sin(2 * kPi * u),
                  tube * std::sin(2 * kPi * v)};
  });
}

/// All pairs of a point on the circle and one on the axis are out of reach by 1e-13.
Soup shortAxisAndCircle(std::int32_t count, double& tolerance) {
  return twoSurfaces(count, tolerance, [](double u, double v, bool isFirst) {
    const double r = isFirst ? 0 : 1 + 1e-13;
    return Vector{r * std::cos(2 * kPi * v), r * std::sin(2 * kPi * v),
                  isFirst ? 1e-7 * (u - 0.5) : 0};
  });
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

const std::vector<SlowSoup>& soupsSlowInTree() {
  static const std::vector<SlowSoup> soups = {
      {"all points in one voxel of the tree's order", Harmless::kDistinct, oneVoxel},
      {"ever finer towards a point, over 130 decades", Harmless::kDistinct, everFiner},
      {"dense balls, points on their own around them", Harmless::kDistinct, ballsWithSatellites},
      {"a ball of 0.001 tolerances in a sphere", Harmless::kDistinct, ballInSphere<1>},
      {"a ball of 0.01 tolerances in a sphere", Harmless::kDistinct, ballInSphere<10>},
      {"tilted sheets of 0.001 tolerances", Harmless::kDistinct, sheets<1>},
      {"tilted sheets of 1 tolerance", Harmless::kDistinct, sheets<1000>},
      {"tilted sheets of 100 tolerances", Harmless::kDistinct, sheets<100000>},
      {"spheres, the inner one of 0.01 tolerances", Harmless::kDistinct, spheres<10>},
      {"spheres, the inner one of 1 tolerance", Harmless::kDistinct, spheres<1000>},
      {"spheres, the inner one of 30 tolerances", Harmless::kDistinct, spheres<30000>},
      {"a ring and a disc of 0.01 tolerances", Harmless::kDistinct, ringAndDisc<10>},
      {"a ring and a disc of 1 tolerance", Harmless::kDistinct, ringAndDisc<1000>},
      {"an axis of 0.01 tolerances and a cylinder", Harmless::kDistinct, axisAndCylinder<10>},
      {"an axis of 1 tolerance and a cylinder", Harmless::kDistinct, axisAndCylinder<1000>},
      {"an axis of 30 tolerances and a cylinder", Harmless::kDistinct, axisAndCylinder<30000>},
      {"six spheres", Harmless::kDistinct, sixSpheres},
      {"spheres 1e8 tolerances from the origin", Harmless::kDistinct, spheresFarAway},
      {"a circle in a torus", Harmless::kDistinct, circleInTorus},
  };
  return soups;
}

const std::vector<SlowSoup>& soupsSlowForever() {
  static const std::vector<SlowSoup> soups = {
      {"an axis and a circle, out of reach by 1e-13", Harmless::kDistinct, shortAxisAndCircle},
  };
  return soups;
}

}  // namespace bench
