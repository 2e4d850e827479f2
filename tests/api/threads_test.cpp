// Many threads at once and small stacks, as a host has them.

#include "support/handle.h"
#include "support/nasty_points.h"
#include "support/process.h"
#include "support/sanitizers.h"
#include "support/temp_directory.h"
#include "support/weld_oracle.h"

#include <numeric>
#include <thread>

using namespace test;

namespace {

void runAtOnce(int threads, const std::function<void(int)>& work) {
  std::vector<std::thread> running;
  for (int t = 0; t < threads; ++t) {
    running.emplace_back(work, t);
  }
  for (std::thread& thread : running) {
    thread.join();
  }
}

/// Everything that may overlap on one handle.
/// @return the bits of all results; the numbers of both fields come first
std::vector<double> useHandle(const void* handle, std::int32_t n, const std::string& base) {
  std::vector<double> results(2 * std::size_t(n));
  std::vector<double> values(results.size() / 2);
  std::iota(values.begin(), values.end(), -0.3);
  StatusCode status[2] = {99, 99};
  quorsolveTagged(handle, values.data(), results.data(), &status[0]);
  quorsolvePTagged(handle, values.data(), values.data(), results.data() + n, &status[1]);
  const double* vertices = nullptr;
  const std::int32_t* triangles = nullptr;
  const auto stored = std::ptrdiff_t(quoverts(handle, &vertices));
  quotris(handle, &triangles);
  results.insert(results.end(), vertices, vertices + 3 * stored);
  results.insert(results.end(), triangles, triangles + 3);
  for (const auto number : {status[0], status[1], quorinfo(handle)}) {
    results.push_back(number);
  }
  wobj(handle, results.data(), base.c_str());
  return results;
}

/// All steps from a soup to a field.
std::vector<double> useEverything(const Mesh& soup, double tolerance, const std::string& base) {
  const Welded weld = welded(soup, tolerance);
  const Mesh mesh{weld.vertices, weld.triangles};
  const std::int32_t n = mesh.n();
  std::vector<std::int32_t> tags(std::size_t(n), 0);
  tags.front() = 1;
  tags.back() = 2;
  const Handle handle = build(mesh, tags);
  std::vector<double> results = useHandle(handle.get(), n, base);
  results.insert(results.end(), weld.map.begin(), weld.map.end());
  float x = 0;
  float y = 0;
  float z = 0;
  encode_integer_to_sphere(n % 65535, &x, &y, &z);
  results.push_back(decode_integer_from_sphere(-x, -y, -z) == n % 65535 ? 1 : 0);
  return results;
}

TEST(Threads, ManyOnOneHandle) {
  const TempDirectory directory;
  const Mesh mesh = bumpyMesh(30, 20, 5);
  const Handle handle = build(mesh, tagEnds(30, 20));
  const std::vector<double> alone = useHandle(handle.get(), mesh.n(), directory / "alone");
  const std::string text = readFile(directory / "alone.obj");
  const std::string rest = ".mtl" + text.substr(text.find('\n'));
  runAtOnce(8, [&](int thread) {
    const std::string base = directory / std::to_string(thread);
    for (int round = 0; round < 5; ++round) {
      EXPECT_TRUE(sameBits(useHandle(handle.get(), mesh.n(), base), alone));
      EXPECT_EQ(readFile(base + ".obj"), ("mtllib " + base).append(rest));
      EXPECT_EQ(readFile(base + ".mtl"), readFile(directory / "alone.mtl"));
    }
  });
}

TEST(Threads, ManyHandles) {
  const TempDirectory directory;
  std::vector<Mesh> soups;
  std::vector<std::vector<double>> alone;
  for (const int side : {10, 40, 65, 85}) {  // the last one is worth factorizing in blocks
    soups.push_back(soupOf(bumpyMesh(side, side + 3, unsigned(side))));
    alone.push_back(useEverything(soups.back(), 1e-9, directory / "alone"));
  }
  runAtOnce(8, [&](int thread) {
    for (std::size_t i = 0; i < soups.size(); ++i) {
      const std::size_t which = (i + std::size_t(thread)) % soups.size();
      const std::string base = directory / std::to_string(thread);
      EXPECT_TRUE(sameBits(useEverything(soups[which], 1e-9, base), alone[which]));
    }
  });
}

#if !defined(QUOR_SANITIZED)  // sanitizers need larger stacks than the code they watch

TEST(Threads, EveryFunctionRunsOnA128KilobyteStack) {
  const TempDirectory directory;
  Mesh fan{{0, 0, 0}, {}};
  for (int i = 1; i < 9000; ++i) {
    fan.vertices.insert(fan.vertices.end(), {std::cos(i * 7e-4), std::sin(i * 7e-4), i * 1e-5});
    fan.triangles.insert(fan.triangles.end(), {0, i, i % 8999 + 1});
  }
  std::vector<Mesh> meshes{fan, gridMesh(2, 20000), tangledMesh(400, 900, 1)};
  // 8,000 to 17,000 unknowns are where work arrays of up to 128 KB would go to the stack.
  for (const int side : {2, 20, 70, 95, 110, 128, 230}) {
    meshes.push_back(bumpyMesh(side, side, 2));
  }
  for (const Mesh& mesh : meshes) {
    const Mesh soup = soupOf(mesh);
    runOnSmallStack([&] {
      const std::vector<double> results = useEverything(soup, 1e-9, directory / "small");
      EXPECT_TRUE(std::isfinite(results[1]));
      EXPECT_EQ(results.back(), 1);
    });
  }

  Random random(40);
  for (const Nasty& nasty : kNasty) {
    for (const int count : {100, 100000}) {
      double tolerance = 0;
      const Mesh soup{nasty.points(random, count, tolerance), {}};
      runOnSmallStack([&] { EXPECT_EQ(welded(soup, tolerance).result, 0); });
    }
  }
}

#endif

}  // namespace
