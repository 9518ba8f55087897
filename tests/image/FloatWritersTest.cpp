// Pictures of floats that are written as OpenEXR and Radiance: another program compares them with
// files that are put together by hand.

#include "tests/image/TiffBuilder.h"
#include "tests/image/WrittenImages.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace rb::test;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

Format formatOf(int channels) {
    return channels == 1 ? Format::L_f : channels == 3 ? Format::RGB_f : Format::RGBA_f;
}

std::vector<float> randomValues(std::size_t count) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> exponent(-20, 20);
    std::vector<float> values(count);
    for (float& value : values) value = std::exp2(exponent(random));
    return values;
}

struct FloatPicture {
    int width = 0, height = 0, channels = 0;
    std::vector<float> values;

    std::size_t size() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
               static_cast<std::size_t>(channels);
    }
    Image image() const {
        Image image = Image::Adopt(new KVRPixelImage(width, height, formatOf(channels)));
        std::memcpy(image->GetFloatingPixelsToModify(), values.data(), 4 * values.size());
        return image;
    }
    std::string tiff() const {
        constexpr unsigned kFloat = 3, kRgb = 2, kAlpha = 1;
        TiffBuilder tiff(static_cast<unsigned>(width), static_cast<unsigned>(height));
        std::vector<std::uint64_t> numbers;
        for (const float value : values) numbers.push_back(std::bit_cast<std::uint32_t>(value));
        tiff.samples(static_cast<unsigned>(channels), 32, kFloat).block(tiff.numbers(numbers, 4));
        if (channels > 1) tiff.set(262, TiffBuilder::kShort, {kRgb});
        if (channels == 4) tiff.set(338, TiffBuilder::kShort, {kAlpha});
        return tiff.build();
    }
};

FloatPicture randomPicture(int width, int height, int channels) {
    FloatPicture picture{width, height, channels, {}};
    picture.values = randomValues(picture.size());
    return picture;
}

/// Throws, and says how they differ, unless another program finds the same values in both files.
void expectSame(const std::string& one, const std::string& other) {
    EXPECT_NO_THROW(
        runProgram("oiiotool --fail 0 --diff " + shellWord(one) + " " + shellWord(other)));
}

std::string writtenAs(const TempFolder& folder, const FloatPicture& picture, const char* format) {
    // The other program wants to know the format.
    const std::string path = folder.file(std::string("written.") + format);
    EXPECT_EQ(picture.image()->WriteToFile(path, format), S_OK) << KVRLastImageError().Message();
    return path;
}

/// The values that a common exponent leaves of three: multiples of a power of two of which the
/// largest one has at most 255.
void roundTogether(float* color) {
    const float largest = std::max({color[0], color[1], color[2]});
    float unit = std::exp2(std::floor(std::log2(largest)) - 7);
    if (std::round(largest / unit) > 255) unit *= 2;
    for (int i = 0; i < 3; ++i) color[i] = std::nearbyint(color[i] / unit) * unit;
}

/// What a Radiance picture keeps.
FloatPicture rounded(const FloatPicture& picture) {
    FloatPicture result{picture.width, picture.height, 3, {}};
    for (std::size_t i = 0; i < picture.size(); i += static_cast<std::size_t>(picture.channels)) {
        const float* const from = picture.values.data() + i;
        const bool isGrey = picture.channels == 1;
        float color[] = {from[0], from[isGrey ? 0 : 1], from[isGrey ? 0 : 2]};
        roundTogether(color);
        result.values.insert(result.values.end(), color, color + 3);
    }
    return result;
}

}  // namespace

TEST(ExrWriter, another_program_reads_the_same_values) {
    const TempFolder folder;
    for (const int channels : {1, 3, 4})
        for (const int width : {1, 7, 130}) {
            const FloatPicture picture = randomPicture(width, 37, channels);
            expectSame(writtenAs(folder, picture, "EXR"),
                       folder.write("by-hand.tif", picture.tiff()));
        }
}

TEST(ExrWriter, values_come_back_bit_for_bit) {
    const TempFolder folder;
    FloatPicture picture{4, 2, 1, {0, -0.0F, kInfinity, -kInfinity, 1e-45F, -3.5F, 3.4e38F, 65504}};
    const Image back = loadFile(writtenAs(folder, picture, "EXR"));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetFormat(), Format::L_f);
    EXPECT_EQ(std::memcmp(back->GetFloatingPixelsToRead(), picture.values.data(), 32), 0);
    picture.values[3] = kNan;
    const Image nan = loadFile(writtenAs(folder, picture, "EXR"));
    EXPECT_TRUE(std::isnan(nan->GetFloatingPixelsToRead()[3]));
}

TEST(ExrWriter, channels_and_resolution_come_back) {
    const TempFolder folder;
    for (const int channels : {1, 3, 4}) {
        const Image image = randomPicture(5, 4, channels).image();
        image->SetResolution(100, 50, 3);
        const std::string path = folder.file("written.exr");
        ASSERT_EQ(image->WriteToFile(path, "EXR"), S_OK);
        const Image back = loadFile(path);
        EXPECT_EQ(back->GetFormat(), formatOf(channels));
        EXPECT_NEAR(back->GetXResolution(), 254, 1e-3);  // a centimetre is 1 / 2.54 inches
        EXPECT_NEAR(back->GetYResolution(), 127, 1e-3);
    }
}

TEST(HdrWriter, another_program_reads_what_a_common_exponent_leaves) {
    const TempFolder folder;
    // Narrower than 8 pixels, rows are stored pixel by pixel.
    for (const int channels : {1, 3, 4})
        for (const int width : {1, 7, 8, 300}) {
            const FloatPicture picture = randomPicture(width, 11, channels);
            expectSame(writtenAs(folder, picture, "HDR"),
                       folder.write("by-hand.tif", rounded(picture).tiff()));
        }
}

TEST(HdrWriter, runs_of_equal_pixels_are_short_and_come_back) {
    const TempFolder folder;
    FloatPicture picture{1000, 3, 1, std::vector<float>(3000, 0.25F)};
    for (const std::size_t i : {1005UL, 1006UL, 1500UL, 2999UL}) picture.values[i] = 8;
    const std::string path = writtenAs(folder, picture, "HDR");
    EXPECT_LT(contentOf(path).size(), 500U);
    expectSame(path, folder.write("by-hand.tif", rounded(picture).tiff()));
}

TEST(HdrWriter, values_that_it_cannot_hold_become_the_nearest_that_it_can) {
    const TempFolder folder;
    const float largest = std::ldexp(255.0F, 119);
    const FloatPicture picture{8, 1, 1, {kNan, -1, kInfinity, 3.4e38F, 1e-45F, 0, 255.4F, 255.6F}};
    const Image back = loadFile(writtenAs(folder, picture, "HDR"));
    ASSERT_TRUE(back);
    const float expected[] = {0, 0, largest, largest, 0, 0, 255, 256};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(back->GetFloatingPixelsToRead()[3 * i], expected[i]) << i;
}

TEST(FloatWriters, other_pixels_are_refused_both_ways) {
    const TempFolder folder;
    const std::string path = folder.file("refused");
    const Image bytes = imageOf(gradients(3, 2, 3));
    const Image half = Image::Adopt(new KVRPixelImage(3, 2, Format::RGB_f16));
    for (const char* format : {"EXR", "HDR"}) {
        EXPECT_EQ(bytes->WriteToFile(path, format), E_FAIL);
        EXPECT_EQ(lastRefusal(), ": expected float pixels to write, found RGB pixels");
        EXPECT_EQ(half->WriteToFile(path, format), E_FAIL);
    }
    EXPECT_EQ(randomPicture(3, 2, 3).image()->WriteToFile(path, "PNG"), E_FAIL);
    EXPECT_EQ(lastRefusal(), ": expected 8-bit pixels to write, found RGB_f pixels");
    EXPECT_FALSE(std::filesystem::exists(path));
}
