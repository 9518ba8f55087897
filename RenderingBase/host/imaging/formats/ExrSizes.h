#pragma once

/// @file  What the header of an OpenEXR part says about bytes: in the file, and in memory.

#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <ImfHeader.h>
#include <ImfPixelType.h>
#include <cstdint>

namespace rb::imaging {

/// Bytes of one sample.
std::uint64_t exrSampleBytes(Imf::PixelType type);

/// The fewest bytes that the pixels of a part take in a file, with all that belongs to them.
std::uint64_t leastExrBytes(const Imf::Header& part);

/// Refuses chunks that are out of proportion: the library keeps some of them in memory, whole ones
/// even of a smaller picture.
/// @param delivered     Bytes of all pixels that come out.
/// @param bytesOfAPixel What the conversion of a row keeps for each of its pixels; 0 without one.
ReadResult checkExrChunks(const Imf::Header& part, std::uint64_t delivered,
                          std::uint64_t bytesOfAPixel);

}  // namespace rb::imaging
