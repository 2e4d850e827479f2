#include "kit/obj_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>
#include <system_error>
#include <utility>

namespace quorkit {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failOnFile(int error) {
  if (error == ENOMEM) {
    throw std::bad_alloc();
  }
  throw FileError();
}

/// A file that is written under a name of its own first. Unless it has been put in place it
/// disappears.
class PartFile {
 public:
  explicit PartFile(fs::path target) : target_(std::move(target)), part_(target_) {
    part_ += ".part";
    errno = 0;
    file_.open(part_, std::ios::binary | std::ios::trunc);
    if (!file_.is_open()) {
      failOnFile(errno);
    }
    text_.reserve(kBlock);
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
  ~PartFile() {
    if (!isInPlace_) {
      file_.close();
      std::error_code ignored;
      fs::remove(part_, ignored);
    }
  }

  PartFile& operator<<(const char* text) {
    text_ += text;
    return *this;
  }
  PartFile& operator<<(const std::string& text) {
    text_ += text;
    return *this;
  }
  PartFile& operator<<(std::int64_t number) {
    std::array<char, 24> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text_.append(digits.data(), end);
    return *this;
  }
  /// Six significant digits, whatever the locale.
  PartFile& operator<<(double number) {
    std::array<char, 24> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                    std::chars_format::general, 6)
                          .ptr;
    text_.append(digits.data(), end);
    return *this;
  }
  void endLine() {
    text_ += '\n';
    if (text_.size() >= kBlock - kLongestLine) {
      write();
    }
  }

  /// Everything that was put in has reached the file system.
  void finish() {
    write();
    file_.close();
    if (file_.fail()) {
      failOnFile(errno);
    }
  }

  void putInPlace() {
    std::error_code error;
    fs::rename(part_, target_, error);
    if (error) {
      failOnFile(error.value());
    }
    isInPlace_ = true;
  }

 private:
  static constexpr std::size_t kBlock = 1U << 16U;
  static constexpr std::size_t kLongestLine = 512;

  void write() {
    errno = 0;
    file_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    if (file_.fail()) {
      failOnFile(errno);
    }
    text_.clear();
  }

  fs::path target_;
  fs::path part_;
  std::ofstream file_;
  std::string text_;
  bool isInPlace_ = false;
};

/// The first texture coordinate of each value.
class TextureScale {
 public:
  TextureScale(const double* field, std::size_t n, double margin) {
    const auto [low, high] = std::minmax_element(field, field + n);
    isConstant_ = *high == *low;
    if (!std::isfinite(*high - *low)) {
      unit_ = 0.25;
    } else if (*high - *low < 1e-300) {  // so small are differences of small numbers only
      unit_ = 0x1p500;
    }
    const double range = unit_ * *high - unit_ * *low;
    low_ = unit_ * *low - margin * range;
    scale_ = 1.0 / (unit_ * *high + margin * range - low_);
  }

  double operator()(double value) const {
    return isConstant_ ? 0.5 : (low_ - unit_ * value) * scale_ + 1.0;
  }

 private:
  double unit_ = 1.0;  ///< with it the range neither overflows nor is too small for a reciprocal
  double low_ = 0.0;
  double scale_ = 0.0;
  bool isConstant_ = false;
};

void writeMesh(PartFile& file, const MeshView& mesh, const double* field, double margin) {
  for (std::size_t v = 0; v < mesh.vertexCount(); ++v) {
    const double* const p = mesh.vertices + 3 * v;
    (file << "v " << p[0] << " " << p[1] << " " << p[2]).endLine();
  }
  const TextureScale u(field, mesh.vertexCount(), margin);
  for (std::size_t v = 0; v < mesh.vertexCount(); ++v) {
    (file << "vt " << u(field[v]) << " 0.5").endLine();
  }
  for (std::size_t t = 0; t < mesh.triangleCount(); ++t) {
    file << "f";
    for (std::size_t k = 3 * t; k < 3 * t + 3; ++k) {
      const auto number = std::int64_t{mesh.triangles[k]} + 1;
      file << " " << number << "/" << number;
    }
    file.endLine();
  }
}

/// The material of wobj, blanks and all.
constexpr const char* kMaterial =
    "newmtl Heat \nKd 1 1 1             \nNs 96.0784\t\t\t \nd 1\t\t\t\t\t \nillum 1\t\t\t\t \n"
    "Ka 0 0 0\t\t\t \nKs 1 1 1\t\t\t \nmap_Kd viridis.PNG\n";

std::string readWhole(const fs::path& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    failOnFile(errno);
  }
  std::string content;
  std::array<char, 4096> block{};
  do {
    file.read(block.data(), block.size());
    content.append(block.data(), static_cast<std::size_t>(file.gcount()));
  } while (file);
  if (!file.eof()) {
    failOnFile(errno);
  }
  return content;
}

}  // namespace

void writeObj(const MeshView& mesh, const double* field, const ObjPlace& place, double margin) {
  const fs::path base = fs::u8path(place.path);
  const auto withEnding = [&base](const char* ending) {
    fs::path path = base;
    path += ending;
    return path;
  };
  PartFile obj(withEnding(".obj"));
  (obj << "mtllib " << base.filename().u8string() << ".mtl").endLine();
  (obj << "usemtl Heat").endLine();
  writeMesh(obj, mesh, field, margin);
  obj.finish();

  PartFile material(withEnding(".mtl"));
  material << kMaterial;
  material.finish();

  if (place.ramp != nullptr) {
    const fs::path source = fs::u8path(place.ramp);
    const fs::path target = base.parent_path() / "viridis.PNG";
    std::error_code isOther;
    if (!fs::equivalent(source, target, isOther)) {
      PartFile ramp(target);
      ramp << readWhole(source);
      ramp.finish();
      ramp.putInPlace();
    }
  }
  material.putInPlace();
  obj.putInPlace();
}

}  // namespace quorkit
