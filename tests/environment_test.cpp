// What a host may have changed in its process: the floating-point environment, the locales, and
// what else is loaded.

#include "support/handle.h"
#include "support/nasty_points.h"
#include "support/temp_directory.h"
#include "support/weld_oracle.h"

#include <dlfcn.h>

#include <cfenv>
#include <clocale>
#include <locale>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

/// Solves a small system with an Eigen of its own (other_eigen.cpp).
double solveWithOtherEigen(const std::function<void()>& inBetween);

using namespace test;

namespace {

Welded weld(const Mesh& soup, double tolerance) {
  Welded welded{99, std::vector<double>(soup.vertices.size()),
                std::vector<std::int32_t>(soup.triangles.size()),
                std::vector<std::int32_t>(std::size_t(soup.n()))};
  std::int32_t n = 0;
  std::int32_t m = 0;
  welded.result = quorWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                           welded.vertices.data(), welded.triangles.data(), welded.map.data(), &n,
                           &m, tolerance);
  welded.vertices.resize(3 * std::size_t(n));
  welded.triangles.resize(3 * std::size_t(m));
  return welded;
}

/// The field of a bumpy mesh and the lines of its file after the first.
struct Solved {
  std::vector<double> field;
  std::string text;
};

Solved solveAndWrite(const Mesh& mesh, int side) {
  const TempDirectory directory;
  const Handle handle = build(mesh, tagEnds(side, side));
  Solved solved;
  std::vector<double> values(std::size_t(mesh.n()));
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i] = double(i % 7);
  }
  solved.field = solve(handle, values);
  StatusCode status = 99;
  quorsolvePTagged(handle.get(), values.data(), values.data(), solved.field.data(), &status);
  wobj(handle.get(), solved.field.data(), (directory / "e").c_str());
  solved.text = readFile(directory / "e.obj");
  solved.text.erase(0, solved.text.find('\n'));
  return solved;
}

/// Puts the environment back, so that a failing test does not spoil the others.
struct KeepEnvironment {
  std::fenv_t environment{};
  KeepEnvironment() { std::fegetenv(&environment); }
  ~KeepEnvironment() { std::fesetenv(&environment); }
};

/// The largest difference, as a share of the largest value.
double relativeDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double difference = 0;
  double size = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference = std::max(difference, std::abs(a[i] - b[i]));
    size = std::max(size, std::abs(a[i]));
  }
  return difference / size;
}

TEST(Environment, OtherRoundingChangesRoundingOnly) {
  const KeepEnvironment keep;
  const Mesh mesh = bumpyMesh(90, 90, 4);
  const std::vector<double> nearest = solveAndWrite(mesh, 90).field;
  for (const int rounding : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    Random random(50);
    for (const Nasty& nasty : kNasty) {
      for (int round = 0; round < 60; ++round) {
        std::fesetround(FE_TONEAREST);
        double tolerance = 0;
        const Mesh soup{nasty.points(random, round % 10 == 0 ? 700 : 60, tolerance), {}};
        std::fesetround(rounding);
        const Welded welded = weld(soup, tolerance);
        if (rounding ==
            FE_TOWARDZERO) {  // p - q is -(q - p): the rule is the same either way round
          ASSERT_TRUE(same(welded, bruteForceWeld(soup, tolerance))) << nasty.name << " " << round;
        } else {
          ASSERT_EQ(welded.map[0], 0);
          ASSERT_LE(welded.vertices.size(), soup.vertices.size());
        }
      }
    }
    std::fesetround(rounding);
    const std::vector<double> field = solveAndWrite(mesh, 90).field;
    std::fesetround(FE_TONEAREST);
    EXPECT_LT(relativeDifference(field, nearest), 1e-10);
    EXPECT_FALSE(sameBits(field, nearest)) << "the mode had no effect";
  }
}

#if defined(__SSE2__)
TEST(Environment, FlushToZeroBreaksNothing) {
  const KeepEnvironment keep;
  const Mesh mesh = bumpyMesh(90, 90, 4);
  const std::vector<double> expected = solveAndWrite(mesh, 90).field;
  Random random(51);
  for (const Nasty& nasty : kNasty) {
    for (int round = 0; round < 60; ++round) {
      double tolerance = 0;
      const Mesh soup{nasty.points(random, round % 10 == 0 ? 700 : 60, tolerance), {}};
      _mm_setcsr(_mm_getcsr() | 0x8040U);  // FTZ and DAZ
      const Welded flushed = weld(soup, tolerance);
      const Welded bruteForce = bruteForceWeld(soup, tolerance);
      _mm_setcsr(_mm_getcsr() & ~0x8040U);
      ASSERT_TRUE(same(flushed, bruteForce)) << nasty.name << " " << round;
    }
  }
  _mm_setcsr(_mm_getcsr() | 0x8040U);
  const std::vector<double> field = solveAndWrite(mesh, 90).field;
  _mm_setcsr(_mm_getcsr() & ~0x8040U);
  EXPECT_TRUE(sameBits(field, expected));  // nothing here is as small as that
}
#endif

#if defined(__GLIBC__) && defined(__x86_64__)
TEST(Environment, NoFunctionTrapsOnValidInput) {
  const Mesh mesh = bumpyMesh(90, 90, 4);
  const Mesh soup = soupOf(mesh);
  const Solved expected = solveAndWrite(mesh, 90);
  Mesh shifted = soup;
  for (double& coordinate : shifted.vertices) {
    coordinate = 1e6 + 1e3 * coordinate;
  }
  const KeepEnvironment keep;
  feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
  for (const double tolerance : {0.0, 1e-160, 1e-9, 0.011, 0.1, 1e3, kInfinity}) {
    EXPECT_EQ(weld(soup, tolerance).result, 0);
    EXPECT_EQ(weld(mesh, tolerance).result, 0);
    EXPECT_EQ(weld(shifted, tolerance).result, 0);
  }
  EXPECT_EQ(solveAndWrite(mesh, 90).text, expected.text);
  for (std::int32_t value = -1; value < 65535; ++value) {
    float x = 0;
    float y = 0;
    float z = 0;
    encode_integer_to_sphere(value, &x, &y, &z);
    EXPECT_EQ(decode_integer_from_sphere(x, y, z), value);
  }
}
#endif

TEST(Environment, TheGlobalLocaleGoesIntoTheFilesAndNowhereElse) {
  struct German : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  struct Restore {
    ~Restore() { std::locale::global(std::locale::classic()); }
  } restore;
  const Mesh mesh = bumpyMesh(40, 40, 4);
  const Solved expected = solveAndWrite(mesh, 40);
  std::locale::global(std::locale(std::locale::classic(), new German));
  const Solved solved = solveAndWrite(mesh, 40);
  EXPECT_TRUE(sameBits(solved.field, expected.field));
  EXPECT_NE(solved.text.find("\nf 1.000/1.000 "), std::string::npos);
  EXPECT_NE(solved.text.find(" 0.5\n"), std::string::npos);  // a text, not a number
  EXPECT_EQ(solved.text.find("\nv 0."), std::string::npos);
}

TEST(Environment, TheLocaleOfCHasNoInfluence) {
  const TempDirectory directory;
  std::ofstream(directory / "comma.src") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                            "grouping 3;3\nEND LC_NUMERIC\n";
  const std::string command = "localedef -c -i '" + (directory / "comma.src") + "' '" +
                              (directory / "comma") + "' >/dev/null 2>&1";
  static_cast<void>(std::system(command.c_str()));  // complains about what is missing
  setenv("LOCPATH", (directory / "").c_str(), 1);
  const Solved expected = solveAndWrite(bumpyMesh(40, 40, 4), 40);
  const bool isSet = std::setlocale(LC_ALL, "comma") != nullptr;
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%.1f", 0.5);
  const Solved solved = solveAndWrite(bumpyMesh(40, 40, 4), 40);
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
  if (!isSet) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_STREQ(text.data(), "0,5");
  EXPECT_EQ(solved.text, expected.text);
  EXPECT_TRUE(sameBits(solved.field, expected.field));
}

TEST(Environment, AnotherEigenOfOtherAlignment) {
  const Mesh mesh = bumpyMesh(90, 90, 4);
  const std::vector<double> expected = solveAndWrite(mesh, 90).field;
  double residual = 1;
  residual =
      solveWithOtherEigen([&] { EXPECT_TRUE(sameBits(solveAndWrite(mesh, 90).field, expected)); });
  EXPECT_LT(residual, 1e-10);
}

TEST(Environment, LoadedTwice) {
  // Each copy makes a handle, the other one works meanwhile, and each frees its own.
  const TempDirectory directory;
  struct Copy {
    void* library = nullptr;
    void* handle = nullptr;
  } copies[2];
  const Mesh mesh = bumpyMesh(40, 40, 1);
  const std::vector<std::int32_t> tags = tagEnds(40, 40);
  const std::vector<double> values(tags.size(), 2.5);
  const std::vector<double> expected = solve(build(mesh, tags), values);
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 2; ++i) {
      const std::string file = directory / std::to_string(i);
      std::filesystem::copy_file(QUOR_LIBRARY, file,
                                 std::filesystem::copy_options::overwrite_existing);
      copies[i].library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
      ASSERT_NE(copies[i].library, nullptr) << dlerror();
      const auto construct =
          reinterpret_cast<decltype(&quorctorTagged)>(dlsym(copies[i].library, "quorctorTagged"));
      ASSERT_NE(construct, &quorctorTagged);
      StatusCode status = 99;
      construct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                nullptr, &status, &copies[i].handle);
      EXPECT_EQ(status, 0U);
    }
    for (const Copy& copy : copies) {
      const auto use =
          reinterpret_cast<decltype(&quorsolveTagged)>(dlsym(copy.library, "quorsolveTagged"));
      const auto release = reinterpret_cast<decltype(&quorfree)>(dlsym(copy.library, "quorfree"));
      std::vector<double> field(values.size());
      StatusCode status = 99;
      use(copy.handle, values.data(), field.data(), &status);
      EXPECT_TRUE(sameBits(field, expected));
      release(copy.handle);
      dlclose(copy.library);
    }
  }
}

}  // namespace
