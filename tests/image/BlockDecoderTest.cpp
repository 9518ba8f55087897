// Blocks worked out by hand, the edges of pictures, many threads, and real files.

#include "tests/image/BlockSamples.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace rb::test {
namespace {

/// The values of pixel @p index of a single block: bytes, or for BC6H 16 bits.
std::vector<int> pixelOf(BlockKind kind, const std::string& block, std::size_t index) {
    const std::string pixels = decoded(kind, block, 4, 4);
    const std::size_t size = imaging::decodedPixelBytes(kind);
    const std::string pixel = pixels.substr(index * size, size);
    std::vector<int> values;
    for (const char value : pixel) values.push_back(static_cast<unsigned char>(value));
    if (size != 6) return values;
    return {values[0] | values[1] << 8, values[2] | values[3] << 8, values[4] | values[5] << 8};
}

using Values = std::vector<int>;

// Each row chooses 0, 1, 2, 3.
constexpr std::pair<unsigned, unsigned> kFourChoices = {32, 0xe4e4e4e4};
constexpr unsigned kStoredRed = 0xf800, kStoredBlue = 0x001f;

TEST(BlockDecoder, sizes_are_those_of_the_kinds) {
    for (const BlockKind kind : kBlockKinds) {
        const bool small =
            kind == BlockKind::BC1 || kind == BlockKind::BC4 || kind == BlockKind::BC4Signed;
        EXPECT_EQ(imaging::blockBytes(kind), small ? 8u : 16u);
    }
    EXPECT_EQ(imaging::decodedPixelBytes(BlockKind::BC1), 4u);
    EXPECT_EQ(imaging::decodedPixelBytes(BlockKind::BC4Signed), 1u);
    EXPECT_EQ(imaging::decodedPixelBytes(BlockKind::BC5), 3u);
    EXPECT_EQ(imaging::decodedPixelBytes(BlockKind::BC6H), 6u);
    EXPECT_EQ(imaging::decodedPixelBytes(BlockKind::BC7), 4u);
}

TEST(BlockDecoder, bc1_has_thirds_when_the_first_colour_is_larger) {
    const auto block = blockOf(8, {{16, kStoredRed}, {16, kStoredBlue}, kFourChoices});
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 0), (Values{255, 0, 0, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 5), (Values{0, 0, 255, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 10), (Values{170, 0, 85, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 15), (Values{85, 0, 170, 255}));
}

TEST(BlockDecoder, bc1_has_a_middle_and_nothing_otherwise) {
    const auto block = blockOf(8, {{16, kStoredBlue}, {16, kStoredRed}, kFourChoices});
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 4), (Values{0, 0, 255, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 1), (Values{255, 0, 0, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 14), (Values{128, 0, 128, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, block, 11), (Values{0, 0, 0, 0}));
    // Equal colours have no thirds either. 21 of 31 is 172.7, 42 of 63 is 170.
    const auto grey = blockOf(8, {{16, 0xad55}, {16, 0xad55}, kFourChoices});
    EXPECT_EQ(pixelOf(BlockKind::BC1, grey, 2), (Values{173, 170, 173, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC1, grey, 3), (Values{0, 0, 0, 0}));
}

TEST(BlockDecoder, bc2_has_four_bits_of_alpha_and_always_thirds) {
    const auto block = blockOf(
        16,
        {{32, 0x76543210}, {32, 0xfedcba98}, {16, kStoredBlue}, {16, kStoredRed}, kFourChoices});
    EXPECT_EQ(pixelOf(BlockKind::BC2, block, 0), (Values{0, 0, 255, 0}));
    EXPECT_EQ(pixelOf(BlockKind::BC2, block, 6), (Values{85, 0, 170, 102}));
    EXPECT_EQ(pixelOf(BlockKind::BC2, block, 15), (Values{170, 0, 85, 255}));
}

TEST(BlockDecoder, bc3_alpha_has_six_values_between_falling_ends) {
    const auto block = blockOf(16, {{8, 240},
                                    {8, 30},
                                    {24, 076543210},
                                    {24, 076543210},
                                    {16, kStoredBlue},
                                    {16, kStoredRed},
                                    kFourChoices});
    const int alphas[] = {240, 30, 210, 180, 150, 120, 90, 60};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(pixelOf(BlockKind::BC3, block, i)[3], alphas[i % 8]) << i;
    EXPECT_EQ(pixelOf(BlockKind::BC3, block, 2), (Values{85, 0, 170, 210}));
}

TEST(BlockDecoder, bc4_has_four_values_and_the_extremes_with_rising_ends) {
    const auto block = blockOf(8, {{8, 20}, {8, 220}, {24, 076543210}, {24, 001234567}});
    const int values[] = {20, 220, 60, 100, 140, 180, 0, 255};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(pixelOf(BlockKind::BC4, block, i), Values{values[i]}) << i;
        EXPECT_EQ(pixelOf(BlockKind::BC4, block, 15 - i), Values{values[i]}) << i;
    }
}

TEST(BlockDecoder, signed_bc4_spans_from_black_to_white) {
    // 127 to -127 in sevenths: 127, -127, 90.71, 54.43, 18.14, -18.14, -54.43, -90.71.
    const auto block = blockOf(8, {{8, 127}, {8, 129}, {24, 076543210}, {24, 076543210}});
    const int falling[] = {255, 0, 219, 182, 146, 109, 73, 36};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(pixelOf(BlockKind::BC4Signed, block, i), Values{falling[i % 8]}) << i;
    // -100 and 50 in fifths: -70, -40, -10, 20.
    const auto rising = blockOf(8, {{8, 156}, {8, 50}, {24, 076543210}, {24, 076543210}});
    const int values[] = {27, 178, 57, 87, 117, 148, 0, 255};
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(pixelOf(BlockKind::BC4Signed, rising, i), Values{values[i % 8]}) << i;
}

TEST(BlockDecoder, signed_bc4_takes_its_least_number_as_the_one_above) {
    for (const unsigned first : {128u, 129u}) {
        // Equal ends: choices 6 and 7 are the extremes.
        const auto block = blockOf(8, {{8, first}, {8, 128}, {24, 076543210}, {24, 0}});
        EXPECT_EQ(pixelOf(BlockKind::BC4Signed, block, 0), Values{0});
        EXPECT_EQ(pixelOf(BlockKind::BC4Signed, block, 1), Values{0});
        EXPECT_EQ(pixelOf(BlockKind::BC4Signed, block, 7), Values{255});
    }
}

TEST(BlockDecoder, bc5_is_red_and_green) {
    const auto block = blockOf(16, {{8, 240},
                                    {8, 30},
                                    {24, 076543210},
                                    {24, 076543210},
                                    {8, 20},
                                    {8, 220},
                                    {24, 001234567},
                                    {24, 001234567}});
    EXPECT_EQ(pixelOf(BlockKind::BC5, block, 0), (Values{240, 255, 0}));
    EXPECT_EQ(pixelOf(BlockKind::BC5, block, 11), (Values{180, 140, 0}));
    const auto isSigned =
        blockOf(16, {{8, 127}, {8, 127}, {24, 0}, {24, 0}, {8, 129}, {8, 129}, {24, 0}, {24, 0}});
    EXPECT_EQ(pixelOf(BlockKind::BC5Signed, isSigned, 9), (Values{255, 0, 0}));
}

TEST(BlockDecoder, bc6h_mixes_the_bits_of_halves) {
    // Mode 3: two ends of ten bits a channel. 1023 is the largest half, 512 is 32800 * 31 / 64.
    const auto block = blockOf(16, {{5, 3},
                                    {10, 1023},
                                    {10, 0},
                                    {10, 512},
                                    {10, 0},
                                    {10, 1023},
                                    {10, 512},
                                    {3, 0},
                                    {4, 15},
                                    {4, 8}});
    EXPECT_EQ(pixelOf(BlockKind::BC6H, block, 0), (Values{0x7bff, 0, 15887}));
    EXPECT_EQ(pixelOf(BlockKind::BC6H, block, 1), (Values{0, 0x7bff, 15887}));
    // Index 8 has weight 34: 65535 * 30 / 64 is 30720, 65535 * 34 / 64 is 34815; times 31 / 64.
    EXPECT_EQ(pixelOf(BlockKind::BC6H, block, 2), (Values{14880, 16863, 15887}));
}

TEST(BlockDecoder, signed_bc6h_has_negative_halves) {
    // 511 is the largest half, 512 (-512) and 513 (-511) the least; 1 is 96 * 31 / 32.
    const auto block = blockOf(
        16,
        {{5, 3}, {10, 511}, {10, 512}, {10, 1}, {10, 513}, {10, 511}, {10, 1023}, {3, 0}, {4, 15}});
    EXPECT_EQ(pixelOf(BlockKind::BC6HSigned, block, 0), (Values{0x7bff, 0xfbff, 93}));
    EXPECT_EQ(pixelOf(BlockKind::BC6HSigned, block, 1), (Values{0xfbff, 0x7bff, 0x8000 + 93}));
}

TEST(BlockDecoder, bc7_mode_6_has_seven_bits_and_one_more) {
    const auto block = blockOf(16, {{7, 0x40},
                                    {7, 127},
                                    {7, 0},
                                    {7, 0},
                                    {7, 127},
                                    {7, 0},
                                    {7, 0},
                                    {7, 127},
                                    {7, 127},
                                    {1, 1},
                                    {1, 0},
                                    {3, 0},
                                    {4, 15},
                                    {4, 8}});
    EXPECT_EQ(pixelOf(BlockKind::BC7, block, 0), (Values{255, 1, 1, 255}));
    EXPECT_EQ(pixelOf(BlockKind::BC7, block, 1), (Values{0, 254, 0, 254}));
    EXPECT_EQ(pixelOf(BlockKind::BC7, block, 2), (Values{120, 135, 0, 254}));
}

TEST(BlockDecoder, bc7_mode_5_exchanges_a_channel_with_alpha) {
    for (const unsigned rotation : {0u, 1u, 2u, 3u}) {
        const auto block = blockOf(16, {{6, 0x20},
                                        {2, rotation},
                                        {7, 1},
                                        {7, 127},
                                        {7, 2},
                                        {7, 127},
                                        {7, 3},
                                        {7, 127},
                                        {8, 100},
                                        {8, 200},
                                        {1, 0},
                                        {2, 3},
                                        {28, 0},
                                        {1, 1}});
        Values first = {2, 4, 6, 142}, second = {255, 255, 255, 100};
        if (rotation > 0) std::swap(first[rotation - 1], first[3]);
        if (rotation > 0) std::swap(second[rotation - 1], second[3]);
        // The alpha of pixel 0 has index 1, the weight 43 of two bits belongs to index 2.
        first[rotation > 0 ? rotation - 1 : 3] = (100 * 43 + 200 * 21 + 32) >> 6;
        EXPECT_EQ(pixelOf(BlockKind::BC7, block, 0), first) << rotation;
        EXPECT_EQ(pixelOf(BlockKind::BC7, block, 1), second) << rotation;
    }
}

TEST(BlockDecoder, reserved_modes_are_black) {
    std::string block(16, '\xff');
    block[0] = '\0';
    EXPECT_EQ(pixelOf(BlockKind::BC7, block, 7), (Values{0, 0, 0, 0}));
    for (const int mode : {19, 23, 27, 31}) {
        block[0] = static_cast<char>(0xe0 | mode);
        EXPECT_EQ(pixelOf(BlockKind::BC6H, block, 7), (Values{0, 0, 0}));
        EXPECT_EQ(pixelOf(BlockKind::BC6HSigned, block, 7), (Values{0, 0, 0}));
    }
}

/// The picture that single blocks make, each decoded for itself.
std::string puzzle(BlockKind kind, const std::string& blocks, int width, int height) {
    const std::size_t size = imaging::decodedPixelBytes(kind), step = imaging::blockBytes(kind);
    const auto w = static_cast<std::size_t>(width), h = static_cast<std::size_t>(height);
    const std::size_t across = (w + 3) / 4;
    std::string picture(w * h * size, '\0');
    for (std::size_t i = 0; i < blocks.size() / step; ++i) {
        const std::string block = decoded(kind, blocks.substr(i * step, step), 4, 4);
        const std::size_t left = i % across * 4, top = i / across * 4;
        for (std::size_t y = 0; y < std::min<std::size_t>(4, h - top); ++y)
            std::memcpy(&picture[((top + y) * w + left) * size], &block[4 * y * size],
                        std::min<std::size_t>(4, w - left) * size);
    }
    return picture;
}

TEST(BlockDecoder, pictures_of_any_size_are_cut_from_their_blocks) {
    for (const BlockKind kind : kBlockKinds) {
        for (int width = 1; width <= 9; ++width) {
            for (int height = 1; height <= 9; ++height) {
                const auto blocks = randomBlocks(kind, width, height, 20);
                EXPECT_EQ(decoded(kind, blocks, width, height), puzzle(kind, blocks, width, height))
                    << static_cast<int>(kind) << ": " << width << " x " << height;
            }
        }
    }
}

TEST(BlockDecoder, rows_of_any_length_are_made_of_their_blocks) {
    for (const BlockKind kind : kBlockKinds) {
        for (int width = 10; width <= 100; ++width) {
            const auto blocks = randomBlocks(kind, width, 8, 21);
            EXPECT_EQ(firstDifference(kind, decoded(kind, blocks, width, 8),
                                      puzzle(kind, blocks, width, 8), width),
                      "")
                << static_cast<int>(kind) << ": " << width;
        }
    }
}

TEST(BlockDecoder, no_byte_outside_the_picture_is_written) {
    constexpr char kUntouched = '\x5a';
    for (const BlockKind kind : kBlockKinds) {
        for (const int width : {7, 8}) {
            const auto blocks = randomBlocks(kind, width, 7, 22);
            const std::size_t bytes =
                7u * static_cast<std::size_t>(width) * imaging::decodedPixelBytes(kind);
            std::string memory(bytes + 64, kUntouched);
            // An odd place: pixels need no alignment.
            imaging::decodeBlocks(kind, std::as_bytes(std::span(blocks)), width, 7,
                                  std::as_writable_bytes(std::span(memory)).subspan(31, bytes));
            EXPECT_EQ(memory.substr(31, bytes), decoded(kind, blocks, width, 7));
            EXPECT_EQ(memory.substr(0, 31), std::string(31, kUntouched));
            EXPECT_EQ(memory.substr(31 + bytes), std::string(33, kUntouched));
        }
    }
}

TEST(BlockDecoder, an_empty_picture_has_no_pixels) {
    imaging::decodeBlocks(BlockKind::BC7, {}, 0, 5, {});
    EXPECT_EQ(decoded(BlockKind::BC1, "", 5, 0), "");
}

// A large picture goes to several threads, its rows of blocks one by one do not.
TEST(BlockDecoder, a_large_picture_is_made_of_its_rows) {
    constexpr int kSide = 1030;
    for (const BlockKind kind : kBlockKinds) {
        const auto blocks = randomBlocks(kind, kSide, kSide, 23);
        const std::size_t row = blockCount(kSide, 4) * imaging::blockBytes(kind);
        std::string expected;
        for (int y = 0; y < kSide; y += 4)
            expected += decoded(kind, blocks.substr(static_cast<std::size_t>(y / 4) * row, row),
                                kSide, std::min(4, kSide - y));
        EXPECT_EQ(firstDifference(kind, decoded(kind, blocks, kSide, kSide), expected, kSide), "");
    }
}

struct RealFile {
    const char* path;       ///< Below the data folder, without ".dds".
    const char* reference;  ///< The same for a PNG; none: `oiiotool` is asked.
    BlockKind kind;
    int tolerance;
};

// Where the tolerance is 1, the decoder behind the reference rounds mixed values otherwise.
const RealFile kRealFiles[] = {
    {"dds/bc/DX10 BC1_UNORM", "dds/bc-ref/DX10 BC1_UNORM", BlockKind::BC1, 1},
    {"dds/bc/DX10 BC2_UNORM_SRGB", "dds/bc-ref/DX10 BC2_UNORM_SRGB", BlockKind::BC2, 1},
    {"dds/bc/DX10 BC4_SNORM", "dds/bc-ref/DX10 BC4_SNORM", BlockKind::BC4Signed, 0},
    {"dds/bc/DX10 BC5_UNORM", "dds/bc-ref/DX10 BC5_UNORM", BlockKind::BC5, 1},
    {"dds/bc/DX10 BC7_UNORM", "dds/bc-ref/DX10 BC7_UNORM", BlockKind::BC7, 0},
    {"dds/bc/DX9 BC2_UNORM", "dds/bc-ref/DX9 BC2_UNORM", BlockKind::BC2, 1},
    {"dds/bc/DX9 BC4_SNORM", "dds/bc-ref/DX9 BC4_SNORM", BlockKind::BC4Signed, 0},
    {"dds/bc/DX9 BC5_UNORM", "dds/bc-ref/DX9 BC5_UNORM", BlockKind::BC5, 1},
    {"dds/bc/dxt1", "dds/bc-ref/dxt1", BlockKind::BC1, 0},
    {"dds/bc/dxt3", "dds/bc-ref/dxt3", BlockKind::BC2, 0},
    {"dds/bc/dxt5-simple", "dds/bc-ref/dxt5-simple", BlockKind::BC3, 0},
    {"dds/bc-fuzz/bc6 SF16 mode one 00011", nullptr, BlockKind::BC6HSigned, 0},
    {"dds/bc-fuzz/bc7 mode 4", nullptr, BlockKind::BC7, 0},
};

int numberAt(const std::string& file, std::size_t place) {
    int number = 0;
    std::memcpy(&number, file.data() + place, sizeof number);
    return number;
}

/// Every @p of channels, or the three colours of a picture without alpha, or equal ones of a grey
/// one.
std::string pngPixels(const std::string& path, std::size_t channels) {
    return decodedByConvert(path, channels == 4 ? "rgba" : channels == 3 ? "rgb" : "gray");
}

TEST(BlockDecoder, real_files_have_the_pixels_of_other_decoders) {
    const char* const folder = std::getenv("RB_DATA_DIR");
    if (!folder || !*folder) GTEST_SKIP() << "RB_DATA_DIR does not name the folder of real files";
    for (const RealFile& real : kRealFiles) {
        SCOPED_TRACE(real.path);
        const std::string data = std::string(folder) + "/";
        const std::string file = contentOf(data + real.path + ".dds");
        const std::size_t head = file.substr(84, 4) == "DX10" ? 148 : 128;
        const int width = numberAt(file, 16), height = numberAt(file, 12);
        const std::string blocks =
            file.substr(head, blockCount(width, height) * imaging::blockBytes(real.kind));
        std::string ours = decoded(real.kind, blocks, width, height);
        if (real.kind == BlockKind::BC6HSigned) ours = withoutNegativeZeros(ours);
        const std::string theirs =
            real.reference
                ? pngPixels(data + real.reference + ".png", imaging::decodedPixelBytes(real.kind))
                : pixelsByOiiotool(real.kind, data + real.path + ".dds");
        ASSERT_EQ(ours.size(), theirs.size());
        int widest = 0;
        for (std::size_t i = 0; i < ours.size(); ++i)
            widest = std::max(widest, std::abs(static_cast<unsigned char>(ours[i]) -
                                               static_cast<unsigned char>(theirs[i])));
        EXPECT_LE(widest, real.tolerance);
    }
}

}  // namespace
}  // namespace rb::test
