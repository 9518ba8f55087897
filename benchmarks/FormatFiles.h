#pragma once

/// @file  The files that formats_benchmark and processes.sh read, 4096 x 4096 pixels each. They are
/// made once and kept for the next run.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace rb::benchmarks {

inline constexpr std::size_t kSide = 4096;

/// A picture of 64 colours, RGB: broad flat shapes, and noise in an eighth of its area, so that run
/// lengths have both to do.
const std::vector<std::uint8_t>& drawing();

/// The path of @p name: "drawing." and a format below, or "blocks-bc1.dds", "blocks-bc7.dds".
///
///   24.bmp  rle8.bmp  raw.tga  rle.tga  raw.psd  rle.psd  raw.sgi  rle.sgi  mixed.pic  bgra.dds
///   zstd.ktx2
///
/// oiiotool and ImageMagick make those that they can write. Exits when it cannot be made.
std::string formatFile(const std::string& name);

/// The blocks in a file of blocks.
std::vector<std::byte> blocksOf(const std::string& path);

}  // namespace rb::benchmarks
