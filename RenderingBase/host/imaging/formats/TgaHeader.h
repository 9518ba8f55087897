#pragma once

/// @file  What a TGA file says before and behind its pixels. The layout is in TgaHeader.cpp.

#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <cstdint>

namespace rb::imaging {

struct TgaHeader {
    enum class Kind {
        Indexed,
        Color,
        Grey
    };
    std::int64_t width = 0, height = 0;
    Kind kind = Kind::Color;
    bool runLengths = false;
    unsigned bits = 0;   ///< Of a stored pixel: 8, 15, 16, 24 or 32.
    bool alpha = false;  ///< Pixels, or entries of the map, have an alpha that means something.
    bool rightToLeft = false;  ///< Rows begin at their right end.
    bool topDown = false;      ///< Otherwise the bottom row comes first.
    unsigned mapFirst = 0;     ///< The index that names the first entry of the colour map.
    unsigned mapEntries = 0;
    unsigned mapBits = 0;  ///< Of an entry: 15, 16, 24 or 32.
    std::uint64_t mapBegin = 0;
    std::uint64_t pixelsBegin = 0;

    std::size_t pixelBytes() const { return (bits + 7) / 8; }
    std::size_t mapEntryBytes() const { return (mapBits + 7) / 8; }
    /// Bits of what holds the colour: of a pixel, or of an entry of the map.
    unsigned colorBits() const { return kind == Kind::Indexed ? mapBits : bits; }
};

/// Whether the beginning of a file could be that of a TGA file.
bool isPlausibleTga(std::span<const std::byte> head);

/// Reads and checks everything but the sides.
ReadResult readTgaHeader(ByteSource& source, TgaHeader& header);

}  // namespace rb::imaging
