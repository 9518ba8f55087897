// Texel formats of DDS files. Expected pixels are worked out by hand.

#include "tests/image/TextureBuilder.h"

#include <gtest/gtest.h>

namespace rb::test {
namespace {

std::vector<int> bytesOfRow(const DdsBuilder& dds, Format format) {
    return bytesOf(asImage(loadTexture(dds.build())), static_cast<int>(dds.width), 1, format);
}

std::vector<float> halvesOfRow(const DdsBuilder& dds, Format format) {
    return halvesOf(asImage(loadTexture(dds.build())), static_cast<int>(dds.width), 1, format);
}

std::vector<float> floatsOfRow(const DdsBuilder& dds, Format format) {
    return floatsOf(asImage(loadTexture(dds.build())), static_cast<int>(dds.width), 1, format);
}

std::string floatBytes(const std::vector<float>& values) {
    return {reinterpret_cast<const char*>(values.data()), 4 * values.size()};
}

std::string words(const std::vector<int>& values) {
    std::string text;
    for (const int value : values) text += littleEndian(static_cast<std::uint64_t>(value), 2);
    return text;
}

using Ints = std::vector<int>;
using Floats = std::vector<float>;

TEST(DdsFormats, bytes_keep_their_order) {
    const std::string texels = bytes({1, 2, 3, 4, 250, 251, 252, 253});
    const Ints stored{1, 2, 3, 4, 250, 251, 252, 253};
    EXPECT_EQ(bytesOfRow(dx10(28, 2, texels), Format::RGBA), stored);
    EXPECT_EQ(bytesOfRow(dx10(27, 2, texels), Format::RGBA), stored);
    EXPECT_EQ(bytesOfRow(dx10(29, 2, texels), Format::RGBA), stored);
    EXPECT_EQ(bytesOfRow(dx10(87, 2, texels), Format::BGRA), stored);
    EXPECT_EQ(bytesOfRow(dx10(90, 2, texels), Format::BGRA), stored);
    EXPECT_EQ(bytesOfRow(dx10(91, 2, texels), Format::BGRA), stored);
    EXPECT_EQ(bytesOfRow(dx10(61, 8, texels), Format::L), stored);
    EXPECT_EQ(bytesOfRow(dx10(60, 8, texels), Format::L), stored);
}

TEST(DdsFormats, padding_is_dropped_and_a_missing_blue_is_0) {
    const std::string texels = bytes({1, 2, 3, 4, 250, 251, 252, 253});
    EXPECT_EQ(bytesOfRow(dx10(88, 2, texels), Format::BGR), (Ints{1, 2, 3, 250, 251, 252}));
    EXPECT_EQ(bytesOfRow(dx10(93, 2, texels), Format::BGR), (Ints{1, 2, 3, 250, 251, 252}));
    EXPECT_EQ(bytesOfRow(dx10(49, 2, bytes({1, 2, 3, 4})), Format::RGB), (Ints{1, 2, 0, 3, 4, 0}));
}

TEST(DdsFormats, signed_numbers_run_from_0_to_255) {
    // -128 counts as -127; 0 is half way, 127.5, rounded up; 64 is (64 + 127) / 254 * 255 = 191.75.
    EXPECT_EQ(bytesOfRow(dx10(63, 5, bytes({-128, -127, 0, 64, 127})), Format::L),
              (Ints{0, 0, 128, 192, 255}));
    EXPECT_EQ(bytesOfRow(dx10(31, 1, bytes({-127, 0, 127, 127})), Format::RGBA),
              (Ints{0, 128, 255, 255}));
    EXPECT_EQ(bytesOfRow(dx10(51, 1, bytes({127, -127})), Format::RGB), (Ints{255, 0, 0}));
    EXPECT_EQ(bytesOfRow(dx10(58, 4, words({-32768, -32767, 0, 32767})), Format::L),
              (Ints{0, 0, 128, 255}));
    EXPECT_EQ(bytesOfRow(dx10(13, 1, words({-32767, 0, 32767, 32767})), Format::RGBA),
              (Ints{0, 128, 255, 255}));
    EXPECT_EQ(bytesOfRow(dx10(37, 1, words({32767, -32767})), Format::RGB), (Ints{255, 0, 0}));
}

TEST(DdsFormats, sixteen_bits_are_rounded_to_eight) {
    // 128 is the first value nearer to 1 than to 0 of 257 to a step; 65406 the last before 255.
    EXPECT_EQ(bytesOfRow(dx10(56, 6, words({0, 128, 129, 32896, 65406, 65407})), Format::L),
              (Ints{0, 0, 1, 128, 254, 255}));
    EXPECT_EQ(bytesOfRow(dx10(11, 1, words({65535, 257, 514, 0})), Format::RGBA),
              (Ints{255, 1, 2, 0}));
    EXPECT_EQ(bytesOfRow(dx10(35, 1, words({65535, 257})), Format::RGB), (Ints{255, 1, 0}));
    EXPECT_EQ(bytesOfRow(dx10(55, 1, words({65535})), Format::L), (Ints{255}));
}

TEST(DdsFormats, halves_and_floats_stay_what_they_are) {
    // 0x3C00 is 1, 0xC000 is -2, 0x7BFF is 65504, 0x0001 is 2^-24.
    EXPECT_EQ(halvesOfRow(dx10(54, 2, words({0x3C00, 0xC000})), Format::L_f16), (Floats{1, -2}));
    EXPECT_EQ(halvesOfRow(dx10(34, 1, words({0x3C00, 0x7BFF})), Format::RGB_f16),
              (Floats{1, 65504, 0}));
    EXPECT_EQ(halvesOfRow(dx10(10, 1, words({0x3C00, 0xC000, 0x0001, 0})), Format::RGBA_f16),
              (Floats{1, -2, 0x1p-24F, 0}));
    const std::string four = floatBytes({1.5F, -2, 1e30F, 0.25F});
    EXPECT_EQ(floatsOfRow(dx10(41, 4, four), Format::L_f), (Floats{1.5F, -2, 1e30F, 0.25F}));
    EXPECT_EQ(floatsOfRow(dx10(16, 2, four), Format::RGB_f),
              (Floats{1.5F, -2, 0, 1e30F, 0.25F, 0}));
    EXPECT_EQ(floatsOfRow(dx10(6, 1, four.substr(0, 12)), Format::RGB_f),
              (Floats{1.5F, -2, 1e30F}));
    EXPECT_EQ(floatsOfRow(dx10(2, 1, four), Format::RGBA_f), (Floats{1.5F, -2, 1e30F, 0.25F}));
    EXPECT_EQ(floatsOfRow(dx10(40, 1, four.substr(0, 4)), Format::L_f), (Floats{1.5F}));
}

TEST(DdsFormats, packed_floats_become_halves) {
    // 11 bits: 5 of exponent with bias 15, 6 of mantissa; 10 bits: 5 and 5. Red 1 = 15 << 6, green
    // 1.5 = 15 << 6 | 32, blue 2^-14 * 3 / 32 = 3 (without exponent).
    const std::uint64_t small = 15U << 6 | (15U << 6 | 32U) << 11 | std::uint64_t{3} << 22;
    EXPECT_EQ(halvesOfRow(dx10(26, 1, littleEndian(small, 4)), Format::RGB_f16),
              (Floats{1, 1.5F, 3 * 0x1p-19F}));
    // The largest: 2^15 * (1 + 63 / 64) and 2^15 * (1 + 31 / 32).
    const std::uint64_t large =
        (30U << 6 | 63U) | (30U << 6 | 63U) << 11 | std::uint64_t{30U << 5 | 31U} << 22;
    EXPECT_EQ(halvesOfRow(dx10(26, 1, littleEndian(large, 4)), Format::RGB_f16),
              (Floats{65024, 65024, 64512}));
}

TEST(DdsFormats, a_shared_exponent_scales_three_mantissas) {
    // m * 2^(e - 24): 256 with e = 16 is 1, 1 with e = 16 is 1/256.
    const std::uint64_t one = 256U | 1U << 9 | std::uint64_t{511} << 18 | std::uint64_t{16} << 27;
    EXPECT_EQ(halvesOfRow(dx10(67, 1, littleEndian(one, 4)), Format::RGB_f16),
              (Floats{1, 1 / 256.F, 511 / 256.F}));
    const std::uint64_t largest = 511U | 0U << 9 | std::uint64_t{1} << 18 | std::uint64_t{31} << 27;
    EXPECT_EQ(halvesOfRow(dx10(67, 1, littleEndian(largest, 4)), Format::RGB_f16),
              (Floats{65408, 0, 128}));
    EXPECT_EQ(halvesOfRow(dx10(67, 1, littleEndian(511, 4)), Format::RGB_f16),
              (Floats{511 * 0x1p-24F, 0, 0}));
}

TEST(DdsFormats, bit_fields_are_stretched_to_bytes) {
    // 5 bits: 1 is 255 / 31 = 8.2, 16 is 131.6; 6 bits: 32 is 129.5; 4 bits: times 17.
    const auto texel = [](std::uint64_t value) { return littleEndian(value, 2); };
    EXPECT_EQ(bytesOfRow(dx10(85, 1, texel(1U << 11 | 32U << 5 | 16U)), Format::RGB),
              (Ints{8, 130, 132}));
    EXPECT_EQ(bytesOfRow(dx10(86, 2, texel(31U << 10 | 1U << 5) + texel(0x8000)), Format::RGBA),
              (Ints{255, 8, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(bytesOfRow(dx10(115, 1, texel(0x1234)), Format::RGBA), (Ints{34, 51, 68, 17}));
    EXPECT_EQ(bytesOfRow(dx10(191, 1, texel(0x1234)), Format::RGBA), (Ints{17, 34, 51, 68}));
    // 10 bits: 512 is 127.6; 2 bits: 1 is 85.
    const std::uint64_t ten = 1023U | 512U << 10 | std::uint64_t{1} << 30;
    EXPECT_EQ(bytesOfRow(dx10(24, 1, littleEndian(ten, 4)), Format::RGBA), (Ints{255, 128, 0, 85}));
    EXPECT_EQ(bytesOfRow(dx10(65, 2, bytes({7, 200})), Format::LA), (Ints{0, 7, 0, 200}));
}

TEST(DdsFormats, masks_of_whole_bytes_give_the_order_of_the_pixels) {
    const std::string texel = bytes({10, 20, 30, 40});
    const auto rowOf = [&](std::uint32_t flags, std::array<std::uint32_t, 4> masks, Format format) {
        return bytesOfRow(masked(flags, 32, masks, 1, texel), format);
    };
    constexpr std::uint32_t b0 = 0xFF, b1 = 0xFF00, b2 = 0xFF0000, b3 = 0xFF000000;
    const Ints stored{10, 20, 30, 40};
    EXPECT_EQ(rowOf(kMaskedRgba, {b0, b1, b2, b3}, Format::RGBA), stored);
    EXPECT_EQ(rowOf(kMaskedRgba, {b2, b1, b0, b3}, Format::BGRA), stored);
    EXPECT_EQ(rowOf(kMaskedRgba, {b1, b2, b3, b0}, Format::ARGB), stored);
    EXPECT_EQ(rowOf(kMaskedRgba, {b3, b2, b1, b0}, Format::ABGR), stored);
    EXPECT_EQ(rowOf(kMaskedRgb, {b2, b1, b0, b3}, Format::BGR), (Ints{10, 20, 30}));
    EXPECT_EQ(rowOf(kMaskedRgb, {b0, b1, b2, 0}, Format::RGB), (Ints{10, 20, 30}));
    EXPECT_EQ(rowOf(kMaskedRgb, {b1, b2, b3, 0}, Format::RGB), (Ints{20, 30, 40}));
    EXPECT_EQ(
        bytesOfRow(masked(kMaskedRgb, 24, {b2, b1, b0, 0}, 1, texel.substr(0, 3)), Format::BGR),
        (Ints{10, 20, 30}));
    EXPECT_EQ(
        bytesOfRow(masked(kMaskedRgb, 24, {b0, b1, b2, 0}, 1, texel.substr(0, 3)), Format::RGB),
        (Ints{10, 20, 30}));
}

TEST(DdsFormats, other_masks_pick_the_bits_that_they_name) {
    // 3-3-2: red 7 of 7, green 3 of 7 is 109.3, blue 1 of 3 is 85.
    EXPECT_EQ(
        bytesOfRow(masked(kMaskedRgb, 8, {0xE0, 0x1C, 0x3, 0}, 1, bytes({0xED})), Format::RGB),
        (Ints{255, 109, 85}));
    // 8-3-3-2 with alpha above.
    EXPECT_EQ(bytesOfRow(masked(kMaskedRgba, 16, {0xE0, 0x1C, 0x3, 0xFF00}, 1, bytes({0xED, 9})),
                         Format::RGBA),
              (Ints{255, 109, 85, 9}));
    // Two channels of 16 bits in one texel; of one of 20 bits the upper 16 count.
    EXPECT_EQ(bytesOfRow(masked(kMaskedRgb, 32, {0xFFFF, 0xFFFF0000, 0, 0}, 1, words({257, 65535})),
                         Format::RGB),
              (Ints{1, 255, 0}));
    EXPECT_EQ(bytesOfRow(masked(kMaskedRgb, 32, {0xFFFFF, 0, 0, 0}, 1, littleEndian(0x80800, 4)),
                         Format::L),
              (Ints{128}));
}

TEST(DdsFormats, grey_and_alpha_have_their_own_flags) {
    EXPECT_EQ(bytesOfRow(masked(kMaskedGrey, 8, {0xFF, 0, 0, 0}, 2, bytes({5, 6})), Format::L),
              (Ints{5, 6}));
    // A mask where no bit of the texel is.
    EXPECT_EQ(bytesOfRow(
                  masked(kMaskedGrey, 8, {0xFF000000, 0xFF000000, 0xFF000000, 0}, 2, bytes({5, 6})),
                  Format::L),
              (Ints{5, 6}));
    EXPECT_EQ(bytesOfRow(masked(kMaskedGreyAlpha, 16, {0xFF, 0, 0, 0xFF00}, 1, bytes({5, 6})),
                         Format::LA),
              (Ints{5, 6}));
    EXPECT_EQ(
        bytesOfRow(masked(kMaskedGreyAlpha, 8, {0xF, 0, 0, 0xF0}, 1, bytes({0x21})), Format::LA),
        (Ints{17, 34}));
    EXPECT_EQ(bytesOfRow(masked(kMaskedGrey, 16, {0xFFFF, 0, 0, 0}, 1, words({514})), Format::L),
              (Ints{2}));
    EXPECT_EQ(bytesOfRow(masked(kMaskedAlpha, 8, {0, 0, 0, 0xFF}, 2, bytes({5, 6})), Format::LA),
              (Ints{0, 5, 0, 6}));
}

TEST(DdsFormats, bump_maps_have_signed_masks) {
    EXPECT_EQ(
        bytesOfRow(masked(kMaskedSigned, 16, {0xFF, 0xFF00, 0, 0}, 2, bytes({-128, 0, 127, -127})),
                   Format::RGB),
        (Ints{0, 128, 0, 255, 0, 0}));
}

TEST(DdsFormats, older_codes_name_the_same_formats) {
    DdsBuilder dds = dx10(0, 1, words({65535, 257, 514, 0}));
    dds.fourCC = std::string("\x24\0\0\0", 4);  // D3DFMT_A16B16G16R16
    EXPECT_EQ(bytesOfRow(dds, Format::RGBA), (Ints{255, 1, 2, 0}));
    dds.fourCC = std::string("\x71\0\0\0", 4);  // D3DFMT_A16B16G16R16F
    dds.data = words({0x3C00, 0xC000, 0, 0x3C00});
    EXPECT_EQ(halvesOfRow(dds, Format::RGBA_f16), (Floats{1, -2, 0, 1}));
    dds.fourCC = std::string("\x74\0\0\0", 4);  // D3DFMT_A32B32G32R32F
    dds.data = floatBytes({1, 2, 3, 4});
    EXPECT_EQ(floatsOfRow(dds, Format::RGBA_f), (Floats{1, 2, 3, 4}));
    dds.fourCC = std::string("\x6f\0\0\0", 4);  // D3DFMT_R16F
    dds.data = words({0x3C00});
    EXPECT_EQ(halvesOfRow(dds, Format::L_f16), (Floats{1}));
}

// Red 31, green 0, blue 0 is the first colour of a block, black the second; all texels the first.
const std::string kRedBlock = bytes({0x00, 0xF8, 0, 0, 0, 0, 0, 0});
const std::string kOpaqueAlpha = bytes({255, 255, 0, 0, 0, 0, 0, 0});

TEST(DdsFormats, blocks_are_known_by_code_and_by_number) {
    const auto firstPixel = [](const std::string& code, std::uint32_t number,
                               const std::string& data, Format format) {
        DdsBuilder dds = dx10(number, 1, data);
        dds.fourCC = code;
        return bytesOfRow(dds, format);
    };
    const Ints red{255, 0, 0, 255};
    const std::string explicitRed = std::string(8, '\xFF') + kRedBlock;
    const std::string smoothRed = kOpaqueAlpha + kRedBlock;
    const std::string half = bytes({100, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(firstPixel("DXT1", 0, kRedBlock, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DX10", 71, kRedBlock, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DXT2", 0, explicitRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DXT3", 0, explicitRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DX10", 74, explicitRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DXT4", 0, smoothRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DXT5", 0, smoothRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("DX10", 77, smoothRed, Format::RGBA), red);
    EXPECT_EQ(firstPixel("ATI1", 0, half, Format::L), (Ints{100}));
    EXPECT_EQ(firstPixel("BC4U", 0, half, Format::L), (Ints{100}));
    EXPECT_EQ(firstPixel("DX10", 80, half, Format::L), (Ints{100}));
    EXPECT_EQ(firstPixel("BC4S", 0, half, Format::L), (Ints{228}));  // (100 / 127 + 1) / 2 * 255
    EXPECT_EQ(firstPixel("ATI2", 0, half + kOpaqueAlpha, Format::RGB), (Ints{100, 255, 0}));
    EXPECT_EQ(firstPixel("BC5U", 0, half + kOpaqueAlpha, Format::RGB), (Ints{100, 255, 0}));
    EXPECT_EQ(firstPixel("DX10", 83, half + kOpaqueAlpha, Format::RGB), (Ints{100, 255, 0}));
    EXPECT_EQ(firstPixel("BC5S", 0, half + half, Format::RGB), (Ints{228, 228, 0}));
}

TEST(DdsFormats, red_stored_as_alpha_comes_back) {
    DdsBuilder dds = dx10(0, 1, bytes({200, 200, 0, 0, 0, 0, 0, 0}) + kRedBlock);
    dds.fourCC = "RXGB";
    EXPECT_EQ(bytesOfRow(dds, Format::RGB), (Ints{200, 0, 0}));
}

TEST(DdsFormats, what_is_no_picture_is_refused_by_name) {
    const auto refusal = [](std::uint32_t number) {
        return textureRefusalOf(dx10(number, 4, std::string(256, '\0')).build());
    };
    EXPECT_NE(refusal(103).find("NV12"), std::string::npos);
    EXPECT_NE(refusal(134).find("ASTC_4X4"), std::string::npos);
    EXPECT_NE(refusal(187).find("ASTC_12X12"), std::string::npos);
    EXPECT_NE(refusal(30).find("R8G8B8A8_UINT"), std::string::npos);
    EXPECT_NE(refusal(0).find("number 0"), std::string::npos);
    EXPECT_NE(refusal(4000000000).find("number 4000000000"), std::string::npos);
    DdsBuilder dds = dx10(0, 4, std::string(256, '\0'));
    for (const auto& [code, name] : {std::pair{"YUY2", "YUY2"},
                                     {"RGBG", "R8G8_B8G8_UNORM"},
                                     {"GRGB", "G8R8_G8B8_UNORM"},
                                     {"WXYZ", "\"WXYZ\""}}) {
        dds.fourCC = code;
        EXPECT_NE(textureRefusalOf(dds.build()).find(name), std::string::npos) << code;
    }
    dds.fourCC = "\x01";
    EXPECT_NE(textureRefusalOf(dds.build()).find("number 1"), std::string::npos);
}

TEST(DdsFormats, masks_that_tell_nothing_are_refused) {
    const std::string texel(4, '\0');
    const auto refusal = [&](std::uint32_t flags, std::uint32_t bits,
                             std::array<std::uint32_t, 4> masks) {
        return textureRefusalOf(masked(flags, bits, masks, 1, texel).build());
    };
    EXPECT_NE(refusal(kMaskedRgb, 24, {}).find("found none"), std::string::npos);
    EXPECT_NE(refusal(kMaskedRgb, 32, {0xF0F, 0, 0, 0}).find("0xf0f"), std::string::npos);
    EXPECT_NE(refusal(kMaskedRgb, 12, {0xF, 0, 0, 0}).find("12"), std::string::npos);
    EXPECT_NE(refusal(kMaskedRgb, 0, {0xF, 0, 0, 0}).find("8, 16, 24 or 32"), std::string::npos);
    EXPECT_NE(refusal(0x20, 8, {}).find("palette"), std::string::npos);
    EXPECT_NE(refusal(0x200, 16, {}).find("video"), std::string::npos);
    EXPECT_NE(refusal(0x8, 16, {}).find("0x8"), std::string::npos);
}

}  // namespace
}  // namespace rb::test
