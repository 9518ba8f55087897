#pragma once

/// @file  What a reader of one texture container looks like. Private to this folder and its caller.
///
/// A container holds one picture (or the six faces of a cube) at several sizes: level 0 is the full
/// one, each further level has half the sides of the one before, rounded down, 1 at least.

#include "RenderingBase/host/imaging/formats/ByteSource.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace rb::imaging {

/// What a texture file says about itself.
struct TextureHeader {
    std::int64_t width = 0;  ///< Of level 0, in texels.
    std::int64_t height = 0;
    int faces = 1;  ///< 1, or 6 in the order +X -X +Y -Y +Z -Z.
    int levels = 1;
    TexelFormat texels;
    std::uint64_t leastFileBytes = 0;  ///< The fewest bytes that a whole file can have.
};

/// A side of a level, in texels.
inline std::int64_t sideOfLevel(std::int64_t side, int level) {
    return std::max<std::int64_t>(1, side >> level);
}

/// How many levels there are down to 1 x 1.
inline int mostLevels(std::int64_t width, std::int64_t height) {
    const std::int64_t longest = std::max<std::int64_t>({width, height, 1});
    return static_cast<int>(std::bit_width(static_cast<std::uint64_t>(longest)));
}

/// One open file of one format. The source outlives the reader.
class TextureReader {
public:
    virtual ~TextureReader() = default;
    /// Reads the header; no memory for texels is allocated here.
    [[nodiscard]] virtual ReadResult readHeader(TextureHeader& header) = 0;
    /// Gives the texels of one surface as they are stored. Called after readHeader, with all faces
    /// of a level one after the other.
    /// @param stored  `TexelFormat::storedBytes` of the level.
    [[nodiscard]] virtual ReadResult readSurface(int face, int level,
                                                 std::span<std::byte> stored) = 0;
};

/// One format: its name, its first bytes and how it is opened.
struct TextureFormat {
    std::string_view name;  ///< "dds"; also its extension.
    std::string_view magic;
    std::unique_ptr<TextureReader> (*open)(ByteSource& source);
};

/// All formats.
std::span<const TextureFormat> textureFormats();

extern const TextureFormat kDdsFormat, kKtx2Format;

}  // namespace rb::imaging
