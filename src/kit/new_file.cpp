#include "kit/new_file.h"

#include <array>
#include <cassert>
#include <cerrno>
#include <cstdint>
#include <new>
#include <random>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#endif

namespace quorkit {
namespace {

namespace fs = std::filesystem;

/// A name that nobody can foresee. Without a source of entropy it is still new: see createNew.
fs::path partName(const fs::path& target) {
  std::uint32_t number = 0;
  try {
    number = std::random_device{}();
  } catch (const std::runtime_error&) {  // NOLINT(bugprone-empty-catch)
  }
  fs::path part = target;
  part += "." + std::to_string(number) + ".part";
  return part;
}

/// Creates a file that is not there yet, or returns null with the reason in errno.
std::FILE* createNew(const fs::path& path) {
  errno = 0;
#if defined(_WIN32)
  int descriptor = -1;
  if (_wsopen_s(&descriptor, path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY, _SH_DENYWR,
                _S_IREAD | _S_IWRITE) != 0) {
    return nullptr;
  }
  return _wfdopen(descriptor, L"wb");
#else
  return std::fopen(path.c_str(), "wbx");
#endif
}

std::FILE* openToRead(const fs::path& path) {
  errno = 0;
#if defined(_WIN32)
  return _wfopen(path.c_str(), L"rb");
#else
  return std::fopen(path.c_str(), "rb");
#endif
}

}  // namespace

void failOnFile(const fs::path& path, int error) {
  if (error == ENOMEM) {
    throw std::bad_alloc();
  }
  throw FileError(path, error);
}

NewFile::NewFile(fs::path target) : target_(std::move(target)) {
  constexpr int kTries = 8;
  for (int tries = 0; file_ == nullptr; ++tries) {
    part_ = partName(target_);
    file_.reset(createNew(part_));
    if (file_ == nullptr && (errno != EEXIST || tries == kTries)) {
      failOnFile(target_, errno);
    }
  }
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // what is written comes in large blocks
}

NewFile::~NewFile() {
  if (!isInPlace_) {
    file_.reset();
    std::error_code ignored;
    fs::remove(part_, ignored);
  }
}

void NewFile::write(std::string_view text) {
  assert(file_ != nullptr);
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) {
    failOnFile(target_, errno);
  }
}

void NewFile::finish() {
  assert(file_ != nullptr);
  errno = 0;
  if (std::fclose(file_.release()) != 0) {
    failOnFile(target_, errno);
  }
}

void NewFile::putInPlace() {
  assert(file_ == nullptr && !isInPlace_);
  std::error_code error;
  fs::rename(part_, target_, error);
  if (error) {
    failOnFile(target_, error.value());
  }
  isInPlace_ = true;
}

std::string readWhole(const fs::path& path) {
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  const std::unique_ptr<std::FILE, Close> file(openToRead(path));
  if (file == nullptr) {
    failOnFile(path, errno);
  }
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // the block is the buffer
  std::string content;
  std::array<char, 8192> block{};
  std::size_t length = 0;
  do {
    errno = 0;
    length = std::fread(block.data(), 1, block.size(), file.get());
    content.append(block.data(), length);
  } while (length == block.size());
  if (std::ferror(file.get()) != 0) {
    failOnFile(path, errno);
  }
  return content;
}

}  // namespace quorkit
