// Files that are there whole or not at all.
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>

namespace heatmap {

// Writes a file under another name, FILE.part, and renames it when it is whole. If that fails, or
// `write` throws, what was there before stays as it was and nothing half written is left.
// Throws std::runtime_error.
void writeWhole(const std::filesystem::path& file, const std::function<void(std::ostream&)>& write);

}  // namespace heatmap
