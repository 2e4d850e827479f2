// A directory of one test, gone when it is over.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace test {

class TempDirectory {
 public:
  TempDirectory() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("quor-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TempDirectory() { std::filesystem::remove_all(path_); }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline std::string readFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

}  // namespace test
