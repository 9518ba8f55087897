#pragma once

/// @file  How texture containers store texels, and what becomes of them.

#include "RenderingBase/host/imaging/BlockDecoder.h"
#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace rb::imaging {

/// The type of a number in a plain texel. The signed ones stand for -1 to 1, which becomes 0 to
/// 255; the 16-bit ones are delivered in 8 bits, rounded.
enum class TexelSample : std::uint8_t {
    Unorm8,
    Snorm8,
    Unorm16,
    Snorm16,
    Half,
    Float
};

/// Numbers of one type side by side, in the order of the delivered channels. Where more are stored
/// than delivered the last ones are padding; those that are not stored are 0.
struct PlainTexels {
    TexelSample sample;
    int storedChannels;
};

/// Little-endian words in which each channel has some bits.
struct MaskedTexels {
    std::array<std::uint32_t, 4> masks;  ///< Red or grey, green, blue, alpha; 0: not stored.
    bool isSigned = false;               ///< Two's complement for -1 to 1.
};

/// Three floats without sign in 32 bits: of 11, 11 and 10 bits, or with a common exponent.
enum class PackedFloats : std::uint8_t {
    R11G11B10,
    R9G9B9E5
};

/// Blocks of 4 x 4 texels.
struct BlockTexels {
    enum class Colors : std::uint8_t {
        All,
        Opaque,     ///< The alpha that is decoded is dropped.
        RedInAlpha  ///< Red was stored as alpha, for its better precision there.
    };
    BlockKind kind;
    Colors colors = Colors::All;
};

struct TexelFormat {
    std::string name;               ///< As its standard has it: "BC7_UNORM".
    KVRPixelImageFormat delivered;  ///< What `decodeTexels` makes of it.
    std::uint32_t bytes;            ///< Of a texel, or of a block.
    std::variant<PlainTexels, MaskedTexels, PackedFloats, BlockTexels> code;

    /// Whether what is stored is what is delivered.
    bool isDeliveredAsStored() const;
    /// The bytes of a picture, its rows without padding; the largest number when there are more.
    std::uint64_t storedBytes(std::int64_t width, std::int64_t height) const;
};

/// The format with the delivered format and the size that follow from @p code.
TexelFormat texelFormat(std::string name, const PlainTexels& code);
TexelFormat texelFormat(std::string name, PackedFloats code);
TexelFormat texelFormat(std::string name, const BlockTexels& code);
/// @param bytes  Of a texel, 1 to 4.
TexelFormat texelFormat(std::string name, const MaskedTexels& code, std::uint32_t bytes);

/// The same with its channels in another order.
TexelFormat inOrder(TexelFormat format, KVRPixelImageFormat delivered);

/// Decodes a picture. Large ones are divided among threads.
/// @param stored  `storedBytes` of them.
/// @param pixels  width x height pixels of the delivered format.
void decodeTexels(const TexelFormat& format, std::span<const std::byte> stored, std::int64_t width,
                  std::int64_t height, std::span<std::byte> pixels);

}  // namespace rb::imaging
