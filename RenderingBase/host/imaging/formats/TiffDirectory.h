#pragma once

/// @file  What the first directory of a TIFF file declares, checked, in plain values.

#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffCompression.h"
#include "RenderingBase/host/imaging/formats/TiffHandle.h"
#include "RenderingBase/host/imaging/formats/TiffSamples.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace rb::imaging {

/// What the samples mean.
enum class TiffColor {
    MinIsWhite,
    MinIsBlack,
    Rgb,
    Palette,
    Cmyk,
    CieLab,  ///< a and b signed.
    IccLab,  ///< a and b with an offset (Adobe TIFF Technical Note 4).
    LogL,    ///< Decoded to 32-bit float Y.
    LogLuv,  ///< Decoded to 32-bit float XYZ.
};

/// Pixels are stored in blocks, tiles or strips: as many across as there are tile columns (1 for
/// strips). Planar files have as many blocks again for every sample.
struct TiffDirectory {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool tiled = false;
    bool planar = false;
    std::uint32_t blockWidth = 0;
    std::uint32_t blockHeight = 0;  ///< A strip's rows; the last strip may have fewer.
    int samples = 0;                ///< Of a pixel, as they are decoded.
    SampleType type;                ///< Of a sample, as it is decoded.
    int storedSamples = 0;          ///< As the file says.
    int storedBits = 0;
    TiffColor color = TiffColor::MinIsBlack;
    int alphaSample = -1;  ///< Which sample is alpha; -1 for none.
    /// The library's conversion to 8-bit RGB is needed: subsampled YCbCr, old-style JPEG.
    bool throughRgba = false;
    const TiffCompression* compression = nullptr;
    std::vector<unsigned char> palette;  ///< RGB of each index.
    Resolution resolution;
    std::vector<std::byte> profile;

    int colorSamples() const {
        return color == TiffColor::Cmyk ? 4
               : color == TiffColor::MinIsWhite || color == TiffColor::MinIsBlack ||
                       color == TiffColor::Palette || color == TiffColor::LogL
                   ? 1
                   : 3;
    }
    std::uint32_t across() const { return (width - 1) / blockWidth + 1; }
    std::uint32_t down() const { return (height - 1) / blockHeight + 1; }
    int samplesInBlock() const { return planar ? 1 : samples; }
    /// Bytes of a decoded row of a block.
    std::uint64_t rowBytes() const {
        return (std::uint64_t{blockWidth} * static_cast<std::uint64_t>(samplesInBlock()) *
                    static_cast<std::uint64_t>(type.bits) +
                7) /
               8;
    }
    /// Rows that are stored in the blocks of block row @p row.
    std::uint32_t rowsInBlock(std::uint32_t row) const {
        return tiled || row + 1 < down() ? blockHeight : height - row * blockHeight;
    }
};

/// Reads the directory of an open handle.
ReadResult readTiffDirectory(const TiffHandle& handle, TiffDirectory& directory);

/// Tells the library in which form to decode; for every handle on the file.
void setDecodedForm(const TiffHandle& handle);

/// The fewest bytes in which the pixels that @p directory declares can be stored.
std::uint64_t leastTiffBytes(const TiffDirectory& directory);

}  // namespace rb::imaging
