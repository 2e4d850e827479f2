#include "destination.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace heatmap {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& why) {
  throw std::runtime_error(why);
}

void requireFileName(const std::string& name) {
  const bool hasControl =
      std::any_of(name.begin(), name.end(), [](char c) { return c >= 0 && c < 32; });
  if (name.empty() || hasControl || fs::path(name).filename() != name) {
    refuse("the base name \"" + name +
           "\" (--name) must be a plain file name without directories; --out takes the directory");
  }
}

void requireRamp(const fs::path& ramp) {
  std::error_code ignored;
  std::string why;
  if (!fs::exists(ramp, ignored)) {
    why = "there is no such file";
  } else if (!fs::is_regular_file(ramp, ignored)) {
    why = "that is not a file";
  } else if (std::ifstream(ramp, std::ios::binary).peek() == std::ifstream::traits_type::eof()) {
    why = "it is empty, or not yours to read";
  }
  if (!why.empty()) {
    refuse("cannot read the colour ramp " + ramp.string() + ": " + why +
           ". --ramp names another image; quor comes with assets/viridis.PNG, installed as "
           "share/quor/viridis.PNG");
  }
}

// The directory, or the first one above it that is there: a result could be written if a file can
// be made in it.
void requireWritable(const fs::path& directory, const std::string& name) {
  std::error_code error;
  fs::path there = fs::absolute(directory).lexically_normal();
  while (!fs::exists(there, error) && there.has_relative_path()) {
    there = there.parent_path();
  }
  const std::string what = "cannot write results into " + directory.string() + " (--out): ";
  if (!fs::is_directory(there, error)) {
    refuse(what + there.string() + " is not a directory");
  }
  const fs::path probe = there / ("." + name + ".probe");
  if (fs::exists(probe, error)) {
    return;  // left by a process that was ended right here; not ours to touch
  }
  const bool isMade = std::ofstream(probe).is_open();
  fs::remove(probe, error);
  if (!isMade) {
    refuse(what + "no file named like \"" + name + "\" can be made in " + there.string() +
           ", where one needs permission to write, and room");
  }
}

void requireReplaceable(const fs::path& file, const fs::path& part) {
  std::error_code error;
  if (fs::is_directory(file, error)) {
    refuse("cannot replace " + file.string() +
           ": it is a directory; choose another --name or --out");
  }
  if (fs::equivalent(file, part, error)) {
    refuse("the result would replace the part, " + file.string() +
           ": choose another --name or --out");
  }
}

}  // namespace

void requireUsable(const Destination& destination, const fs::path& part) {
  requireFileName(destination.name);
  requireRamp(destination.ramp);
  requireWritable(destination.directory, destination.name);
  for (const char* extension : {".obj", ".mtl", ".json"}) {
    requireReplaceable(destination.directory / (destination.name + extension), part);
  }
}

}  // namespace heatmap
