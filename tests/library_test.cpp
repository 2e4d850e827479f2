// The shared library as a host sees it: exported names, loading, unloading, small stacks.

#include "support/handle.h"
#include "support/sanitizers.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>

using namespace test;

namespace {

std::string run(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  std::array<char, 256> buffer{};
  while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
    output += buffer.data();
  }
  return pclose(pipe) == 0 ? output : "failed";
}

TEST(Library, ExportsExactlyTheElevenNames) {
  EXPECT_EQ(run("nm -D --defined-only " QUOR_LIBRARY " | awk '{print $2, $3}' | LC_ALL=C sort -k2"),
            "T decode_integer_from_sphere\nT encode_integer_to_sphere\nT quorWeld\n"
            "T quorctorTagged\nT quorfree\nT quorinfo\nT quorsolvePTagged\nT quorsolveTagged\n"
            "T quotris\nT quoverts\nT wobj\n");
}

#if defined(NDEBUG) && !defined(QUOR_SANITIZED)  // others add data of their own
TEST(Library, HoldsNoMutableData) {
  // What is writable: the compiler's own bookkeeping, and the object with which <iostream> keeps
  // the standard streams alive.
  EXPECT_EQ(run("nm -C " QUOR_LIBRARY " | awk '$2 ~ /^[bBdDsSuvV]$/ {$1 = $2 = \"\"; print}' | "
                "grep -vE '^ *(completed\\.0|__do_global_dtors_aux_fini_array_entry|"
                "__frame_dummy_init_array_entry|__dso_handle|__TMC_END__|_DYNAMIC|"
                "_GLOBAL_OFFSET_TABLE_|std::__ioinit|(vtable|typeinfo)( name)? for .*|"
                "DW\\.ref\\..*)$' || true"),
            "");
}
#endif

using Info = std::uint32_t (*)(const void*);

TEST(Library, LoadsAndReallyUnloads) {
  // A copy, since this program is linked with the library itself.
  const std::string copy = testing::TempDir() + "libquor_unload_test.so";
  std::ofstream(copy, std::ios::binary) << std::ifstream(QUOR_LIBRARY, std::ios::binary).rdbuf();
  for (int round = 0; round < 3; ++round) {
    void* library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto construct =
        reinterpret_cast<decltype(&quorctorTagged)>(dlsym(library, "quorctorTagged"));
    const auto info = reinterpret_cast<Info>(dlsym(library, "quorinfo"));
    const auto release = reinterpret_cast<void (*)(void*)>(dlsym(library, "quorfree"));
    const Mesh mesh = bumpyMesh(40, 40, 1);
    const std::vector<std::int32_t> tags = tagEnds(40, 40);
    StatusCode status = 99;
    void* handle = nullptr;
    construct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(), nullptr,
              &status, &handle);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(info(handle), 0U);
    release(handle);
    dlclose(library);
    EXPECT_EQ(dlopen(copy.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
  }
  std::remove(copy.c_str());
}

}  // namespace
