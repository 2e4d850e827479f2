#include "results/destination.h"

#include "kit/new_file.h"
#include "results/files.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace heatmap {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& why) {
  throw std::runtime_error(why);
}

void requireFileName(const std::string& name) {
  const bool hasControl =
      std::any_of(name.begin(), name.end(), [](char c) { return c >= 0 && c < 32; });
  if (name.empty() || hasControl || fs::path(name).filename() != name || name == "." ||
      name == "..") {
    refuse("the base name " + quoted(name) +
           " (--name) must be a plain file name without directories; --out takes the directory");
  }
}

// Results name the ramp viridis.PNG, and viewers go by that.
std::string whyNotPng(const fs::path& ramp) {
  constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
  std::array<char, kSignature.size()> start{};
  std::ifstream file(ramp, std::ios::binary);
  if (!file) {
    return "permission denied";
  }
  file.read(start.data(), start.size());
  return std::string_view(start.data(), start.size()) == kSignature ? "" : "it is not a PNG image";
}

void requireRamp(const fs::path& ramp) {
  std::error_code ignored;
  std::string why;
  if (!fs::exists(ramp, ignored)) {
    why = "no such file";
  } else if (!fs::is_regular_file(ramp, ignored)) {
    why = "it is not a file";
  } else {
    why = whyNotPng(ramp);
  }
  if (!why.empty()) {
    refuse("cannot read the colour ramp " + ramp.string() + ": " + why +
           ". Give another image with --ramp, or none: quor installs share/quor/viridis.PNG");
  }
}

// The directory, or the first one above it that is there: a result could be written if a file can
// be made in it, in the way in which results are.
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
  try {
    const quorkit::NewFile probe(there / (name + ".json"));
  } catch (const quorkit::FileError& failure) {
    refuse(what + "no file " + quoted(name + ".json") + " can be made in " + there.string() + ": " +
           reasonOf(failure.error()));
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
  for (const char* extension : {".obj", ".mtl", ".json", ".html"}) {
    if (destination.hasPage || std::string_view(extension) != ".html") {
      requireReplaceable(destination.directory / (destination.name + extension), part);
    }
  }
  requireReplaceable(destination.directory / "viridis.PNG", part);
}

}  // namespace heatmap
