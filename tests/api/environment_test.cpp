// What a host may have changed in its process: the floating-point environment, the locales, and
// what else is loaded.

#include "support/handle.h"
#include "support/nasty_points.h"
#include "support/numeric_locale.h"
#include "support/temp_directory.h"
#include "support/weld_oracle.h"

#include <algorithm>
#include <cfenv>
#include <locale>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

/// Solves a small system with an Eigen of its own (other_eigen.cpp).
double solveWithOtherEigen(const std::function<void()>& inBetween);

using namespace test;

namespace {

struct Solved {
  std::vector<double> field;
  std::string text;  ///< of the OBJ file, from the second line on
};

Solved solveAndWrite(const Mesh& mesh) {
  const TempDirectory directory;
  std::vector<std::int32_t> tags(std::size_t(mesh.n()), 0);
  tags.front() = tags.back() = 1;
  const Handle handle = build(mesh, tags);
  Solved solved{std::vector<double>(tags.size()), {}};
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), mesh.vertices.data(), mesh.vertices.data(), solved.field.data(),
                   &status);
  wobj(handle.get(), solved.field.data(), (directory / "e").c_str());
  solved.text = readFile(directory / "e.obj");
  solved.text.erase(0, solved.text.find('\n'));
  return solved;
}

/// Large enough for its factor to be computed in blocks.
const Mesh kMesh = bumpyMesh(90, 90, 4);

/// Puts the environment back, whatever happens.
struct KeepEnvironment {
  std::fenv_t environment{};
  KeepEnvironment() { std::fegetenv(&environment); }
  ~KeepEnvironment() { std::fesetenv(&environment); }
};

TEST(Environment, OtherArithmeticBreaksNothing) {
  struct Mode {
    const char* name;
    void (*set)();
    bool isSymmetric;  ///< p - q is -(q - p), so that the rule is the same either way round
    bool changesTheField;
  };
  const Mode modes[] = {
    {"upward", [] { std::fesetround(FE_UPWARD); }, false, true},
    {"downward", [] { std::fesetround(FE_DOWNWARD); }, false, true},
    {"toward zero", [] { std::fesetround(FE_TOWARDZERO); }, true, true},
#if defined(__SSE2__)
    {"flush to zero", [] { _mm_setcsr(_mm_getcsr() | 0x8040U); }, true, false},
#endif
  };
  const std::vector<double> usual = solveAndWrite(kMesh).field;
  const double size = -*std::min_element(usual.begin(), usual.end());
  for (const Mode& mode : modes) {
    Random random(50);
    for (const Nasty& nasty : kNasty) {
      for (int round = 0; round < 60; ++round) {
        double tolerance = 0;
        const Mesh soup{nasty.points(random, round % 10 == 0 ? 700 : 60, tolerance), {}};
        const KeepEnvironment keep;
        mode.set();
        const Welded weld = welded(soup, tolerance);
        ASSERT_TRUE(!mode.isSymmetric || same(weld, bruteForceWeld(soup, tolerance)))
            << mode.name << ", " << nasty.name << ", round " << round;
      }
    }
    const KeepEnvironment keep;
    mode.set();
    const std::vector<double> field = solveAndWrite(kMesh).field;
    EXPECT_EQ(sameBits(field, usual), !mode.changesTheField) << mode.name;
    for (std::size_t i = 0; i < field.size(); ++i) {
      ASSERT_NEAR(field[i], usual[i], 1e-9 * size) << mode.name;
    }
  }
}

#if defined(__GLIBC__) && defined(__x86_64__)
TEST(Environment, NoFunctionTrapsOnValidInput) {
  const Mesh soup = soupOf(kMesh);
  Mesh shifted = soup;
  for (double& coordinate : shifted.vertices) {
    coordinate = 1e6 + 1e3 * coordinate;
  }
  const Solved expected = solveAndWrite(kMesh);
  const KeepEnvironment keep;
  feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
  for (const double tolerance : {0.0, 1e-160, 1e-9, 0.011, 0.1, 1e3, kInfinity}) {
    for (const Mesh& mesh : {soup, kMesh, shifted}) {
      EXPECT_EQ(welded(mesh, tolerance).result, 0);
    }
  }
  // At the limits of what the header says is safe.
  Random random(51);
  for (const double tolerance :
       {0.0, 1e-162, 1e-160, 1e-156, 1e-150, 1.0, 1e150, 1e153, 1e154, kInfinity}) {
    for (const double size : {1e-300, 1e-154, 1.0, 1e150, 3e153}) {
      Mesh wide;
      for (int i = 0; i < 3 * 2000; ++i) {
        wide.vertices.push_back(i < 300 || below(random, 2) == 0 ? size * (2 * below(random, 2) - 1)
                                                                 : uniform(random, -1, 1) * size);
      }
      EXPECT_EQ(welded(wide, tolerance).result, 0);
      wide.vertices.resize(3);
      wide.vertices.insert(wide.vertices.end(), soup.vertices.begin(), soup.vertices.end());
      EXPECT_EQ(welded(wide, tolerance).result, 0);
    }
  }
  EXPECT_EQ(solveAndWrite(kMesh).text, expected.text);
  float x = 0;
  float y = 0;
  float z = 0;
  for (std::int32_t value = -1; value < 65535; ++value) {
    encode_integer_to_sphere(value, &x, &y, &z);
    EXPECT_EQ(decode_integer_from_sphere(x, y, z), value);
  }
}
#endif

TEST(Environment, TheGlobalLocaleGoesIntoTheFilesAndNowhereElse) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const Solved expected = solveAndWrite(kMesh);
  std::locale::global(std::locale(std::locale::classic(), new Comma));
  const Solved solved = solveAndWrite(kMesh);
  std::locale::global(std::locale::classic());
  EXPECT_TRUE(sameBits(solved.field, expected.field));
  EXPECT_NE(solved.text.find("\nf 1.000/1.000 "), std::string::npos);
  EXPECT_NE(solved.text.find(" 0.5\n"), std::string::npos);  // a text, not a number
  EXPECT_EQ(solved.text.find("\nv 0."), std::string::npos);
}

TEST(Environment, TheLocaleOfCHasNoInfluence) {
  const Solved expected = solveAndWrite(kMesh);
  const NumericLocale locale(",");
  if (NumericLocale::decimalPoint() != ",") {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  const Solved solved = solveAndWrite(kMesh);
  EXPECT_EQ(solved.text, expected.text);
  EXPECT_TRUE(sameBits(solved.field, expected.field));
}

TEST(Environment, AnotherEigenOfOtherAlignment) {
  const std::vector<double> expected = solveAndWrite(kMesh).field;
  const double residual =
      solveWithOtherEigen([&] { EXPECT_TRUE(sameBits(solveAndWrite(kMesh).field, expected)); });
  EXPECT_LT(residual, 1e-10);
}

}  // namespace
