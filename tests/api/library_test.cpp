// The shared library as a host sees it: exported names, data, loading, unloading.

#include "support/handle.h"
#include "support/process.h"
#include "support/sanitizers.h"
#include "support/temp_directory.h"

#include <dlfcn.h>

#include <string>

using namespace test;

namespace {

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

TEST(Library, WorksTwiceInOneProcessAndReallyUnloads) {
  // Copies, since this program is linked with the library itself. Each makes a handle, uses it
  // while the other's is alive, and frees it.
  const TempDirectory directory;
  const Mesh mesh = bumpyMesh(40, 40, 1);
  const std::vector<std::int32_t> tags = tagEnds(40, 40);
  const std::vector<double> values(tags.size(), 2.5);
  const std::vector<double> expected = solve(build(mesh, tags), values);
  struct Copy {
    std::string file;
    void* library = nullptr;
    void* handle = nullptr;
  } copies[] = {{directory / "one"}, {directory / "two"}};
  for (int round = 0; round < 3; ++round) {
    StatusCode status = 99;
    for (Copy& copy : copies) {
      std::filesystem::copy_file(QUOR_LIBRARY, copy.file,
                                 std::filesystem::copy_options::overwrite_existing);
      copy.library = dlopen(copy.file.c_str(), RTLD_NOW | RTLD_LOCAL);
      ASSERT_NE(copy.library, nullptr) << dlerror();
      const auto construct =
          reinterpret_cast<decltype(&quorctorTagged)>(dlsym(copy.library, "quorctorTagged"));
      ASSERT_NE(construct, &quorctorTagged);
      construct(mesh.n(), mesh.vertices.data(), mesh.m(), mesh.triangles.data(), tags.data(),
                nullptr, &status, &copy.handle);
      EXPECT_EQ(status, 0U);
    }
    for (const Copy& copy : copies) {
      const auto use =
          reinterpret_cast<decltype(&quorsolveTagged)>(dlsym(copy.library, "quorsolveTagged"));
      std::vector<double> field(values.size());
      use(copy.handle, values.data(), field.data(), &status);
      EXPECT_TRUE(sameBits(field, expected));
      reinterpret_cast<decltype(&quorfree)>(dlsym(copy.library, "quorfree"))(copy.handle);
      dlclose(copy.library);
      EXPECT_EQ(dlopen(copy.file.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
    }
  }
}

}  // namespace
