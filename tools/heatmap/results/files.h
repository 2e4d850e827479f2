// Whole files, read and written, with reasons in words.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace heatmap {

// Why a file cannot be opened, read or written, by the number that the system gives.
std::string reasonOf(int error);

// Throws std::runtime_error with the reason, without the name of the file.
std::string readWhole(const std::filesystem::path& file);

// Writes a file under a name of its own and renames it when it is whole. If that fails, what was
// there before stays as it was and nothing half written is left.
// Throws std::runtime_error with the name of the file and the reason.
void writeWhole(const std::filesystem::path& file, std::string_view content);

}  // namespace heatmap
