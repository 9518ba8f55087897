// Colours of TIFF files that are not RGB: inks, Lab, luminance and chroma, logarithms.

#include "tests/image/ImageFiles.h"
#include "tests/image/InkProfile.h"
#include "tests/image/LabColors.h"
#include "tests/image/TiffBuilder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;

TiffBuilder inks(unsigned width, unsigned samples, unsigned bits = 8) {
    TiffBuilder tiff(width, 1);
    tiff.samples(samples, bits).set(262, TiffBuilder::kShort, {5});
    return tiff;
}

}  // namespace

TEST(TiffColor, inks_without_a_profile_take_their_share_of_the_paper) {
    auto tiff = inks(4, 4);
    tiff.block(bytes({0, 0, 0, 0, 255, 0, 0, 0, 0, 100, 200, 51, 12, 34, 56, 255}));
    // (255 - C) (255 - K) / 255, rounded: 204, 155 * 0.8 = 124, 55 * 0.8 = 44.
    const auto image = loadBytes(tiff.build());
    EXPECT_EQ(bytesOf(image, 4, 1, Format::RGB),
              (Values{255, 255, 255, 0, 255, 255, 204, 124, 44, 0, 0, 0}));
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
}

TEST(TiffColor, inks_of_16_bits_and_with_alpha) {
    auto wide = inks(2, 4, 16);
    wide.block(wide.numbers({0, 65535, 257 * 51, 0, 257 * 10, 0, 0, 65535}, 2));
    EXPECT_EQ(bytesOf(loadBytes(wide.build()), 2, 1, Format::RGB), (Values{255, 0, 204, 0, 0, 0}));
    auto alpha = inks(1, 5);
    alpha.set(338, TiffBuilder::kShort, {2}).block(bytes({255, 0, 0, 0, 77}));
    EXPECT_EQ(bytesOf(loadBytes(alpha.build()), 1, 1, Format::RGBA), (Values{0, 255, 255, 77}));
}

TEST(TiffColor, inks_in_planes) {
    auto tiff = inks(2, 4);
    tiff.set(284, TiffBuilder::kShort, {2}).set(278, TiffBuilder::kLong, {1});
    for (const Values& plane : {Values{255, 0}, Values{0, 255}, Values{0, 0}, Values{0, 51}})
        tiff.block(bytes(plane));
    EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 2, 1, Format::RGB),
              (Values{0, 255, 255, 204, 0, 204}));
}

TEST(TiffColor, embedded_profile_of_inks_is_used) {
    const std::string profile = profileOfInks();
    const std::vector<double> expected = sRgbOfAll(kPaperAndInks);
    for (const unsigned bits : {8U, 16U}) {
        auto tiff = inks(5, 4, bits);
        tiff.raw(34675, TiffBuilder::kUndefined, static_cast<unsigned>(profile.size()), profile);
        const std::uint64_t full = (1U << bits) - 1;
        tiff.block(
            tiff.numbers({0, 0, 0, 0, full, 0, 0, 0, 0, full, 0, 0, 0, 0, full, 0, 0, 0, 0, full},
                         static_cast<int>(bits / 8)));
        constexpr double kEngineRounding = 2;
        expectNear(bytesOf(loadBytes(tiff.build()), 5, 1, Format::RGB), expected, kEngineRounding);
    }
}

TEST(TiffColor, profile_for_another_colour_space_is_no_help_for_inks) {
    auto tiff = inks(1, 4);
    const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const auto data = sRGB->GetData();
    tiff.raw(34675, TiffBuilder::kUndefined, static_cast<unsigned>(data.size()),
             {reinterpret_cast<const char*>(data.data()), data.size()});
    EXPECT_EQ(bytesOf(loadBytes(tiff.block(bytes({0, 100, 200, 51})).build()), 1, 1, Format::RGB),
              (Values{204, 124, 44}));
}

TEST(TiffColor, lab_becomes_srgb) {
    const std::vector<double> expected = sRgbOfAll(kLabColors);
    // 8 is CIE L*a*b* with signed a and b, 9 ICC L*a*b* with an offset.
    for (const unsigned photometric : {8U, 9U})
        for (const unsigned bits : {8U, 16U}) {
            TiffBuilder tiff(6, 1);
            tiff.samples(3, bits).set(262, TiffBuilder::kShort, {photometric});
            std::vector<std::uint64_t> values;
            for (const LabColor& color : kLabColors) {
                const double unit = bits == 8 ? 1 : 256;
                const double white = bits == 8 ? 255 : photometric == 8 ? 65535 : 65280;
                const double offset = photometric == 8 ? 0 : bits == 8 ? 128 : 32768;
                values.push_back(static_cast<std::uint64_t>(std::llround(color.l / 100 * white)));
                for (double ab : {color.a, color.b})
                    values.push_back(static_cast<std::uint64_t>(std::llround(ab * unit + offset)));
            }
            tiff.block(tiff.numbers(values, static_cast<int>(bits / 8)));
            // A step of L in 8 bits is up to two of sRGB near black and none of these are there.
            constexpr double kRounding = 2;
            expectNear(bytesOf(loadBytes(tiff.build()), 6, 1, Format::RGB), expected, kRounding);
        }
}

TEST(TiffColor, lab_keeps_its_alpha) {
    TiffBuilder tiff(1, 1);
    tiff.samples(4, 8).set(262, TiffBuilder::kShort, {8}).set(338, TiffBuilder::kShort, {2});
    EXPECT_EQ(bytesOf(loadBytes(tiff.block(bytes({255, 0, 0, 99})).build()), 1, 1, Format::RGBA),
              (Values{255, 255, 255, 99}));
}

TEST(TiffColor, subsampled_luminance_and_chroma_become_rgb) {
    TiffBuilder tiff(2, 2);
    tiff.samples(3, 8).set(262, TiffBuilder::kShort, {6}).set(530, TiffBuilder::kShort, {2, 2});
    // One unit: four luminances, then Cb and Cr for all of them (TIFF 6.0, section 21).
    tiff.block(bytes({50, 100, 150, 200, 108, 148}));
    // Default coefficients: R = Y + 1.402 (Cr - 128), B = Y + 1.772 (Cb - 128),
    // G = Y - 0.34414 (Cb - 128) - 0.71414 (Cr - 128).
    std::vector<double> expected;
    for (int y : {50, 100, 150, 200})
        for (double value : {y + 28.04, y + 6.88 - 14.28, y - 35.44}) expected.push_back(value);
    expectNear(bytesOf(loadBytes(tiff.build()), 2, 2, Format::RGB), expected, 1);
}

TEST(TiffColor, rows_of_luminance_and_chroma_stay_where_they_are) {
    for (const unsigned orientation : {1U, 3U, 4U, 6U}) {
        TiffBuilder tiff(1, 3);
        tiff.samples(3, 8).set(262, TiffBuilder::kShort, {6}).set(530, TiffBuilder::kShort, {1, 1});
        tiff.set(274, TiffBuilder::kShort, {orientation}).set(278, TiffBuilder::kLong, {1});
        for (int y : {10, 20, 30}) tiff.block(bytes({y, 128, 128}));
        EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 1, 3, Format::RGB),
                  (Values{10, 10, 10, 20, 20, 20, 30, 30, 30}))
            << orientation;
    }
}

TEST(TiffColor, log_luminance_becomes_float) {
    // 16 bits: 256 steps to the factor 2, 0x4000 is 1 (SGI's log encoding). Run lengths of all high
    // bytes, then of all low ones: 130 and a byte are four of it, 4 comes before four others.
    TiffBuilder tiff(4, 1);
    tiff.samples(1, 16, 2)
        .set(259, TiffBuilder::kShort, {34676})
        .set(262, TiffBuilder::kShort, {32844});
    tiff.block(bytes({4, 0x40, 0x41, 0x3F, 0xC0, 130, 0x00}));
    const auto found = floatsOf(loadBytes(tiff.build()), 4, 1, Format::L_f);
    ASSERT_EQ(found.size(), 4U);
    const double kHalfStep = std::exp2(0.5 / 256);
    const double expected[] = {kHalfStep, 2 * kHalfStep, 0.5 * kHalfStep, -kHalfStep};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NEAR(static_cast<double>(found[i]), expected[i], std::abs(expected[i]) * 1e-6);
}

TEST(TiffColor, log_colours_become_rgb) {
    // 32 bits: log luminance as above, then u' and v' in 410ths: (u', v') of equal energy is
    // (4/19, 9/19), which is 86.3 and 194.2 of them.
    TiffBuilder tiff(1, 1);
    tiff.samples(3, 16, 2)
        .set(259, TiffBuilder::kShort, {34676})
        .set(262, TiffBuilder::kShort, {32845});
    tiff.block(bytes({1, 0x42, 1, 0x00, 1, 86, 1, 194}));
    const auto found = floatsOf(loadBytes(tiff.build()), 1, 1, Format::RGB_f);
    ASSERT_EQ(found.size(), 3U);
    for (float value : found) EXPECT_NEAR(static_cast<double>(value), 4, 0.05);
}
