// wobj and the file system: what it writes where, and what it says when it cannot.

#include "support/handle.h"
#include "support/temp_directory.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>

using namespace test;
namespace fs = std::filesystem;

namespace {

/// What has been written to files since `recorded` was set.
struct {
  bool recorded = false;
  int count = 0;
  int endingInsideALine = 0;
} writes;

void record(const char* last) {
  if (writes.recorded) {
    ++writes.count;
    writes.endingInsideALine += *last != '\n' ? 1 : 0;
  }
}

}  // namespace

// The functions of this program come before those of the C library, for the streams too.
extern "C" ssize_t write(int file, const void* data, std::size_t size) {
  record(static_cast<const char*>(data) + size - 1);
  return syscall(SYS_write, file, data, size);
}

extern "C" ssize_t writev(int file, const iovec* parts, int count) {
  const iovec& last = parts[count - 1];
  record(static_cast<const char*>(last.iov_base) + last.iov_len - 1);
  return syscall(SYS_writev, file, parts, count);
}

namespace {

class Files : public testing::Test {
 protected:
  /// Writes the mesh under a name.
  /// @return what appeared on the standard error stream
  std::string write(const std::string& base) const {
    testing::internal::CaptureStderr();
    wobj(handle_.get(), field_.data(), base.c_str());
    return testing::internal::GetCapturedStderr();
  }

  /// The whole OBJ file that belongs to a name.
  std::string objOf(const std::string& base) const {
    const std::string plain = directory_ / "plain";
    EXPECT_EQ(write(plain), "");
    const std::string text = readFile(plain + ".obj");
    return "mtllib " + base + ".mtl" + text.substr(text.find('\n'));
  }

  TempDirectory directory_;
  Mesh mesh_ = bumpyMesh(40, 40, 6);
  Handle handle_ = build(mesh_, tagEnds(40, 40));
  std::vector<double> field_ = mesh_.vertices;  // any numbers
};

/// A path of so many characters below a directory; all the directories are made.
std::string longPath(const std::string& directory, std::size_t length) {
  std::string path = directory;
  while (path.size() + 202 < length) {
    path += "/" + std::string(std::min<std::size_t>(200, length - path.size() - 102), 'd');
    fs::create_directory(path);
  }
  return path + "/" + std::string(length - path.size() - 1, 'f');
}

TEST_F(Files, AnyNameThatTheSystemTakes) {
  const std::string names[] = {directory_ / "two  blanks ",
                               directory_ / "a.b..c",
                               directory_ / ".hidden",
                               directory_ /
                                   "gr\xC3\xB6\xC3\x9F"
                                   "e \xE2\x98\x83",
                               directory_ / "100%s%n",
                               longPath(directory_ / "", 4000)};
  for (const std::string& name : names) {
    std::ofstream(name + ".obj") << std::string(300000, '?')
                                 << std::flush;  // longer than the new one
    EXPECT_EQ(write(name), "");
    EXPECT_EQ(readFile(name + ".obj"), objOf(name));
    EXPECT_EQ(readFile(name + ".mtl"), readFile(directory_ / "plain.mtl"));
  }
}

TEST_F(Files, WhatCannotBeOpenedIsReported) {
  fs::create_directory(directory_ / "locked");
  fs::permissions(directory_ / "locked", fs::perms::owner_read | fs::perms::owner_exec |
                                             fs::perms::others_read | fs::perms::others_exec);
  fs::permissions(directory_ / "", fs::perms::all);
  const std::string names[] = {directory_ / "locked/a", directory_ / "missing/a",
                               directory_ / std::string(300, 'a'),
                               directory_ / std::string(9000, 'a'), "/proc/a"};
  const bool isRoot = geteuid() == 0;  // whom no permission keeps out
  ASSERT_TRUE(!isRoot || seteuid(65534) == 0);
  for (const std::string& name : names) {
    EXPECT_EQ(write(name), "couldn't open file " + name + " for writing.\n");
  }
  ASSERT_TRUE(!isRoot || seteuid(0) == 0);
  EXPECT_TRUE(fs::is_empty(directory_ / "locked"));
}

TEST_F(Files, AFullDiskGoesUnnoticed) {
  fs::create_symlink("/dev/full", directory_ / "a.obj");
  fs::create_symlink("/dev/full", directory_ / "b.mtl");
  EXPECT_EQ(write(directory_ / "a"), "");
  EXPECT_EQ(write(directory_ / "b"), "");
  const std::string b = directory_ / "b";
  EXPECT_EQ(readFile(b + ".obj"), objOf(b));
  EXPECT_EQ(readFile(directory_ / "a.mtl"), readFile(directory_ / "plain.mtl"));
}

TEST_F(Files, EveryLineIsOneWriteSoThatAReaderOfTheGrowingFileSeesWholeLines) {
  for (const std::string& base : {directory_ / "w", longPath(directory_ / "", 4000)}) {
    writes = {true, 0, 0};
    wobj(handle_.get(), field_.data(), base.c_str());
    writes.recorded = false;
    const std::string text = readFile(base + ".obj") + readFile(base + ".mtl");
    EXPECT_EQ(writes.count, std::count(text.begin(), text.end(), '\n'));
    EXPECT_EQ(writes.endingInsideALine, 0);
  }
}

}  // namespace
