// Points that a fast weld might get wrong.
#pragma once

#include "mesh.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace test {

using Random = std::mt19937_64;

inline double uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

inline int below(Random& random, int limit) {
  return std::uniform_int_distribution<int>(0, limit - 1)(random);
}

/// One kind of nasty input: points, and the tolerance that makes them nasty.
struct Nasty {
  const char* name;
  std::vector<double> (*points)(Random&, int count, double& tolerance);
};

inline const Nasty kNasty[] = {
    {"cloud",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -6, 1));
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(uniform(random, 0, 1));
       }
       return points;
     }},
    {"pairs a rounding step around the tolerance",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -3, 3));
       std::vector<double> points;
       for (int i = 0; i < count; i += 2) {
         double p[3];
         double q[3];
         double d[3];
         double length = 0;
         for (int axis = 0; axis < 3; ++axis) {
           p[axis] = uniform(random, -20, 20) * tolerance;
           d[axis] = uniform(random, -1, 1);
           length += d[axis] * d[axis];
         }
         for (int axis = 0; axis < 3; ++axis) {
           q[axis] = p[axis] + d[axis] / std::sqrt(length) * tolerance;
           for (int steps = below(random, 4); steps > 0; --steps) {
             q[axis] = std::nextafter(q[axis], below(random, 2) != 0 ? 1e9 : -1e9);
           }
         }
         points.insert(points.end(), p, p + 3);
         points.insert(points.end(), q, q + 3);
       }
       return points;
     }},
    {"lattice at exactly the tolerance, or a step less or more",
     [](Random& random, int count, double& tolerance) {
       const double spacing = std::ldexp(1.0, below(random, 9) - 4);
       const double tolerances[] = {spacing, std::nextafter(spacing, 0),
                                    std::nextafter(spacing, 9e9), spacing * std::sqrt(2.0),
                                    spacing * std::sqrt(3.0)};
       tolerance = tolerances[below(random, 5)];
       const double origin = below(random, 2) != 0 ? 0.1 : 1e6;
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(origin + spacing * below(random, 6));
       }
       return points;
     }},
    {"denormals",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -375, -368));  // squares underflow to a few units
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(uniform(random, -3, 3) * tolerance);
       }
       return points;
     }},
    {"magnitudes from 1e-320 to 1e300",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::pow(10.0, uniform(random, -160, 200));
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(std::pow(10.0, uniform(random, -320, 300)) * (below(random, 2) - 0.5));
       }
       return points;
     }},
    {"finite points among others",
     [](Random& random, int count, double& tolerance) {
       tolerance = 0.2;
       const double odd[] = {kNaN, kInfinity, -kInfinity, 1e308, 0.0, -0.0};
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(below(random, 12) == 0 ? odd[below(random, 6)] : uniform(random, 0, 1));
       }
       return points;
     }},
    {"few distinct points, some of them not finite",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::exp(uniform(random, -8, 1));
       const double odd[] = {kNaN, kInfinity, -kInfinity, 0.0, -0.0};
       std::vector<double> distinct;
       for (int i = 0; i < 3 * 9; ++i) {
         distinct.push_back(below(random, 9) == 0 ? odd[below(random, 5)] : uniform(random, 0, 1));
       }
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         const double* p = distinct.data() + std::ptrdiff_t{3} * below(random, 9);
         points.insert(points.end(), p, p + 3);
       }
       return points;
     }},
    {"two dense clusters just out of reach, and outliers",
     [](Random& random, int count, double& tolerance) {
       tolerance = 1;
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         const double side = below(random, 2);
         points.insert(points.end(), {side * (1 + 1e-3) + uniform(random, -5e-4, 5e-4),
                                      uniform(random, 0, 1e-3), uniform(random, 0, 1e-3)});
       }
       points[below(random, count) * std::size_t{3}] = 1e12;
       return points;
     }},
    {"geometric sequence towards a point",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::pow(2.0, uniform(random, -60, 0));
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         points.insert(points.end(), {std::pow(1.5, -i % 700), 0, below(random, 2) * 1e-9});
       }
       return points;
     }},
    {"beside the walls between cells of 64 tolerances, equal points among them",
     [](Random& random, int count, double& tolerance) {
       tolerance = std::ldexp(uniform(random, 1, 2), below(random, 40) - 20);
       const double offset = below(random, 2) * 4096 * tolerance;
       std::vector<double> points;
       for (int i = 0; i < count; ++i) {
         for (int axis = 0; axis < 3; ++axis) {
           const bool again = i > 0 && below(random, 4) != 0;
           const double wall = (below(random, 3) - 1.5) * 64 * tolerance + offset;
           points.push_back(again ? points[points.size() - 3]
                                  : wall + uniform(random, -1.2, 1.2) * tolerance);
         }
       }
       return points;
     }},
    {"small triangles far from the origin",
     [](Random& random, int count, double& tolerance) {
       tolerance = 1e-9;
       const double origin = std::pow(10.0, below(random, 10));
       std::vector<double> points;
       for (int i = 0; i < 3 * count; ++i) {
         points.push_back(origin + below(random, 4) + (below(random, 3) - 1) * 0.9e-9);
       }
       return points;
     }},
};

}  // namespace test
