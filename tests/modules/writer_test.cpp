// wobj from outside: both files to the byte.

#include "export/line_writer.h"
#include "export/obj_writer.h"
#include "support/handle.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <sstream>
#include <stdexcept>

using namespace test;
namespace fs = std::filesystem;

namespace {

const char* const kMaterial =
    "newmtl Heat \n"
    "Kd 1 1 1             \n"
    "Ns 96.0784\t\t\t \n"
    "d 1\t\t\t\t\t \n"
    "illum 1\t\t\t\t \n"
    "Ka 0 0 0\t\t\t \n"
    "Ks 1 1 1\t\t\t \n"
    "map_Kd viridis.PNG\n";

class Writer : public testing::Test {
 protected:
  std::string base(const std::string& name) const { return directory_ / name; }

  /// The "vt" lines for a field over vertices in solver order, all prescribed.
  std::string textureLines(const std::vector<double>& field) const {
    Mesh mesh;
    for (std::size_t i = 0; i < field.size(); ++i) {
      mesh.vertices.insert(mesh.vertices.end(), {double(i), double(i * i), 1});
    }
    for (std::int32_t i = 0; i < mesh.n(); ++i) {
      mesh.triangles.insert(mesh.triangles.end(), {i, (i + 1) % mesh.n(), (i + 2) % mesh.n()});
    }
    const Handle handle = build(mesh, std::vector<std::int32_t>(field.size(), 1));
    wobj(handle.get(), field.data(), base("t").c_str());
    std::istringstream lines(readFile(base("t.obj")));
    std::string result;
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("vt ", 0) == 0) {
        result += line.substr(3) + "\n";
      }
    }
    return result;
  }

  TempDirectory directory_;
};

const Mesh kTriangle{{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};

TEST_F(Writer, NumbersLookAsAStreamPrintsThem) {
  std::vector<double> numbers{0.0,        -0.0,  1e5,       999999.5, 999999.4999,
                              1e6,        1e-4,  9.9999e-5, 0.1,      123456.5,
                              1234565.0,  1e300, -1e-300,   5e-324,   kInfinity,
                              -kInfinity, kNaN,  -kNaN,     2.5e-5};
  std::mt19937_64 random(7);
  for (int i = 0; i < 100000; ++i) {
    const std::uint64_t bits = random();
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    numbers.push_back(number);
    numbers.push_back(double(std::int64_t(bits) % 100000000) / 1e4);  // many end in a 5 to round
  }
  std::ostringstream expected;
  std::ofstream file(base("numbers"), std::ios::binary);
  quor::LineWriter lines(file);
  for (const double number : numbers) {
    expected << "n " << number << " " << std::int64_t(number > 0) * 4294967296 << std::endl;
    lines << "n " << number << " " << std::int64_t(number > 0) * 4294967296;
    lines.endLine();
  }
  EXPECT_EQ(readFile(base("numbers")), expected.str());
}

TEST_F(Writer, WritesBothFilesToTheByte) {
  const Handle handle = build(kTriangle, {1, 1, 1});
  const double field[] = {0, 2, 1};
  std::ofstream(base("a b.obj")) << std::string(5000, 'x');  // longer than what replaces it
  testing::internal::CaptureStderr();
  wobj(handle.get(), field, base("a b").c_str());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(readFile(base("a b.obj")), "mtllib " + base("a b") +
                                           ".mtl\n"
                                           "usemtl Heat\n"
                                           "v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                           "vt 1 0.5\nvt 0 0.5\nvt 0.5 0.5\n"
                                           "f 1/1 2/2 3/3\n");
  EXPECT_EQ(readFile(base("a b.mtl")), kMaterial);
}

TEST_F(Writer, FieldAndMeshAreInSolverOrder) {
  const Mesh square{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3}};
  const Handle handle = build(square, {0, 1, 0, 0});  // stored order 1 3 2 0
  const double field[] = {4, 3, 2, 0};
  wobj(handle.get(), field, base("s").c_str());
  EXPECT_EQ(readFile(base("s.obj")), "mtllib " + base("s") +
                                         ".mtl\n"
                                         "usemtl Heat\n"
                                         "v 1 0 0\nv 0 1 0\nv 1 1 0\nv 0 0 0\n"
                                         "vt 0 0.5\nvt 0.25 0.5\nvt 0.5 0.5\nvt 1 0.5\n"
                                         "f 4/4 1/1 3/3\nf 4/4 3/3 2/2\n");
}

TEST_F(Writer, SixSignificantDigits) {
  const Mesh mesh{{0.1234567, 1234567, 0.00001, -0.0, 1e-5, 123456, 999999.5, 1e300, -2.5e-310},
                  {0, 1, 2}};
  const Handle handle = build(mesh, {1, 1, 1});
  const double field[] = {0, 0.1, 0.3};
  wobj(handle.get(), field, base("d").c_str());
  const std::string text = readFile(base("d.obj"));
  EXPECT_NE(text.find("v 0.123457 1.23457e+06 1e-05\nv -0 1e-05 123456\nv 1e+06 1e+300 -2.5e-310\n"
                      "vt 1 0.5\nvt 0.666667 0.5\nvt 0 0.5\n"),
            std::string::npos)
      << text;
}

TEST_F(Writer, OrderOfOperationsInU) {
  EXPECT_EQ(textureLines({0, 49, 24.5}), "1 0.5\n1.11022e-16 0.5\n0.5 0.5\n");
  EXPECT_EQ(textureLines({0, 0.1, 0.05}), "1 0.5\n0 0.5\n0.5 0.5\n");
  EXPECT_EQ(textureLines({3, 0, 1.5}), "0 0.5\n1 0.5\n0.5 0.5\n");
}

TEST_F(Writer, ValuesWithoutARange) {
  std::ostringstream nan;  // the platform's text for 0 times infinity plus 1
  volatile double zero = 0;
  nan << zero * (1.0 / zero) + 1.0 << " 0.5\n";
  EXPECT_EQ(textureLines({5, 5, 5}), nan.str() + nan.str() + nan.str());

  // No comparison with NaN is true. First or last it is taken for an end of the range and spoils
  // all; in between it spoils itself, and may hide that its neighbour is the largest or the
  // smallest.
  struct Case {
    std::vector<double> field, u;
  };
  const Case cases[] = {
      {{kNaN, 1, 2, 3}, {kNaN, kNaN, kNaN, kNaN}},
      {{1, 2, 3, kNaN}, {kNaN, kNaN, kNaN, kNaN}},
      {{1, kNaN, 2, 3}, {1, kNaN, 0.5, 0}},
      {{3, 1, kNaN, 2}, {0, 1, kNaN, 0.5}},
      {{2, kNaN, kNaN, 1, 5}, {1, kNaN, kNaN, 1.33333, 0}},  // the 1 is not seen
      {{0, kInfinity, 2}, {1, kNaN, 1}},
      {{0, -kInfinity, 2}, {kNaN, kNaN, kNaN}},
      {{-1.5e308, 0, 1.5e308}, {1, 1, kNaN}},  // the range overflows
      {{-0x1p1022, 0, 0x1p1022}, {1, 0.5, 0}},
      {{0, 0x1p-1024, 0x1p-1023}, {1, 0.5, 0}},
      {{0, 1e-310, 2e-309}, {kNaN, -kInfinity, -kInfinity}},  // its inverse overflows
  };
  for (const Case& c : cases) {
    std::istringstream lines(textureLines(c.field));
    for (const double expected : c.u) {
      std::string u;
      std::string v;
      lines >> u >> v;
      const double actual = std::strtod(u.c_str(), nullptr);
      EXPECT_TRUE(actual == expected || (std::isnan(actual) && std::isnan(expected))) << u;
      EXPECT_EQ(v, "0.5");
    }
  }
}

TEST_F(Writer, ReportsAFileThatCannotBeOpened) {
  const Handle handle = build(kTriangle, {1, 1, 1});
  const double field[] = {0, 2, 1};
  const auto message = [](const std::string& name) {
    return "couldn't open file " + name + " for writing.\n";
  };
  testing::internal::CaptureStderr();
  wobj(handle.get(), field, base("missing/a").c_str());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message(base("missing/a")));
  EXPECT_FALSE(fs::exists(base("missing")));

  fs::create_directory(base("b.obj"));
  testing::internal::CaptureStderr();
  wobj(handle.get(), field, base("b").c_str());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message(base("b")));
  EXPECT_FALSE(fs::exists(base("b.mtl")));

  fs::create_directory(base("c.mtl"));
  testing::internal::CaptureStderr();
  wobj(handle.get(), field, base("c").c_str());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), message(base("c")));
  EXPECT_EQ(readFile(base("c.obj")).substr(readFile(base("c.obj")).size() - 14), "f 1/1 2/2 3/3\n");
}

TEST_F(Writer, NoVerticesLeavesTwoLines) {
  try {
    quor::writeObjAndMtl({}, {}, nullptr, base("e").c_str());
    FAIL();
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), "vector");
  }
  EXPECT_EQ(readFile(base("e.obj")), "mtllib " + base("e") + ".mtl\nusemtl Heat\n");
  EXPECT_FALSE(fs::exists(base("e.mtl")));
}

}  // namespace
