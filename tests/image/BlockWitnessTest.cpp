// Blocks of every kind, mode, partition, rotation and selection of indices with random other bits:
// pixels are those of another decoder, and those of a plain one.

#include "tests/image/BlockSamples.h"
#include "tests/image/ReferenceBlocks.h"

#include <gtest/gtest.h>

namespace rb::test {
namespace {

constexpr int kWidth = 512, kHeight = 256;  // 8192 blocks

char* blockAt(std::string& blocks, std::size_t index) { return blocks.data() + 16 * index; }

/// Each mode 1024 times, each value of the six bits behind it 16 times.
std::string everyBc7Mode() {
    std::string blocks = randomBlocks(BlockKind::BC7, kWidth, kHeight, 7);
    for (unsigned i = 0; i < 8192; ++i) {
        const unsigned mode = i % 8;
        setBits(blockAt(blocks, i), 0, mode + 1, 1u << mode);
        setBits(blockAt(blocks, i), mode + 1, 6, i / 8 % 64);
    }
    return blocks;
}

/// Each pattern of the five mode bits 256 times, each partition 8 times of those. In the modes with
/// one line the partition's bits are some of the indices.
std::string everyBc6hMode(std::uint32_t seed) {
    std::string blocks = randomBlocks(BlockKind::BC6H, kWidth, kHeight, seed);
    for (unsigned i = 0; i < 8192; ++i) {
        setBits(blockAt(blocks, i), 0, 5, i % 32);
        setBits(blockAt(blocks, i), 77, 5, i / 32 % 32);
    }
    return blocks;
}

void expectPixelsOfOiiotool(BlockKind kind, const DdsCode& code, const std::string& blocks) {
    const TempFolder folder;
    const std::string path = folder.write("a.dds", ddsFile(code, kWidth, kHeight, blocks));
    std::string ours = decoded(kind, blocks, kWidth, kHeight);
    if (kind == BlockKind::BC6HSigned) ours = withoutNegativeZeros(ours);
    EXPECT_EQ(firstDifference(kind, ours, pixelsByOiiotool(kind, path), kWidth), "");
}

TEST(BlockWitness, bc1_pixels_are_those_of_oiiotool) {
    expectPixelsOfOiiotool(BlockKind::BC1, {"DXT1", 0},
                           randomBlocks(BlockKind::BC1, kWidth, kHeight, 1));
}

TEST(BlockWitness, bc2_pixels_are_those_of_oiiotool) {
    expectPixelsOfOiiotool(BlockKind::BC2, {"DXT3", 0},
                           randomBlocks(BlockKind::BC2, kWidth, kHeight, 2));
}

TEST(BlockWitness, bc3_pixels_are_those_of_oiiotool) {
    expectPixelsOfOiiotool(BlockKind::BC3, {"DXT5", 0},
                           randomBlocks(BlockKind::BC3, kWidth, kHeight, 3));
}

TEST(BlockWitness, bc4_pixels_are_those_of_oiiotool) {
    expectPixelsOfOiiotool(BlockKind::BC4, {"ATI1", 0},
                           randomBlocks(BlockKind::BC4, kWidth, kHeight, 4));
}

TEST(BlockWitness, bc5_pixels_are_those_of_oiiotool) {
    expectPixelsOfOiiotool(BlockKind::BC5, {"DX10", 83},
                           randomBlocks(BlockKind::BC5, kWidth, kHeight, 5));
}

TEST(BlockWitness, bc6h_pixels_are_those_of_oiiotool_in_every_mode) {
    expectPixelsOfOiiotool(BlockKind::BC6H, {"DX10", 95}, everyBc6hMode(6));
}

TEST(BlockWitness, signed_bc6h_pixels_are_those_of_oiiotool_in_every_mode) {
    expectPixelsOfOiiotool(BlockKind::BC6HSigned, {"DX10", 96}, everyBc6hMode(66));
}

TEST(BlockWitness, bc7_pixels_are_those_of_oiiotool_in_every_mode) {
    expectPixelsOfOiiotool(BlockKind::BC7, {"DX10", 98}, everyBc7Mode());
}

/// The pixels of one block of a picture, decoded by a plain decoder.
std::string plainBlock(BlockKind kind, std::span<const std::byte> block) {
    std::string pixels;
    const auto append = [&pixels](int value) { pixels += static_cast<char>(value); };
    if (kind == BlockKind::BC1 || kind == BlockKind::BC7) {
        const RgbaBlock all = kind == BlockKind::BC1 ? referenceBc1(block.first<8>())
                                                     : referenceBc7(block.first<16>());
        for (const auto& pixel : all)
            for (const int value : pixel) append(value);
    } else if (kind == BlockKind::BC4Signed) {
        for (const int value : referenceSigned(block.first<8>())) append(value);
    } else if (kind == BlockKind::BC5Signed) {
        const auto red = referenceSigned(block.first<8>());
        const auto green = referenceSigned(block.last<8>());
        for (std::size_t i = 0; i < 16; ++i)
            for (const int value : {red[i], green[i], 0}) append(value);
    } else {
        const bool isSigned = kind == BlockKind::BC6HSigned;
        for (const auto& pixel : referenceBc6h(block.first<16>(), isSigned))
            for (const int bits : pixel) append(bits), append(bits >> 8);
    }
    return pixels;
}

void expectPlainPixels(BlockKind kind, const std::string& blocks) {
    const std::size_t step = imaging::blockBytes(kind);
    for (std::size_t i = 0; i < blocks.size(); i += step) {
        const std::string block = blocks.substr(i, step);
        ASSERT_EQ(firstDifference(kind, decoded(kind, block, 4, 4),
                                  plainBlock(kind, std::as_bytes(std::span(block))), 4),
                  "")
            << "block " << i / step;
    }
}

TEST(BlockWitness, pixels_are_those_of_a_plain_decoder) {
    expectPlainPixels(BlockKind::BC1, randomBlocks(BlockKind::BC1, kWidth, kHeight, 11));
    expectPlainPixels(BlockKind::BC6H, everyBc6hMode(12));
    expectPlainPixels(BlockKind::BC6HSigned, everyBc6hMode(13));
    expectPlainPixels(BlockKind::BC7, everyBc7Mode());
}

TEST(BlockWitness, signed_channels_are_those_of_a_plain_decoder_for_all_ends) {
    std::string blocks = randomBlocks(BlockKind::BC4Signed, 1024, 1024, 14);
    for (std::size_t i = 0; i < 65536; ++i) {
        setBits(blocks.data() + 8 * i, 0, 16, static_cast<unsigned>(i));
        // All eight choices, twice.
        setBits(blocks.data() + 8 * i, 16, 24, 076543210);
        setBits(blocks.data() + 8 * i, 40, 24, 001234567);
    }
    expectPlainPixels(BlockKind::BC4Signed, blocks);
    expectPlainPixels(BlockKind::BC5Signed, blocks);
}

}  // namespace
}  // namespace rb::test
