#pragma once

/// @file  What a reader of one image format looks like. Private to this folder and its caller.
///
/// A reader only knows its format. Limits, the comparison of declared sizes with the bytes that are
/// there and the catching of exceptions stand once, in ReaderGuards.h.

#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rb::imaging {

/// Why a file is refused. The texts complete "expected ..., found ...".
struct Refusal {
    std::string expected;
    std::string found;
    std::string where;  ///< "byte 16", "row 12"; empty when it is the file as a whole.
};

/// Nothing when all went well.
using ReadResult = std::optional<Refusal>;

inline Refusal refuse(std::string expected, std::string found, std::string where = {}) {
    return {std::move(expected), std::move(found), std::move(where)};
}

/// What a file says about itself.
struct ImageHeader {
    std::int64_t width = 0;
    std::int64_t height = 0;
    KVRPixelImageFormat format = KVRPixelImageFormat::None;  ///< In which pixels are delivered.
    int storedChannels = 0;
    int storedBits = 0;  ///< Of one stored channel.
    Resolution resolution;
    std::vector<std::byte> profile;  ///< The embedded ICC profile; empty without one.
    /// The pixels come out as sRGB, whatever the embedded profile says (CMYK and Lab files).
    bool deliversSRGB = false;
    /// The fewest bytes that a whole file with these dimensions can have: for a compressed format,
    /// what its best compression ratio leaves.
    std::uint64_t leastFileBytes = 0;
};

/// One open file of one format. The source outlives the reader.
class ImageReader {
public:
    virtual ~ImageReader() = default;
    /// Reads the header; no pixel memory is allocated here.
    [[nodiscard]] virtual ReadResult readHeader(ImageHeader& header) = 0;
    /// Decodes into @p pixels, which has width x height x bytes per pixel of the format announced
    /// and undefined content. Called at most once, after readHeader.
    [[nodiscard]] virtual ReadResult readPixels(std::span<std::byte> pixels) = 0;
};

/// One format: how it is recognised and how it is opened.
struct ImageFormat {
    std::string_view name;  ///< "png"; also its usual extension.
    /// Whether a file that begins with @p head (up to `kHeadBytes`) is of this format.
    bool (*recognises)(std::span<const std::byte> head);
    std::unique_ptr<ImageReader> (*open)(ByteSource& source);
    /// The only extension, in lower case, under which files are tried; empty: any. For a format
    /// without a magic number, whose beginning many a file could have.
    std::string_view requiredExtension = {};
};

inline constexpr std::size_t kHeadBytes = 512;

/// All formats, in the order in which they are tried.
std::span<const ImageFormat> imageFormats();

extern const ImageFormat kPngFormat, kJpegFormat, kTiffFormat, kExrFormat, kHdrFormat, kBmpFormat,
    kPsdFormat, kSgiFormat, kPicFormat, kTgaFormat;

}  // namespace rb::imaging
