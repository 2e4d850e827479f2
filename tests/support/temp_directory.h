// A directory of one test, gone when it is over.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace test {

class TempDirectory {
 public:
  TempDirectory() {
    std::string path = (std::filesystem::temp_directory_path() / "quor-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
      throw std::runtime_error("no directory for temporary files");
    }
    path_ = path;
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
