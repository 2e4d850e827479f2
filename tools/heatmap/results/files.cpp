#include "results/files.h"

#include "kit/new_file.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace heatmap {

std::string reasonOf(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return "permission denied";
    case EFBIG:
    case ENOSPC:
      return "the disk is full";
    case ENAMETOOLONG:
      return "the name is too long; choose another --name";
    case ENOENT:
      return "no such file";
    default:
      return std::generic_category().message(error);
  }
}

std::string readWhole(const std::filesystem::path& file) {
  try {
    return quorkit::readWhole(file);
  } catch (const quorkit::FileError& error) {
    throw std::runtime_error(reasonOf(error.error()));
  }
}

void writeWhole(const std::filesystem::path& file, std::string_view content) {
  try {
    quorkit::NewFile written(file);
    written.write(content);
    written.finish();
    written.putInPlace();
  } catch (const quorkit::FileError& error) {
    throw std::runtime_error("cannot write " + file.string() + ": " + reasonOf(error.error()));
  }
}

}  // namespace heatmap
