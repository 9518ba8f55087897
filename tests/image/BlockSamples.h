#pragma once

/// @file  Blocks of compressed textures for tests, and what `oiiotool` makes of them.

#include "RenderingBase/host/imaging/BlockDecoder.h"
#include "tests/image/ImageFiles.h"
#include "tests/image/TextureBuilder.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace rb::test {

using imaging::BlockKind;

inline constexpr BlockKind kBlockKinds[] = {
    BlockKind::BC1,        BlockKind::BC2, BlockKind::BC3,       BlockKind::BC4,
    BlockKind::BC4Signed,  BlockKind::BC5, BlockKind::BC5Signed, BlockKind::BC6H,
    BlockKind::BC6HSigned, BlockKind::BC7};

inline std::size_t blockCount(int width, int height) {
    return static_cast<std::size_t>((width + 3) / 4) * static_cast<std::size_t>((height + 3) / 4);
}

/// The bytes of all blocks of a picture.
inline std::string randomBlocks(BlockKind kind, int width, int height, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::string blocks(blockCount(width, height) * imaging::blockBytes(kind), '\0');
    for (char& byte : blocks) byte = static_cast<char>(random());
    return blocks;
}

/// Sets bits @p place to @p place + @p count - 1 of a block.
inline void setBits(char* block, unsigned place, unsigned count, unsigned value) {
    for (unsigned i = 0; i < count; ++i, ++place) {
        const unsigned byte = static_cast<unsigned char>(block[place / 8]);
        const unsigned bit = 1u << place % 8;
        block[place / 8] = static_cast<char>(value >> i & 1 ? byte | bit : byte & ~bit);
    }
}

/// A block of fields, each {bits, value}, from the lowest bit on.
inline std::string blockOf(std::size_t bytes,
                           const std::vector<std::pair<unsigned, unsigned>>& fields) {
    std::string block(bytes, '\0');
    unsigned place = 0;
    for (const auto& [count, value] : fields) {
        setBits(block.data(), place, count, value);
        place += count;
    }
    return block;
}

/// The pixels of a picture; the test fails when the portable version gives others.
inline std::string decoded(BlockKind kind, const std::string& blocks, int width, int height) {
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::string pixels(count * imaging::decodedPixelBytes(kind), '\0'), portable = pixels;
    imaging::decodeBlocks(kind, std::as_bytes(std::span(blocks)), width, height,
                          std::as_writable_bytes(std::span(pixels)));
    imaging::detail::decodeBlocksPortable(kind, std::as_bytes(std::span(blocks)), width, height,
                                          std::as_writable_bytes(std::span(portable)));
    EXPECT_TRUE(pixels == portable) << width << " x " << height;
    return pixels;
}

/// What tells a .dds file of a kind: a four-character code, or else a number of the "DX10" header.
struct DdsCode {
    const char* fourCharacters;
    int dxgi;
};

inline std::string ddsFile(const DdsCode& code, int width, int height, const std::string& blocks) {
    DdsBuilder dds =
        dx10(static_cast<std::uint32_t>(code.dxgi), static_cast<std::uint32_t>(width), blocks);
    dds.height = static_cast<std::uint32_t>(height);
    dds.fourCC = code.fourCharacters;
    return dds.build();
}

/// The pixels of a .dds file as `oiiotool` decodes it, laid out as those of `decodeBlocks`.
inline std::string pixelsByOiiotool(BlockKind kind, const std::string& path) {
    const TempFolder folder;
    const auto channels = [&](const std::string& names, const char* extension) {
        // Otherwise colours are multiplied by alpha.
        const std::string out = folder.file("channels." + std::string(extension));
        runProgram("oiiotool --iconfig oiio:UnassociatedAlpha 1 " + shellWord(path) + " --ch " +
                   names + " -o " + shellWord(out));
        return out;
    };
    if (kind == BlockKind::BC6H || kind == BlockKind::BC6HSigned)
        return rawPixels(loadFile(channels("R,G,B", "exr")));
    if (kind == BlockKind::BC4) return decodedByConvert(channels("0", "pgm"), "gray");
    if (kind == BlockKind::BC5) return decodedByConvert(channels("0,1,B=0", "ppm"), "rgb");
    const std::string colors = decodedByConvert(channels("R,G,B", "ppm"), "rgb");
    const std::string alphas = decodedByConvert(channels("A", "pgm"), "gray");
    std::string pixels;
    for (std::size_t i = 0; i < alphas.size(); ++i) pixels += colors.substr(3 * i, 3) + alphas[i];
    return pixels;
}

/// Signed binary16 bits with every negative zero as a positive one. The description of the format
/// gives a mixed value that is rounded to zero its sign; other decoders drop it.
inline std::string withoutNegativeZeros(std::string pixels) {
    for (std::size_t i = 0; i + 1 < pixels.size(); i += 2)
        if (pixels[i] == '\0' && pixels[i + 1] == '\x80') pixels[i + 1] = '\0';
    return pixels;
}

/// Where two pictures differ first, in words; empty when they are equal.
inline std::string firstDifference(BlockKind kind, const std::string& ours,
                                   const std::string& theirs, int width) {
    if (ours.size() != theirs.size())
        return std::to_string(ours.size()) + " and " + std::to_string(theirs.size()) + " bytes";
    const auto place = std::mismatch(ours.begin(), ours.end(), theirs.begin()).first - ours.begin();
    const auto at = static_cast<std::size_t>(place);
    if (at == ours.size()) return {};
    const std::size_t pixel = at / imaging::decodedPixelBytes(kind);
    const std::size_t x = pixel % static_cast<std::size_t>(width);
    const std::size_t y = pixel / static_cast<std::size_t>(width);
    return "pixel " + std::to_string(x) + ", " + std::to_string(y) + ", byte " +
           std::to_string(at % imaging::decodedPixelBytes(kind)) + ": " +
           std::to_string(static_cast<unsigned char>(ours[at])) + " and " +
           std::to_string(static_cast<unsigned char>(theirs[at]));
}

}  // namespace rb::test
