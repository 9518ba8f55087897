#pragma once

/// @file  Which of the samples are images, texture files, and photometric files.

#include <filesystem>
#include <vector>

namespace rb::cli::tour {

/// The files in a folder, and in those inside it, whose extension says image, in the order of their
/// names. Texture files are not among them.
std::vector<std::filesystem::path> imageFiles(const std::filesystem::path& folder);

/// Likewise those whose extension says texture file: dds and ktx2.
std::vector<std::filesystem::path> textureFiles(const std::filesystem::path& folder);

/// Likewise those whose extension says photometric file: ies.
std::vector<std::filesystem::path> photometricFiles(const std::filesystem::path& folder);

}  // namespace rb::cli::tour
