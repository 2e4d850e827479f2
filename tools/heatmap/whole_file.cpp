#include "whole_file.h"

#include <fstream>
#include <stdexcept>
#include <utility>

namespace heatmap {
namespace {

namespace fs = std::filesystem;

// Removes the file unless it has been renamed.
class Part {
 public:
  explicit Part(fs::path file) : path(std::move(file)) { path += ".part"; }
  ~Part() {
    std::error_code ignored;
    fs::remove(path, ignored);
  }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;

  fs::path path;
};

}  // namespace

void writeWhole(const fs::path& file, const std::function<void(std::ostream&)>& write) {
  const Part part(file);
  std::ofstream stream(part.path, std::ios::binary);
  write(stream);
  stream.close();
  std::error_code error;
  if (stream) {
    fs::rename(part.path, file, error);
  }
  if (!stream || error) {
    throw std::runtime_error("cannot write " + file.string() +
                             ": no permission, or no space left on the device");
  }
}

}  // namespace heatmap
