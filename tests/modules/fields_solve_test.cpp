// Several columns solved at once: each must have the bits of its own solve.

#include "solve/fields_solve.h"
#include "api/solver_handle.h"
#include "operator/construct_tagged.h"
#include "solve/field_solve.h"
#include "support/mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

using namespace test;
using quor::SolverHandle;
using quor::VectorWidth;

namespace {

using Handle = std::unique_ptr<const SolverHandle>;

Handle build(const Mesh& mesh, const std::vector<std::int32_t>& tags) {
  return quor::constructTagged(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                               tags.data())
      .handle;
}

/// Two grids that share no vertex; `tags` are those of the first, the other one has its own ends.
Handle buildPair(int side) {
  Mesh mesh = bumpyMesh(side, side, 5);
  const Mesh one = mesh;
  std::vector<std::int32_t> tags = tagEnds(side, side);
  mesh.vertices.insert(mesh.vertices.end(), one.vertices.begin(), one.vertices.end());
  for (const std::int32_t corner : one.triangles) {
    mesh.triangles.push_back(corner + one.n());
  }
  const std::vector<std::int32_t> ends = tags;
  tags.insert(tags.end(), ends.begin(), ends.end());
  return build(mesh, tags);
}

/// Columns that are 0, -0, not finite or ordinary, everywhere or at a few vertices: which rows are
/// 0 during a substitution then differs from column to column.
std::vector<double> columnsOf(std::size_t n, std::size_t columns, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> values(n * columns);
  for (std::size_t k = 0; k < columns; ++k) {
    const auto column = values.begin() + std::ptrdiff_t(k * n);
    const auto kind = random() % 8;
    std::fill_n(column, n, kind % 2 == 0 ? 0.0 : -0.0);
    const double special = kind == 6 ? kNaN : kind == 7 ? -kInfinity : 1.5;
    const std::size_t few = kind < 2 ? 0 : kind < 4 ? n : 1 + random() % 5;
    for (std::size_t i = 0; i < few; ++i) {
      column[std::ptrdiff_t(few == n ? i : random() % n)] =
          special * (std::ldexp(double(random()), -32) - 0.5);
    }
  }
  return values;
}

bool sameNumbers(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
    return bitsOf(x) == bitsOf(y) || (std::isnan(x) && std::isnan(y));
  });
}

std::vector<VectorWidth> widths() {
  std::vector<VectorWidth> all;
  for (const VectorWidth width : {VectorWidth::two, VectorWidth::four}) {
    if (width <= quor::widestVectors()) {
      all.push_back(width);
    }
  }
  return all;
}

TEST(FieldsSolve, GivesEachColumnTheBitsOfItsOwnSolve) {
  struct Case {
    std::string what;
    Handle handle;
    bool isBlocked;
  };
  const Mesh triangle{{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};
  const Mesh tangled = tangledMesh(140, 900, 2);
  std::vector<std::int32_t> few(140, 0);
  few[3] = 1;
  Mesh unsound = bumpyMesh(85, 85, 4);
  unsound.vertices[3 * 4000] = kInfinity;
  std::vector<Case> cases;
  cases.push_back({"small", build(bumpyMesh(9, 9, 4), tagEnds(9, 9)), false});
  cases.push_back({"large", build(bumpyMesh(85, 85, 4), tagEnds(85, 85)), true});
  cases.push_back({"in two parts", buildPair(70), true});
  cases.push_back({"nearly full", build(tangled, few), false});
  cases.push_back({"not finite", build(unsound, tagEnds(85, 85)), false});
  cases.push_back({"all prescribed", build(triangle, {1, 2, 3}), false});
  cases.push_back({"none prescribed, not factorized", build(triangle, {0, 0, 0}), false});
  for (const Case& c : cases) {
    EXPECT_EQ(c.handle->factorFF->isBlocked(), c.isBlocked) << c.what;
    const auto n = std::size_t(c.handle->vertexCount);
    for (const std::size_t columns : {0, 1, 2, 19}) {
      const std::vector<double> values = columnsOf(n, columns, unsigned(columns));
      const std::vector<double> sources = columnsOf(n, columns, unsigned(columns) + 100);
      for (const double* const source : {sources.data(), static_cast<const double*>(nullptr)}) {
        std::vector<double> expected(values.size());
        for (std::size_t k = 0; k < columns; ++k) {
          quor::solveField(*c.handle, values.data() + k * n,
                           source != nullptr ? source + k * n : nullptr, expected.data() + k * n);
        }
        for (const VectorWidth width : widths()) {
          std::vector<double> fields(values.size(), 77);
          quor::solveFields(*c.handle, columns, values.data(), source, fields.data(), width);
          EXPECT_TRUE(sameNumbers(fields, expected))
              << c.what << ", " << columns << " columns, vectors " << int(width);
        }
      }
    }
  }
}

TEST(FieldsSolve, MayWriteOverWhatItReads) {
  const Handle handle = build(bumpyMesh(9, 9, 4), tagEnds(9, 9));
  const std::vector<double> values = columnsOf(81, 11, 1);
  const std::vector<double> sources = columnsOf(81, 11, 2);
  std::vector<double> expected(values.size());
  quor::solveFields(*handle, 11, values.data(), sources.data(), expected.data());
  std::vector<double> fields = values;
  quor::solveFields(*handle, 11, fields.data(), sources.data(), fields.data());
  EXPECT_TRUE(sameNumbers(fields, expected));
  fields = sources;
  quor::solveFields(*handle, 11, values.data(), fields.data(), fields.data());
  EXPECT_TRUE(sameNumbers(fields, expected));
}

}  // namespace
