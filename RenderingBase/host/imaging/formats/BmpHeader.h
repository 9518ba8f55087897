#pragma once

/// @file  What a Windows bitmap says before its pixels. The layout is in BmpHeader.cpp.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/PackedPixels.h"

#include <cstdint>

namespace rb::imaging {

struct BmpHeader {
    std::int64_t width = 0, height = 0;  ///< As declared, but the height without its sign.
    bool topDown = false;                ///< Otherwise the bottom row comes first.
    unsigned bits = 0;        ///< Of a pixel: 1, 2, 4, 8 (indices of the palette), 16, 24, 32.
    bool runLengths = false;  ///< Of indices of 4 or 8 bits.
    ChannelMasks masks;       ///< Of pixels of 16 bits and more.
    std::uint64_t paletteBegin = 0;
    std::uint32_t paletteEntries = 0;  ///< As many as there are, up to what an index can name.
    unsigned paletteEntryBytes = 4;    ///< Blue, green, red; a fourth byte means nothing.
    std::uint64_t pixelsBegin = 0;
    Resolution resolution;
    std::uint64_t profileBegin = 0, profileBytes = 0;  ///< 0 bytes: none in the file.

    bool indexed() const { return bits <= 8; }
    /// What the pixels of a row take, and what they take with the bytes that fill up the row;
    /// meaningless for sides below 1.
    std::uint64_t usedRowBytes() const { return (rowBits() + 7) / 8; }
    std::uint64_t rowBytes() const { return (rowBits() + 31) / 32 * 4; }

private:
    std::uint64_t rowBits() const { return static_cast<std::uint64_t>(width) * bits; }
};

/// Reads and checks everything but the sides.
ReadResult readBmpHeader(ByteSource& source, BmpHeader& header);

}  // namespace rb::imaging
