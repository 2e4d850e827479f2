// quorkitAreas, quorkitColours and quorkitWrite: what a host shows.

#include "support/handle.h"
#include "support/kit.h"
#include "support/temp_directory.h"

#include <algorithm>
#include <numeric>

#if defined(__linux__)
#include <sys/resource.h>
#include <csignal>
#endif

using namespace test;
namespace fs = std::filesystem;

namespace {

TEST(KitAreas, AreAThirdOfEachTriangle) {
  const Mesh mesh{{0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 5, 8, 8, 8}, {0, 1, 2, 3, 0, 1}};
  std::vector<double> areas(5, kNaN);
  ASSERT_EQ(quorkitAreas(5, mesh.vertices.data(), 2, mesh.triangles.data(), areas.data()),
            QUORKIT_DONE);
  EXPECT_EQ(areas, (std::vector<double>{4.5, 4.5, 2, 2.5, 0}));
  const std::int32_t bad[3] = {0, 1, 5};
  EXPECT_EQ(quorkitAreas(5, mesh.vertices.data(), 1, bad, areas.data()), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitAreas(5, mesh.vertices.data(), 2, mesh.triangles.data(), nullptr),
            QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(areas[0], 4.5);
}

std::array<int, 4> colourOf(double value, double low, double high) {
  std::uint8_t c[4] = {9, 9, 9, 9};
  EXPECT_EQ(quorkitColours(1, &value, low, high, c), QUORKIT_DONE);
  return {c[0], c[1], c[2], c[3]};
}

TEST(KitColours, AreThoseOfTheRamp) {
  const std::array<int, 4> violet{68, 1, 84, 255};
  const std::array<int, 4> yellow{253, 231, 36, 255};
  const std::array<int, 4> middle{32, 144, 140, 255};
  const std::array<int, 4> grey{128, 128, 128, 255};
  const double most = std::numeric_limits<double>::max();
  struct Case {
    double value, low, high;
    std::array<int, 4> expected;
  };
  for (const Case& c : {Case{2, 2, 5, violet},
                        {5, 2, 5, yellow},
                        {3.5, 2, 5, middle},
                        {-kInfinity, 2, 5, violet},
                        {kInfinity, 2, 5, yellow},
                        {kNaN, 2, 5, grey},
                        {2, 5, 2, yellow},
                        {5, 5, 2, violet},
                        {9, 5, 2, violet},
                        {4, 4, 4, middle},
                        {3, 4, 4, violet},
                        {5, 4, 4, yellow},
                        {0, -most, most, middle},
                        {most, -most, most, yellow},
                        {0, 0, 5e-324, violet},  // half of the range has no place in a double
                        {5e-324, 0, 5e-324, yellow},
                        {kInfinity, 5, 2, violet},
                        {-most, 0, most, violet},
                        {most, -1, 0, yellow}}) {
    EXPECT_EQ(colourOf(c.value, c.low, c.high), c.expected) << c.value << " " << c.low;
  }
  std::set<std::array<int, 4>> all;
  for (int i = 0; i < 256; ++i) {
    all.insert(colourOf(i + 0.5, 0, 256));
  }
  EXPECT_GE(all.size(), 250U);  // a few neighbours are equal
  std::uint8_t rgba[4] = {1, 2, 3, 4};
  const double value = 1;
  for (const double end : {kNaN, kInfinity}) {
    EXPECT_EQ(quorkitColours(1, &value, 0, end, rgba), QUORKIT_BAD_ARGUMENT);
    EXPECT_EQ(quorkitColours(1, &value, end, 0, rgba), QUORKIT_BAD_ARGUMENT);
  }
  EXPECT_EQ(quorkitColours(-1, &value, 0, 1, rgba), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitColours(1, nullptr, 0, 1, rgba), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitColours(1, &value, 0, 1, nullptr), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitColours(0, nullptr, 0, 1, nullptr), QUORKIT_DONE);
  EXPECT_EQ(rgba[0] + rgba[3], 5);
}

class KitWrite : public testing::Test {
 protected:
  QuorkitStatus write(const std::string& path, const std::string& ramp = {}, double margin = 0) {
    return quorkitWrite(mesh_.n(), mesh_.vertices.data(), mesh_.m(), mesh_.triangles.data(),
                        field_.data(), path.c_str(), ramp.empty() ? nullptr : ramp.c_str(), margin);
  }
  std::vector<std::string> files(const std::string& directory) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory_ / directory)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  /// All first texture coordinates of an OBJ file.
  static std::vector<double> coordinates(const std::string& path) {
    std::istringstream text(readFile(path));
    std::vector<double> all;
    for (std::string line; std::getline(text, line);) {
      if (line.rfind("vt ", 0) == 0) {
        all.push_back(std::stod(line.substr(3)));
      }
    }
    return all;
  }

  TempDirectory directory_;
  Mesh mesh_ = bumpyMesh(20, 30, 6);
  std::vector<double> field_{mesh_.vertices.begin(), mesh_.vertices.begin() + mesh_.n()};
};

TEST_F(KitWrite, WritesTheTextOfWobj) {
  // All vertices prescribed: the order of the solver is the caller's.
  const Handle handle = build(mesh_, std::vector<std::int32_t>(field_.size(), 1));
  const fs::path before = fs::current_path();
  fs::current_path(directory_ / "");
  wobj(handle.get(), field_.data(), "plain");
  fs::current_path(before);
  fs::create_directory(directory_ / "sub");
  ASSERT_EQ(write(directory_ / "sub/plain"), QUORKIT_DONE);
  EXPECT_EQ(readFile(directory_ / "sub/plain.obj"), readFile(directory_ / "plain.obj"));
  EXPECT_EQ(readFile(directory_ / "sub/plain.mtl"), readFile(directory_ / "plain.mtl"));
  EXPECT_EQ(files("sub"), (std::vector<std::string>{"plain.mtl", "plain.obj"}));
}

TEST_F(KitWrite, KeepsTheEndsOfEveryEdgeApart) {
  // Six digits are enough for an edge of 2e-5 of a coordinate; each further digit for a tenth of
  // that.
  struct Case {
    double place, edge;
    const char* end;
  };
  for (const Case& c : {Case{4e6, 80.5, "4.00008e+06"},
                        {4e6, 79.5, "4000080"},
                        {4649776, 1e-3, "4649776.001"},
                        {-500000, 0.5, "-499999.5"},
                        {1e-300, 1e-306, "1.000001e-300"},
                        {1, 0x1p-52, "1.0000000000000002"}}) {
    mesh_ = {{c.place, 0, 0, c.place + c.edge, 0, 0, c.place, c.place, 0, c.place, 0, 0},
             {0, 1, 2, 0, 3, 2}};
    field_ = {0, 1, 2, 0};
    ASSERT_EQ(write(directory_ / "digits"), QUORKIT_DONE);
    std::istringstream text(readFile(directory_ / "digits.obj"));
    std::vector<std::string> x;
    for (std::string word; text >> word && word != "vt";) {
      if (word == "v") {
        text >> x.emplace_back();
      }
    }
    ASSERT_EQ(x.size(), 4U);
    EXPECT_EQ(x[1], c.end);
    EXPECT_NE(x[0], x[1]);
    EXPECT_EQ(x[0], x[3]);
  }
}

TEST_F(KitWrite, KeepsTheEndsOffTheEndsOfTheRamp) {
  const auto high = std::max_element(field_.begin(), field_.end()) - field_.begin();
  const auto low = std::min_element(field_.begin(), field_.end()) - field_.begin();
  ASSERT_EQ(write(directory_ / "a", {}, 0.001), QUORKIT_DONE);
  const std::vector<double> u = coordinates(directory_ / "a.obj");
  EXPECT_NEAR(u[std::size_t(high)], 0.001 / 1.002, 1e-6);
  EXPECT_NEAR(u[std::size_t(low)], 1.001 / 1.002, 1e-6);
  for (const double value : {3.0, 0.0, -1e300}) {  // no range to be mapped
    field_.assign(field_.size(), value);
    ASSERT_EQ(write(directory_ / "a", {}, 0.001), QUORKIT_DONE);
    EXPECT_EQ(coordinates(directory_ / "a.obj"), std::vector<double>(field_.size(), 0.5));
  }
  // A range that overflows, and some without a reciprocal.
  for (const double end : {std::numeric_limits<double>::max(), 1e-305, 1e-308, 1e-322}) {
    field_.assign(field_.size(), 0.0);
    field_[0] = end;
    field_[1] = -end;
    ASSERT_EQ(write(directory_ / "a"), QUORKIT_DONE);
    const std::vector<double> whole = coordinates(directory_ / "a.obj");
    EXPECT_NEAR(whole[0], 0, 1e-9) << end;
    EXPECT_NEAR(whole[1], 1, 1e-9) << end;
    EXPECT_NEAR(whole[2], 0.5, 1e-9) << end;
  }
}

TEST_F(KitWrite, KeepsItsMarginInAnyRange) {
  const double most = std::numeric_limits<double>::max();
  struct Case {
    double low, middle, high;
  };
  for (const Case& c : {Case{0, 0.85e308, 1.7e308},  // with the margin beyond the largest double
                        {300, 300 + 1e-11, 300 + 2e-11},
                        {-most, 0, most},
                        {0, 1e-320, 2e-320},
                        {-5e-324, 0, 5e-324}}) {
    mesh_ = {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2}};
    field_ = {c.low, c.middle, c.high};
    const std::string path = directory_ / "a";
    for (const double margin : {0.001, 0.1, 1.0}) {
      ASSERT_EQ(write(path, {}, margin), QUORKIT_DONE);
      const double whole = 1 + 2 * margin;
      const double expected[] = {(1 + margin) / whole, 0.5, margin / whole};
      const std::vector<double> u = coordinates(path + ".obj");
      ASSERT_EQ(u.size(), 3U);
      for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(u[k], expected[k], 3e-3) << c.high << " " << margin;
      }
      EXPECT_NEAR(1 - u[0], margin / whole, 1e-6);
      EXPECT_NEAR(u[2], margin / whole, 1e-6);
    }
  }
}

TEST_F(KitWrite, CopiesTheRampAndFindsItsPlace) {
  const std::string ramp = directory_ / "any name";
  std::ofstream(ramp, std::ios::binary) << std::string(100000, '\0') << "end";
  fs::create_directory(directory_ / "d");
  ASSERT_EQ(write(directory_ / "d/two  blanks.obj", ramp), QUORKIT_DONE);
  EXPECT_EQ(files("d"),
            (std::vector<std::string>{"two  blanks.mtl", "two  blanks.obj", "viridis.PNG"}));
  EXPECT_EQ(readFile(directory_ / "d/viridis.PNG"), readFile(ramp));
  const std::string obj = readFile(directory_ / "d/two  blanks.obj");
  EXPECT_EQ(obj.substr(0, obj.find('\n')), "mtllib two  blanks.mtl");
  // The ramp itself is already there.
  EXPECT_EQ(write(directory_ / "d/b", directory_ / "d/viridis.PNG"), QUORKIT_DONE);
  EXPECT_EQ(readFile(directory_ / "d/viridis.PNG"), readFile(ramp));
  const fs::path before = fs::current_path();
  fs::current_path(directory_ / "d");
  EXPECT_EQ(write("here", "../any name"), QUORKIT_DONE);
  fs::current_path(before);
  EXPECT_TRUE(fs::exists(directory_ / "d/here.mtl"));
}

TEST_F(KitWrite, TellsWhatCannotBeWrittenAndLeavesWhatWasThere) {
  const std::string good = directory_ / "good";
  ASSERT_EQ(write(good), QUORKIT_DONE);
  const std::string before = readFile(good + ".obj");
  field_[0] += 1;
  fs::create_directory(directory_ / "taken.obj");
  fs::create_directory(directory_ / "held.mtl");
  for (const std::string& path :
       {directory_ / "missing/a", directory_ / std::string(300, 'a'), std::string("/proc/a"),
        directory_ / "taken", directory_ / "held", std::string("/dev/null/a")}) {
    EXPECT_EQ(write(path), QUORKIT_FILE) << path;
  }
  for (const std::string& ramp : {directory_ / "missing", directory_ / ""}) {
    EXPECT_EQ(write(good, ramp), QUORKIT_FILE) << ramp;
  }
  EXPECT_EQ(readFile(good + ".obj"), before);
  EXPECT_FALSE(fs::exists(directory_ / "held.obj"));
  for (const std::string& name : files("")) {
    EXPECT_EQ(name.find(".part"), std::string::npos) << name;
  }
}

#if defined(__linux__)
TEST_F(KitWrite, TellsThatTheDiskIsFull) {
  // A file may not become longer than this process is allowed, which is how a full disk looks.
  const std::string path = directory_ / "a";
  const std::string ramp = directory_ / "ramp.png";
  std::ofstream(ramp) << std::string(1 << 20, 'r');
  fs::create_directory(directory_ / "sub");
  ASSERT_EQ(write(directory_ / "sub/a"), QUORKIT_DONE);
  const auto objSize = fs::file_size(directory_ / "sub/a.obj");
  ASSERT_LT(objSize, fs::file_size(ramp));
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  // The OBJ does not fit; the OBJ fits, and the ramp does not.
  for (const auto room : {objSize - 1, objSize}) {
    rlimit small = usual;
    small.rlim_cur = room;
    setrlimit(RLIMIT_FSIZE, &small);
    const QuorkitStatus status = write(path, ramp);
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(status, QUORKIT_FILE) << room;
    EXPECT_EQ(files(""), (std::vector<std::string>{"ramp.png", "sub"})) << "something is left";
  }
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(write(path, ramp), QUORKIT_DONE);
}

TEST_F(KitWrite, FollowsNoLinkThatWasPutInItsWay) {
  const std::string path = directory_ / "a";
  const std::string victim = directory_ / "victim";
  std::ofstream(victim) << "mine";
  for (const char* ending : {".obj", ".mtl", ".obj.part", ".mtl.part"}) {
    fs::create_symlink(victim, path + ending);
  }
  EXPECT_EQ(write(path), QUORKIT_DONE);
  EXPECT_EQ(readFile(victim), "mine");
  EXPECT_FALSE(fs::is_symlink(path + ".obj"));
}
#endif

TEST_F(KitWrite, SaysWhatIsABadArgument) {
  const std::string path = directory_ / "a";
  for (const std::string& name :
       {std::string(), std::string(".obj"), directory_ / "", directory_ / ".obj"}) {
    EXPECT_EQ(write(name), QUORKIT_BAD_ARGUMENT) << name;
  }
  for (const double margin : {-5e-324, std::nextafter(1.0, 2.0), kNaN}) {
    EXPECT_EQ(write(path, {}, margin), QUORKIT_BAD_ARGUMENT);
  }
  for (const double value : {kNaN, kInfinity}) {
    field_[3] = value;
    EXPECT_EQ(write(path), QUORKIT_BAD_ARGUMENT);
    field_[3] = 0;
  }
  mesh_.vertices[5] = kNaN;
  EXPECT_EQ(write(path), QUORKIT_BAD_ARGUMENT);
  mesh_.vertices[5] = 0;
  mesh_.triangles[5] = mesh_.n();
  EXPECT_EQ(write(path), QUORKIT_BAD_ARGUMENT);
  const double* const v = field_.data();
  EXPECT_EQ(quorkitWrite(0, v, 0, nullptr, v, path.c_str(), nullptr, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWrite(1, nullptr, 0, nullptr, v, path.c_str(), nullptr, 0),
            QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWrite(1, v, 0, nullptr, nullptr, path.c_str(), nullptr, 0),
            QUORKIT_BAD_ARGUMENT);
  EXPECT_EQ(quorkitWrite(1, v, 0, nullptr, v, nullptr, nullptr, 0), QUORKIT_BAD_ARGUMENT);
  EXPECT_TRUE(files("").empty());
  EXPECT_EQ(quorkitWrite(1, v, 0, nullptr, v, path.c_str(), nullptr, 0), QUORKIT_DONE);
}

}  // namespace
