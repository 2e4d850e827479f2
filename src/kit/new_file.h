// A file that is there whole or not at all.
#pragma once

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace quorkit {

/// A file cannot be read or written.
class FileError : public std::exception {
 public:
  /// @param error  of errno; 0 if unknown
  FileError(std::filesystem::path path, int error) : path_(std::move(path)), error_(error) {}
  const char* what() const noexcept override { return "file"; }
  const std::filesystem::path& path() const { return path_; }
  int error() const { return error_; }

 private:
  std::filesystem::path path_;
  int error_;
};

/// Throws FileError, or std::bad_alloc if the error is that memory ran out.
[[noreturn]] void failOnFile(const std::filesystem::path& path, int error);

/// Writes a file under a name of its own first, in the directory of the target. Unless it has been
/// put in place it disappears. The first name cannot be foreseen and must be new, so no link that
/// somebody put there is followed.
class NewFile {
 public:
  /// Throws FileError and std::bad_alloc.
  explicit NewFile(std::filesystem::path target);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  /// Throws FileError.
  void write(std::string_view text);

  /// Everything that was written has reached the file system. Throws FileError.
  void finish();

  /// Replaces the target. Throws FileError. To be called after finish.
  void putInPlace();

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::filesystem::path target_;
  std::filesystem::path part_;
  std::unique_ptr<std::FILE, Close> file_;
  bool isInPlace_ = false;
};

/// The content of a file. Throws FileError and std::bad_alloc.
std::string readWhole(const std::filesystem::path& path);

}  // namespace quorkit
