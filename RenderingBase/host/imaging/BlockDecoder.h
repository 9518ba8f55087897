#pragma once

/// @file  Decoding of block-compressed textures: BC1 to BC7 (S3TC, RGTC and BPTC by other names).
///
/// Blocks of 4 x 4 pixels in, pixels out; the containers around them are the readers' business.
///
///     std::vector<std::byte> pixels(width * height * decodedPixelBytes(BlockKind::BC7));
///     decodeBlocks(BlockKind::BC7, blocks, width, height, pixels);

#include "RenderingBase/host/base/KVRExport.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::imaging {

/// A way of storing 4 x 4 pixels, and what they are delivered as.
enum class BlockKind {
    BC1,         ///< RGBA bytes; alpha is 0 or 255.
    BC2,         ///< RGBA bytes.
    BC3,         ///< RGBA bytes.
    BC4,         ///< One byte.
    BC4Signed,   ///< One byte: -1 is 0, and 1 is 255.
    BC5,         ///< RGB bytes; blue is 0.
    BC5Signed,   ///< RGB bytes: -1 is 0, and 1 is 255; blue is 0.
    BC6H,        ///< RGB, binary16 bits, not negative.
    BC6HSigned,  ///< RGB, binary16 bits.
    BC7,         ///< RGBA bytes.
};

/// Bytes of one block of 4 x 4 pixels: 8 or 16.
KVR_EXPORT std::size_t blockBytes(BlockKind kind) noexcept;

/// Bytes of one delivered pixel: 1, 3, 4 or, with BC6H, 6.
KVR_EXPORT std::size_t decodedPixelBytes(BlockKind kind) noexcept;

/// Decodes a picture of @p width x @p height pixels into @p pixels.
///
/// @param blocks  The blocks of the picture, row by row: ceil(width / 4) * ceil(height / 4).
///                What a block holds beyond the picture's edges is dropped.
/// @param pixels  width * height pixels; rows without gaps, top row first. Any alignment.
///
/// Errors: none. Every pattern of bits stands for some pixels, a reserved one for black,
/// transparent where there is alpha. The caller sees to it that both spans have at least these
/// sizes. Throws std::bad_alloc.
///
/// Threads: large pictures are decoded on several at once; the call returns when all is done. May
/// be called at once on different pixels. Cost: no memory that grows with the picture.
KVR_EXPORT void decodeBlocks(BlockKind kind, std::span<const std::byte> blocks, std::int64_t width,
                             std::int64_t height, std::span<std::byte> pixels);

namespace detail {

/// What `decodeBlocks` does on processors without AVX2.
KVR_EXPORT void decodeBlocksPortable(BlockKind kind, std::span<const std::byte> blocks,
                                     std::int64_t width, std::int64_t height,
                                     std::span<std::byte> pixels);

}  // namespace detail
}  // namespace rb::imaging
