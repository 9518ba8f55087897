// Pixels of JPEG files: every kind of coding, every kind of colours.

#include "tests/image/ImageFiles.h"
#include "tests/image/InkProfile.h"
#include "tests/image/JpegBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;

/// A picture without hard edges, so that little is lost.
RawPicture soft(int width, int height, int channels) {
    RawPicture picture{width, height, channels, 8, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                picture.append(
                    static_cast<int>(128 + 100 * std::sin(0.05 * x * (c + 1) + 0.03 * y + c)));
    return picture;
}

/// Squares of 8 x 8 pixels in a row, each of one colour: exact at quality 100.
std::string squares(const std::vector<std::string>& colors) {
    std::string row;
    for (const std::string& color : colors)
        for (int x = 0; x < 8; ++x) row += color;
    std::string samples;
    for (int y = 0; y < 8; ++y) samples += row;
    return samples;
}

/// One pixel of each square.
Values colorsOf(const Image& image, int count, Format format) {
    const Values all = bytesOf(image, 8 * count, 8, format);
    const std::size_t channels = format == Format::L ? 1 : 3;
    Values colors;
    for (std::size_t i = 0; i < all.size() / 8; i += 8 * channels)
        colors.insert(colors.end(), all.begin() + static_cast<std::ptrdiff_t>(i),
                      all.begin() + static_cast<std::ptrdiff_t>(i + channels));
    return colors;
}

constexpr JpegRecipe kInk{.samples = JCS_CMYK, .stored = JCS_CMYK, .components = 4};

/// A device whose black ink alone counts, from paper white to L* = 0, with straight lines between.
std::string blackOnlyProfile() {
    std::array<cmsCIELab, 16> nodes{};
    for (std::size_t i = 0; i < nodes.size(); ++i) nodes[i].L = i % 2 ? 0 : 100;
    return inkProfile(nodes);
}

}  // namespace

TEST(Jpeg, grey_and_colours_as_other_programs_see_them) {
    const TempFolder folder;
    for (const int channels : {1, 3}) {
        const std::string in = writePortableMap(folder, "in.pnm", soft(75, 53, channels));
        for (const char* options :
             {"-quality 95 -sampling-factor 1x1", "-quality 40 -sampling-factor 2x2",
              "-quality 80 -sampling-factor 2x1 -interlace JPEG"}) {
            const std::string out = folder.file("out.jpg");
            runProgram("convert " + shellWord(in) + " " + options + " " + shellWord(out));
            EXPECT_EQ(rawPixels(loadFile(out)),
                      decodedByConvert(out, channels == 1 ? "gray" : "rgb"))
                << options;
        }
    }
}

TEST(Jpeg, pixels_are_those_that_went_in) {
    const RawPicture picture = soft(75, 53, 3);
    const Values pixels =
        bytesOf(loadBytes(encodeJpeg(75, 53, picture.samples, {})), 75, 53, Format::RGB);
    ASSERT_EQ(pixels.size(), picture.samples.size());
    // Colours are rounded on their way in and out, and blue is 1.8 times its rounded difference.
    constexpr int kRounding = 5;
    int sum = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int difference = pixels[i] - static_cast<unsigned char>(picture.samples[i]);
        ASSERT_LE(std::abs(difference), kRounding) << i;
        sum += std::abs(difference);
    }
    EXPECT_LT(sum, static_cast<int>(pixels.size()));
}

TEST(Jpeg, the_way_of_coding_changes_no_pixel) {
    const RawPicture picture = soft(130, 71, 3);
    for (const int chroma : {1, 2}) {
        const JpegRecipe baseline{.quality = 85, .chroma = chroma};
        const std::string expected =
            rawPixels(loadBytes(encodeJpeg(130, 71, picture.samples, baseline)));
        ASSERT_EQ(expected.size(), picture.samples.size());
        JpegRecipe other = baseline;
        other.progressive = true;
        EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(130, 71, picture.samples, other))), expected);
        other.arithmetic = true;
        EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(130, 71, picture.samples, other))), expected);
        other.progressive = false;
        EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(130, 71, picture.samples, other))), expected);
        other.arithmetic = false;
        other.restartBlocks = 3;
        EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(130, 71, picture.samples, other))), expected);
    }
}

TEST(Jpeg, colours_stored_as_rgb) {
    const std::string file =
        encodeJpeg(16, 8, squares({bytes({255, 0, 10}), bytes({1, 200, 99})}), {.stored = JCS_RGB});
    EXPECT_EQ(colorsOf(loadBytes(file), 2, Format::RGB), (Values{255, 0, 10, 1, 200, 99}));
}

TEST(Jpeg, ink_with_the_adobe_segment_counts_down_from_full_ink) {
    // Ink 0 0 0 0, 255 0 0 0, 0 100 200 51, 12 34 56 255: stored as 255 minus that.
    const std::string file =
        encodeJpeg(32, 8,
                   squares({bytes({255, 255, 255, 255}), bytes({0, 255, 255, 255}),
                            bytes({255, 155, 55, 204}), bytes({243, 221, 199, 0})}),
                   kInk);
    const Image image = loadBytes(file);
    // (255 - ink) (255 - black) / 255: 204, 155 * 0.8 = 124, 55 * 0.8 = 44.
    EXPECT_EQ(colorsOf(image, 4, Format::RGB),
              (Values{255, 255, 255, 0, 255, 255, 204, 124, 44, 0, 0, 0}));
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
}

TEST(Jpeg, ink_without_the_adobe_segment_counts_up_from_none) {
    JpegRecipe recipe = kInk;
    recipe.adobe = false;
    const std::string file = encodeJpeg(
        24, 8, squares({bytes({0, 0, 0, 0}), bytes({0, 100, 200, 51}), bytes({7, 7, 7, 255})}),
        recipe);
    EXPECT_EQ(colorsOf(loadBytes(file), 3, Format::RGB),
              (Values{255, 255, 255, 204, 124, 44, 0, 0, 0}));
}

TEST(Jpeg, ink_stored_as_luminance_and_chroma) {
    // Against the ink values that another program finds; both kinds of ink files.
    const TempFolder folder;
    const RawPicture picture = soft(61, 40, 4);
    for (const J_COLOR_SPACE stored : {JCS_YCCK, JCS_CMYK}) {
        JpegRecipe recipe = kInk;
        recipe.stored = stored;
        recipe.quality = 85;
        const std::string path =
            folder.write("ink.jpg", encodeJpeg(61, 40, picture.samples, recipe));
        const std::string ink = decodedByConvert(path, "cmyk");
        ASSERT_EQ(ink.size(), picture.samples.size());
        Values expected;
        const auto light = [&](std::size_t i) { return 255 - static_cast<unsigned char>(ink[i]); };
        for (std::size_t i = 0; i < ink.size(); i += 4)
            for (std::size_t c = 0; c < 3; ++c)
                expected.push_back(
                    static_cast<int>(std::lround(light(i + c) * light(i + 3) / 255.0)));
        EXPECT_EQ(bytesOf(loadFile(path), 61, 40, Format::RGB), expected);
    }
}

TEST(Jpeg, ink_with_a_profile_goes_through_it) {
    const std::string icc =
        segment(0xE2, std::string("ICC_PROFILE\0\1\1", 14) + blackOnlyProfile());
    // Full cyan is as white as none for this device; full black is black; L* 50 is grey 119.
    const auto colors = [&](bool adobe) {
        JpegRecipe recipe = kInk;
        recipe.adobe = adobe;
        const int none = adobe ? 255 : 0, full = 255 - none, half = adobe ? 127 : 128;
        const std::string file =
            encodeJpeg(24, 8,
                       squares({bytes({full, none, none, none}), bytes({none, none, none, full}),
                                bytes({none, full, none, half})}),
                       recipe);
        return colorsOf(
            loadBytes(adobe ? withSegments(file, icc) : file.substr(0, 2) + icc + file.substr(2)),
            3, Format::RGB);
    };
    for (const bool adobe : {true, false}) {
        const Values found = colors(adobe);
        const Values expected{255, 255, 255, 0, 0, 0, 119, 119, 119};
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 2) << i;
    }
}

TEST(Jpeg, ink_with_a_profile_of_another_space_goes_without) {
    const Image wide = loadFile(RB_SOURCE_DIR "/samples/images/wide-gamut.png");
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(wide->GetColorProfile());
    const std::string icc(reinterpret_cast<const char*>(profile->GetData().data()),
                          profile->GetData().size());
    const std::string file =
        withSegments(encodeJpeg(8, 8, squares({bytes({255, 155, 55, 204})}), kInk),
                     segment(0xE2, std::string("ICC_PROFILE\0\1\1", 14) + icc));
    EXPECT_EQ(colorsOf(loadBytes(file), 1, Format::RGB), (Values{204, 124, 44}));
}

TEST(Jpeg, large_ink_pictures_are_whole) {
    // More than one band, and the last one shorter.
    constexpr int kWidth = 1500, kHeight = 1601;
    std::string samples;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) samples += bytes({y / 8 % 256, x / 8 % 256, 255, 255});
    JpegRecipe recipe = kInk;
    const Values pixels = bytesOf(loadBytes(encodeJpeg(kWidth, kHeight, samples, recipe)), kWidth,
                                  kHeight, Format::RGB);
    ASSERT_EQ(pixels.size(), std::size_t{kWidth} * kHeight * 3);
    for (int y = 0; y < kHeight; y += 7)
        for (int x = 0; x < kWidth; x += 5) {
            const auto i = static_cast<std::size_t>(y * kWidth + x) * 3;
            ASSERT_EQ(pixels[i], y / 8 % 256) << x << ' ' << y;
            ASSERT_EQ(pixels[i + 1], x / 8 % 256) << x << ' ' << y;
            ASSERT_EQ(pixels[i + 2], 255);
        }
}

TEST(Jpeg, orientation_is_not_applied) {
    const std::string exif =  // one field: Orientation 6, turned to the right
        std::string("Exif\0\0II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 32);
    const std::string file =
        encodeJpeg(16, 8, squares({bytes({9, 9, 9}), bytes({200, 200, 200})}), {});
    EXPECT_EQ(colorsOf(loadBytes(withSegments(file, segment(0xE1, exif))), 2, Format::RGB),
              (Values{9, 9, 9, 200, 200, 200}));
}

TEST(Jpeg, the_best_compression_there_is_passes_for_whole) {
    const std::string grey(3000 * 2000, '\x80'), ink(1000 * 1000 * 4, '\x80');
    for (const bool progressive : {false, true})
        for (const bool arithmetic : {false, true}) {
            JpegRecipe recipe{.samples = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE, .components = 1};
            recipe.quality = 5;
            recipe.progressive = progressive;
            recipe.arithmetic = arithmetic;
            EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(3000, 2000, grey, recipe))), grey);
            recipe.samples = JCS_CMYK;
            recipe.stored = JCS_YCCK;
            recipe.components = 4;
            recipe.chroma = 2;
            EXPECT_EQ(rawPixels(loadBytes(encodeJpeg(1000, 1000, ink, recipe))).size(), 3000000U);
        }
}
