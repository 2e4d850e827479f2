#include "results/assets.h"

#include <system_error>

#if defined(_WIN32)
#include <windows.h>

#include <array>
#elif defined(__APPLE__)
#include <mach-o/dyld.h>

#include <array>
#include <cstdint>
#endif

namespace heatmap {
namespace {

namespace fs = std::filesystem;

// The file of this program; empty if the system does not say.
fs::path programPath() {
#if defined(_WIN32)
  std::array<wchar_t, 32768> path{};
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return length < path.size() ? fs::path(path.data(), path.data() + length) : fs::path();
#elif defined(__APPLE__)
  std::array<char, 4096> path{};
  std::uint32_t size = path.size();
  return _NSGetExecutablePath(path.data(), &size) == 0 ? fs::path(path.data()) : fs::path();
#else
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored);
#endif
}

}  // namespace

fs::path assetPath(const std::string& name) {
  std::error_code ignored;
  const fs::path program = programPath();
  const fs::path installed = program.parent_path().parent_path() / "share" / "quor" / name;
  return !program.empty() && fs::exists(installed, ignored) ? installed
                                                            : fs::path(HEATMAP_ASSETS) / name;
}

}  // namespace heatmap
