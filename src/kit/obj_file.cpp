#include "kit/obj_file.h"

#include "kit/new_file.h"
#include "kit/obj_text.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace quorkit {
namespace {

namespace fs = std::filesystem;

fs::path withEnding(const fs::path& base, const char* ending) {
  fs::path path = base;
  path += ending;
  return path;
}

/// Copies the ramp next to the files, unless it is there already.
void copyRamp(const fs::path& source, const fs::path& target) {
  std::error_code isOther;
  if (fs::equivalent(source, target, isOther)) {
    return;
  }
  NewFile ramp(target);
  ramp.write(readWhole(source));
  ramp.finish();
  ramp.putInPlace();
}

}  // namespace

void writeObj(const MeshView& mesh, const double* field, const ObjPlace& place, double margin) {
  const fs::path base = fs::u8path(place.path);
  NewFile obj(withEnding(base, ".obj"));
  composeObj(mesh, field, base.filename().u8string() + ".mtl", margin,
             [&obj](std::string_view block) { obj.write(block); });
  obj.finish();

  NewFile material(withEnding(base, ".mtl"));
  material.write(quor::kMaterial);
  material.finish();

  if (place.ramp != nullptr) {
    copyRamp(fs::u8path(place.ramp), base.parent_path() / "viridis.PNG");
  }
  material.putInPlace();
  obj.putInPlace();
}

}  // namespace quorkit
