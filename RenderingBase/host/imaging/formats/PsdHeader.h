#pragma once

/// @file  What a PSD or PSB file says before its merged picture.

#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace rb::imaging {

enum class PsdMode : std::uint16_t {
    Bitmap = 0,
    Grey = 1,
    Indexed = 2,
    Rgb = 3,
    Cmyk = 4,
    Multichannel = 7,
    Duotone = 8,
    Lab = 9,
};

enum class PsdCompression : std::uint16_t {
    Raw = 0,
    RunLengths = 1,
    Zip = 2,
    ZipOfDifferences = 3,
};

struct PsdHeader {
    bool big = false;  ///< PSB: longer sides, and some lengths of twice as many bytes.
    std::uint32_t channels = 0;
    std::uint32_t width = 0, height = 0;
    std::uint32_t depth = 0;  ///< Bits a sample: 1, 8, 16 or 32.
    PsdMode mode = PsdMode::Rgb;
    std::array<unsigned char, 768> palette{};  ///< All red values, all green, all blue.

    // Of the resources.
    Resolution resolution;
    std::vector<std::byte> profile;
    int transparentIndex = -1;  ///< Into the palette; -1 when all colours are opaque.
    bool mergedPictureIsReal = true;

    // Of the layers.
    bool hasLayers = false;
    /// The first channel behind those of the colour is the opacity of the merged picture.
    bool hasTransparency = false;

    PsdCompression compression = PsdCompression::Raw;
    std::uint64_t dataPlace = 0;  ///< Where the bytes of the merged picture begin.

    std::uint32_t colorChannels() const;
    bool hasAlphaChannel() const;
    /// How many channels are read, from the first on: those of the colour, then alpha.
    std::uint32_t wantedChannels() const { return colorChannels() + (hasAlphaChannel() ? 1 : 0); }
    /// Bytes of one row of one channel.
    std::size_t rowBytes() const { return (std::size_t{width} * depth + 7) / 8; }
    /// Of the number that tells how long a compressed row is.
    int countBytes() const { return big ? 4 : 2; }
};

/// Reads everything before the merged picture, and refuses what cannot be delivered.
ReadResult readPsdHeader(ByteSource& source, PsdHeader& header);

/// The fewest bytes that a whole file with this header can have.
std::uint64_t leastPsdBytes(const PsdHeader& header);

}  // namespace rb::imaging
