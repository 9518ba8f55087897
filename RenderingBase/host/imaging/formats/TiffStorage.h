#pragma once

/// @file  What a TIFF file says about its strips and tiles, compared with the bytes that are there.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"
#include "RenderingBase/host/imaging/formats/TiffHandle.h"

#include <cstdint>
#include <span>
#include <string>

namespace rb::imaging {

/// What the library may allocate in one piece while it decodes blocks of a file of @p fileBytes.
std::uint64_t decoderAllowance(std::uint64_t fileBytes, const TiffDirectory& directory);

/// Whether tiles are small enough to be decoded.
/// @param planes  How many are decoded at once; 1 for a file that is not planar.
ReadResult checkTileSize(const TiffDirectory& directory, std::uint64_t planes);

/// Compares the places and sizes of the blocks of all @p planes with the file's size, one by one
/// and together, and with what their pixels take at best. A file that is not planar has one plane,
/// 0.
ReadResult checkStoredBlocks(const TiffHandle& handle, std::uint64_t fileBytes,
                             const TiffDirectory& directory, std::span<const std::uint32_t> planes);

/// How messages name a block.
std::string nameOfBlock(const TiffDirectory& directory, std::uint32_t block);

}  // namespace rb::imaging
