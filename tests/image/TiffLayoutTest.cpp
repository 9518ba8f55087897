// TIFF files made by hand: what the programs at hand do not write.

#include "tests/image/ImageFiles.h"
#include "tests/image/TiffBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>
#include <zlib.h>

namespace {

using namespace rb::test;
using Values = std::vector<int>;

/// Bits from text such as "0101 11", filled up to whole bytes with ones, which must be ignored.
std::string packed(const std::string& bits) {
    std::string bytes, byte;
    for (const char c : bits)
        if (c != ' ') {
            byte += c;
            if (byte.size() < 8) continue;
            bytes += static_cast<char>(std::stoi(byte, nullptr, 2));
            byte.clear();
        }
    if (!byte.empty()) bytes += packed(byte + std::string(8 - byte.size(), '1'));
    return bytes;
}

/// The low @p count bits of a number as text.
std::string bitsOf(unsigned value, int count) {
    std::string text;
    for (int i = count - 1; i >= 0; --i) text += value >> i & 1 ? '1' : '0';
    return text;
}

}  // namespace

TEST(TiffLayout, unpacks_any_depth_most_significant_bit_first) {
    for (const int bits : {3, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 17, 20, 31}) {
        const double most = std::pow(2.0, bits) - 1;
        // Four pixels of RGB in two rows: the second one begins on a byte of its own.
        std::string block;
        Values expected;
        for (int row = 0; row < 2; ++row) {
            std::string text;
            for (int i = 0; i < 6; ++i) {
                const double part = (row * 6 + i) / 11.0;
                const auto value = static_cast<unsigned>(std::llround(part * most));
                text += bitsOf(value, bits);
                expected.push_back(static_cast<int>(std::lround(value / most * 255)));
            }
            block += packed(text);
        }
        for (const bool big : {false, true}) {  // the order of bytes is no matter
            TiffBuilder tiff(2, 2, big);
            tiff.samples(3, static_cast<unsigned>(bits)).set(262, TiffBuilder::kShort, {2});
            EXPECT_EQ(bytesOf(loadBytes(tiff.block(block).build()), 2, 2, Format::RGB), expected)
                << bits;
        }
    }
}

TEST(TiffLayout, scales_whole_numbers_of_any_size) {
    for (const bool big : {false, true})
        for (const int size : {1, 2, 3, 4}) {
            TiffBuilder tiff(5, 1, big);
            const std::uint64_t most = (std::uint64_t{1} << 8 * size) - 1;
            tiff.samples(1, static_cast<unsigned>(8 * size));
            tiff.block(tiff.numbers({0, most / 255, most / 3, most - most / 255, most}, size));
            EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 5, 1, Format::L),
                      (Values{0, 1, 85, 254, 255}))
                << size;
        }
}

TEST(TiffLayout, rounds_16_bits_to_the_nearest) {
    TiffBuilder tiff(4, 1);
    tiff.samples(1, 16);
    tiff.block(tiff.numbers({128, 129, 257 * 100 + 128, 257 * 100 + 129}, 2));
    EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 4, 1, Format::L), (Values{0, 1, 100, 101}));
}

TEST(TiffLayout, signed_samples_count_from_zero) {
    for (const int size : {1, 2, 4}) {
        const std::int64_t most = (std::int64_t{1} << (8 * size - 1)) - 1;
        TiffBuilder tiff(4, 1);
        tiff.samples(1, static_cast<unsigned>(8 * size), 2);
        tiff.block(tiff.numbers({static_cast<std::uint64_t>(-most), static_cast<std::uint64_t>(-1),
                                 0, static_cast<std::uint64_t>(most)},
                                size));
        EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 4, 1, Format::L), (Values{0, 0, 0, 255}))
            << size;
    }
    TiffBuilder half(1, 1);
    // 64 of 127, as other programs round it.
    EXPECT_EQ(bytesOf(loadBytes(half.samples(1, 8, 2).block("\x40").build()), 1, 1, Format::L),
              Values{129});
}

TEST(TiffLayout, reads_floats_of_16_24_32_and_64_bits) {
    for (const bool big : {false, true}) {
        TiffBuilder half(3, 1, big), small(5, 1, big), single(3, 1, big), large(4, 1, big);
        half.samples(1, 16, 3).block(half.numbers({0x3C00, 0xC100, 0x0001}, 2));
        EXPECT_EQ(halvesOf(loadBytes(half.build()), 3, 1, Format::L_f16),
                  (std::vector<float>{1, -2.5F, 0x1p-24F}));
        // Sign, 7 bits of exponent (bias 63), 16 bits: 1, -2.5, smallest, largest, infinity.
        small.samples(1, 24, 3).block(
            small.numbers({0x3F0000, 0xC04000, 0x000001, 0x7EFFFF, 0x7F0000}, 3));
        EXPECT_EQ(floatsOf(loadBytes(small.build()), 5, 1, Format::L_f),
                  (std::vector<float>{1, -2.5F, 0x1p-78F, 0x1.ffffp63F,
                                      std::numeric_limits<float>::infinity()}));
        single.samples(1, 32, 3).block(single.numbers(
            {std::bit_cast<std::uint32_t>(0.1F), std::bit_cast<std::uint32_t>(-3e30F), 0}, 4));
        EXPECT_EQ(floatsOf(loadBytes(single.build()), 3, 1, Format::L_f),
                  (std::vector<float>{0.1F, -3e30F, 0}));
        large.samples(1, 64, 3).block(large.numbers(
            {std::bit_cast<std::uint64_t>(0.1), std::bit_cast<std::uint64_t>(1e300),
             std::bit_cast<std::uint64_t>(-1e300), std::bit_cast<std::uint64_t>(-2.5)},
            8));
        EXPECT_EQ(floatsOf(loadBytes(large.build()), 4, 1, Format::L_f),
                  (std::vector<float>{0.1F, std::numeric_limits<float>::infinity(),
                                      -std::numeric_limits<float>::infinity(), -2.5F}));
    }
}

TEST(TiffLayout, widens_grey_and_alpha_in_floating_point) {
    TiffBuilder half(2, 1), single(1, 1), white(1, 1);
    half.samples(2, 16, 3).set(338, TiffBuilder::kShort, {1});
    half.block(half.numbers({0x3800, 0x3C00, 0x4000, 0x0000}, 2));
    EXPECT_EQ(halvesOf(loadBytes(half.build()), 2, 1, Format::RGBA_f16),
              (std::vector<float>{0.5F, 0.5F, 0.5F, 1, 2, 2, 2, 0}));
    single.samples(2, 32, 3).set(338, TiffBuilder::kShort, {2});
    single.block(single.numbers(
        {std::bit_cast<std::uint32_t>(0.25F), std::bit_cast<std::uint32_t>(0.75F)}, 4));
    EXPECT_EQ(floatsOf(loadBytes(single.build()), 1, 1, Format::RGBA_f),
              (std::vector<float>{0.25F, 0.25F, 0.25F, 0.75F}));
    // White is zero: alpha stays.
    white.samples(2, 16, 3).set(338, TiffBuilder::kShort, {2}).set(262, TiffBuilder::kShort, {0});
    white.block(white.numbers({0x3400, 0x3400}, 2));
    EXPECT_EQ(halvesOf(loadBytes(white.build()), 1, 1, Format::RGBA_f16),
              (std::vector<float>{0.75F, 0.75F, 0.75F, 0.25F}));
}

TEST(TiffLayout, finds_alpha_among_the_extra_samples) {
    TiffBuilder marked(1, 1), single(1, 1), unmarked(1, 1), grey(1, 1);
    marked.samples(5, 8).set(262, TiffBuilder::kShort, {2}).set(338, TiffBuilder::kShort, {0, 2});
    EXPECT_EQ(bytesOf(loadBytes(marked.block(bytes({1, 2, 3, 4, 5})).build()), 1, 1, Format::RGBA),
              (Values{1, 2, 3, 5}));
    // One sample more than colours is alpha without being called so.
    single.samples(4, 8).set(262, TiffBuilder::kShort, {2});
    EXPECT_EQ(bytesOf(loadBytes(single.block(bytes({1, 2, 3, 4})).build()), 1, 1, Format::RGBA),
              (Values{1, 2, 3, 4}));
    // Of several, none is.
    unmarked.samples(6, 8)
        .set(262, TiffBuilder::kShort, {2})
        .set(338, TiffBuilder::kShort, {0, 0, 0});
    EXPECT_EQ(
        bytesOf(loadBytes(unmarked.block(bytes({1, 2, 3, 4, 5, 6})).build()), 1, 1, Format::RGB),
        (Values{1, 2, 3}));
    grey.samples(2, 16).set(338, TiffBuilder::kShort, {1});
    EXPECT_EQ(
        bytesOf(loadBytes(grey.block(grey.numbers({0x8080, 0x4040}, 2)).build()), 1, 1, Format::LA),
        (Values{0x80, 0x40}));
}

TEST(TiffLayout, white_is_zero_leaves_alpha_alone) {
    TiffBuilder tiff(2, 1);
    tiff.samples(2, 8).set(262, TiffBuilder::kShort, {0}).set(338, TiffBuilder::kShort, {2});
    EXPECT_EQ(bytesOf(loadBytes(tiff.block(bytes({0, 10, 200, 20})).build()), 2, 1, Format::LA),
              (Values{255, 10, 55, 20}));
    TiffBuilder four(3, 1);
    four.samples(1, 4).set(262, TiffBuilder::kShort, {0});
    EXPECT_EQ(bytesOf(loadBytes(four.block("\x0F\x50").build()), 3, 1, Format::L),
              (Values{255, 0, 170}));
}

TEST(TiffLayout, colour_maps_may_have_entries_of_16_or_8_bits) {
    const std::vector<std::uint32_t> full{0, 65535,    257 * 10, 257 * 20 + 129, 0, 65535, 0,
                                          0, 257 * 77, 0,        12345,          0};
    std::vector<std::uint32_t> small;
    for (std::uint32_t value : full) small.push_back((value + 128) / 257);
    const Values expected{21, 0, 0, 10, 0, 48, 255, 65535 / 257, 0, 0, 0, 77};
    for (const auto& map : {full, small}) {
        TiffBuilder tiff(4, 1);
        tiff.samples(1, 2).set(262, TiffBuilder::kShort, {3}).set(320, TiffBuilder::kShort, map);
        EXPECT_EQ(bytesOf(loadBytes(tiff.block(packed("11100100")).build()), 4, 1, Format::RGB),
                  expected);
    }
}

TEST(TiffLayout, indices_may_have_an_alpha) {
    std::vector<std::uint32_t> map(3 * 256);
    map[7] = 65535, map[256 + 9] = 65535, map[512 + 9] = 257 * 3;
    TiffBuilder tiff(2, 1);
    tiff.samples(2, 8).set(262, TiffBuilder::kShort, {3}).set(320, TiffBuilder::kShort, map);
    tiff.set(338, TiffBuilder::kShort, {2});
    EXPECT_EQ(bytesOf(loadBytes(tiff.block(bytes({7, 100, 9, 50})).build()), 2, 1, Format::RGBA),
              (Values{255, 0, 0, 100, 0, 255, 3, 50}));
}

TEST(TiffLayout, missing_colour_space_is_guessed) {
    TiffBuilder grey(1, 1), colour(1, 1);
    EXPECT_EQ(bytesOf(loadBytes(grey.erase(262).block("\x30").build()), 1, 1, Format::L),
              Values{48});
    colour.samples(3, 8).erase(262);
    EXPECT_EQ(bytesOf(loadBytes(colour.block(bytes({1, 2, 3})).build()), 1, 1, Format::RGB),
              (Values{1, 2, 3}));
}

TEST(TiffLayout, only_the_first_directory_counts) {
    // The second directory of this file, reached through the first one, is a larger picture.
    TiffBuilder first(1, 1);
    std::string file = first.block("\x55").build();
    TiffBuilder second(2, 2);
    const std::string other = second.block("\x01\x02\x03\x04").build();
    const std::size_t next = file.size() - 4;  // no value stands behind this directory
    file.replace(next, 4, first.number(file.size(), 4));
    file += other.substr(other.find(first.number(9, 2) + first.number(256, 2)));
    EXPECT_EQ(bytesOf(loadBytes(file), 1, 1, Format::L), Values{0x55});
}

TEST(TiffLayout, the_last_strip_may_hold_more_rows_than_the_picture) {
    // Rows that repeat themselves: the stream copies across the end of the picture, in the middle
    // of a run of the same bytes.
    constexpr unsigned kWidth = 300, kRowsPerStrip = 8, kHeight = 9;
    std::string strip;
    for (unsigned i = 0; i < kWidth * kRowsPerStrip; ++i) strip += static_cast<char>(i % 7 + 1);
    std::string stream(compressBound(strip.size()), '\0');
    uLongf length = stream.size();
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(stream.data()), &length,
                       reinterpret_cast<const Bytef*>(strip.data()), strip.size()),
              Z_OK);
    stream.resize(length);
    TiffBuilder tiff(kWidth, kHeight);
    tiff.set(259, TiffBuilder::kShort, {8}).set(278, TiffBuilder::kLong, {kRowsPerStrip});
    const Values pixels =
        bytesOf(loadBytes(tiff.block(stream).block(stream).build()), kWidth, kHeight, Format::L);
    ASSERT_EQ(pixels.size(), kWidth * kHeight);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        ASSERT_EQ(pixels[i], static_cast<int>(i % strip.size() % 7 + 1)) << i;
}

TEST(TiffLayout, old_style_jpeg_is_decoded) {
    const TempFolder folder;
    RawPicture picture{32, 16, 3, 8, {}};
    for (int i = 0; i < 32 * 16; ++i)
        for (int value : {i / 4, 255 - i / 4, 100}) picture.append(value);
    const std::string in = writePortableMap(folder, "in.ppm", picture), jpeg = folder.file("a.jpg");
    runProgram("convert " + shellWord(in) + " -sampling-factor 1x1 -quality 95 " + shellWord(jpeg));
    // TIFF 6.0, section 22: fields 513 and 514 point to a complete JPEG stream.
    const std::string stream = contentOf(jpeg);
    TiffBuilder tiff(32, 16);
    tiff.samples(3, 8)
        .erase(339)
        .set(259, TiffBuilder::kShort, {6})
        .set(262, TiffBuilder::kShort, {6});
    tiff.set(512, TiffBuilder::kShort, {1}).set(513, TiffBuilder::kLong, {8});
    tiff.set(514, TiffBuilder::kLong, {static_cast<std::uint32_t>(stream.size())});
    tiff.set(530, TiffBuilder::kShort, {1, 1});
    const auto found = bytesOf(loadBytes(tiff.block(stream).build()), 32, 16, Format::RGB);
    ASSERT_EQ(found.size(), picture.samples.size());
    constexpr int kLoss = 8;
    for (std::size_t i = 0; i < found.size(); ++i)
        ASSERT_NEAR(found[i], static_cast<unsigned char>(picture.samples[i]), kLoss) << i;
}
