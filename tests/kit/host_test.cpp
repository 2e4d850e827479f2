// The kit's library in a host: exported names, small stacks, many threads, unloading.

#include "support/kit.h"
#include "support/process.h"
#include "support/sanitizers.h"
#include "support/temp_directory.h"

#include <dlfcn.h>

#include <thread>

using namespace test;

namespace {

TEST(KitHost, ExportsExactlyItsOwnNames) {
  std::string expected;
  std::istringstream names(readFile(QUORKIT_EXPORTS));
  std::set<std::string> sorted{std::istream_iterator<std::string>(names), {}};
  for (const std::string& name : sorted) {
    expected += "T " + name + "\n";
  }
  EXPECT_EQ(sorted.size(), 27U);
  EXPECT_EQ(
      run("nm -D --defined-only " QUORKIT_LIBRARY " | awk '{print $2, $3}' | LC_ALL=C sort -k2"),
      expected);
}

/// From a soup to files.
/// @return all that came out
std::vector<double> useEverything(int seed, const std::string& path) {
  const Mesh soup = soupOf(bumpyMesh(12, 9, unsigned(seed)));
  Mesh mesh = soup;
  std::vector<std::int32_t> map(std::size_t(soup.n()));
  std::int32_t n = 0;
  std::int32_t m = 0;
  EXPECT_EQ(quorkitWeld(soup.n(), soup.vertices.data(), soup.m(), soup.triangles.data(),
                        mesh.vertices.data(), mesh.triangles.data(), map.data(), &n, &m, 1e-9),
            QUORKIT_DONE);
  mesh.vertices.resize(3 * std::size_t(n));
  mesh.triangles.resize(3 * std::size_t(m));
  mesh = plain(refineTo(plain(refine(plain(clean(mesh)), 0.1)), 15000));
  std::vector<std::int32_t> tags(mesh.vertices.size() / 3, 0);
  tags.front() = tags.back() = 1;
  QuorkitReport report{};
  EXPECT_EQ(quorkitCheck(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         tags.data(), &report),
            QUORKIT_DONE);
  const KitSolver solver = construct(mesh, tags);
  std::vector<double> field(tags.size());
  EXPECT_EQ(
      quorkitAreas(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), field.data()),
      QUORKIT_DONE);
  EXPECT_EQ(quorkitSolve(solver.get(), mesh.vertices.data(), field.data(), field.data()),
            QUORKIT_DONE);
  std::vector<std::uint8_t> rgba(4 * field.size());
  EXPECT_EQ(quorkitColours(mesh.n(), field.data(), -1, 1, rgba.data()), QUORKIT_DONE);
  EXPECT_EQ(quorkitWrite(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         field.data(), path.c_str(), nullptr, 0.001),
            QUORKIT_DONE);
  EXPECT_NE(quorkitWrite(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(),
                         field.data(), (path + "/no/such").c_str(), nullptr, 0.001),
            QUORKIT_DONE);
  std::vector<double> all = mesh.vertices;
  all.insert(all.end(), field.begin(), field.end());
  all.insert(all.end(), rgba.begin(), rgba.end());
  all.push_back(report.area);
  return all;
}

TEST(KitHost, ManyThreadsAtOnce) {
  const TempDirectory directory;
  std::vector<std::vector<double>> alone;
  for (int seed = 0; seed < 4; ++seed) {
    alone.push_back(useEverything(seed, directory / "alone"));
  }
  std::vector<std::thread> running;
  for (int thread = 0; thread < 4; ++thread) {
    running.emplace_back([&, thread] {
      for (int seed = 0; seed < 4; ++seed) {
        EXPECT_TRUE(sameBits(useEverything((seed + thread) % 4, directory / std::to_string(thread)),
                             alone[std::size_t(seed + thread) % 4]));
      }
    });
  }
  for (std::thread& thread : running) {
    thread.join();
  }
}

#if !defined(QUOR_SANITIZED)  // sanitizers need larger stacks than the code they watch
TEST(KitHost, RunsOnAStackOf128KB) {
  const TempDirectory directory;
  const std::vector<double> expected = useEverything(1, directory / "usual");
  std::vector<double> results;
  runOnSmallStack([&] { results = useEverything(1, directory / "small"); });
  EXPECT_TRUE(sameBits(results, expected));
}
#endif

TEST(KitHost, ReallyUnloads) {
  const TempDirectory directory;
  const std::string copy = directory / "copy";
  std::filesystem::copy_file(QUORKIT_LIBRARY, copy);
  for (int round = 0; round < 3; ++round) {
    void* const library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto text =
        reinterpret_cast<decltype(&quorkitStatusText)>(dlsym(library, "quorkitStatusText"));
    ASSERT_NE(text, &quorkitStatusText);
    EXPECT_STREQ(text(QUORKIT_FILE), quorkitStatusText(QUORKIT_FILE));
    dlclose(library);
    EXPECT_EQ(dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  }
}

}  // namespace
