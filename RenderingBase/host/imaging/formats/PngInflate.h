#pragma once

/// @file  The fast way through the pixels of a PNG file that is not interlaced.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::imaging {

/// What the fast way needs to know of a file.
struct PngRows {
    std::size_t height = 0;
    std::size_t rowBytes = 0;          ///< Of a stored row, without its filter type.
    int bytesPerPixel = 0;             ///< Stored: 1 to 4 with 8 bits a sample, 2 to 8 with 16.
    bool wide = false;                 ///< 16 bits a sample, delivered as 8.
    std::uint64_t firstDataChunk = 0;  ///< Where in the file the first IDAT chunk begins.
};

/// Decodes all rows into @p pixels, everything from the first IDAT chunk to the end of IEND
/// included. Throws std::bad_alloc.
/// Memory: beside the pixels, the compressed data and the stored rows as a whole.
/// @return  False when the file is not entirely as it should be; pixels are undefined then. What is
///          wrong, and whether it matters, is for the ordinary reader to find out.
bool decodePngRows(ByteSource& source, const PngRows& rows, std::span<std::byte> pixels);

}  // namespace rb::imaging
