#pragma once

/// @file  The sample files as files, whatever is in them.

#include <filesystem>
#include <string>

namespace rb::cli::tour {

/// All bytes of a file; none when it cannot be read.
std::string readFile(const std::filesystem::path& path);

/// The extension in lower case, without the dot. The path may be of any bytes.
std::string kindOf(const std::filesystem::path& path);

}  // namespace rb::cli::tour
