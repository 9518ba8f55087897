// Images fitted into a square.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/DerivedImages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace rb::test {
namespace {

using Services = KVRRbaImageServices;

constexpr int kFilter = 2;

struct Result {
    HRESULT status;
    Image icon;
};

Result iconOf(const Image& source, int size) {
    KVRPixelImage* icon = nullptr;
    const HRESULT status = Services::ComputeIconImage(source.Get(), size, icon);
    return {status, Image::Adopt(icon)};
}

std::vector<int> background(int size) {
    std::vector<int> pixels;
    for (int i = 0; i < size * size; ++i) pixels.insert(pixels.end(), {125, 125, 125, 255});
    return pixels;
}

/// The background with a picture of this size at this place.
std::vector<int> expectedIcon(const Image& source, int size, int width, int height, int x, int y) {
    const Image zoomed = Image::Adopt(source->CreateZoomedImage(width, height, kFilter));
    const Image rgba = Image::Adopt(zoomed->Duplicate(Format::RGBA));
    const std::vector<int> picture = bytesOf(rgba, width, height, Format::RGBA);
    std::vector<int> pixels = background(size);
    for (int row = 0; row < height; ++row)
        std::copy_n(picture.begin() + std::ptrdiff_t{4} * row * width, 4 * width,
                    pixels.begin() + std::ptrdiff_t{4} * ((y + row) * size + x));
    return pixels;
}

void expectIcon(const Image& source, int size, int width, int height, int x, int y) {
    const Result result = iconOf(source, size);
    EXPECT_EQ(result.status, S_OK);
    EXPECT_EQ(bytesOf(result.icon, size, size, Format::RGBA),
              expectedIcon(source, size, width, height, x, y))
        << width << " x " << height << " in " << size;
}

}  // namespace

TEST(Icon, a_wide_picture_stands_in_the_middle_of_the_height) {
    expectIcon(numbered(200, 100, Format::RGB), 64, 64, 32, 0, 16);
    expectIcon(numbered(7, 3, Format::RGBA), 10, 10, 4, 0, 3);  // 10 * 3 / 7 = 4.29
    expectIcon(numbered(16, 9, Format::RGB), 16, 16, 9, 0, 3);
}

TEST(Icon, a_high_picture_stands_in_the_middle_of_the_width) {
    expectIcon(numbered(100, 200, Format::RGB), 64, 32, 64, 16, 0);
    expectIcon(numbered(3, 7, Format::RGBA), 10, 4, 10, 3, 0);
    expectIcon(numbered(9, 16, Format::RGB), 16, 9, 16, 3, 0);
}

TEST(Icon, a_square_fills_the_icon) {
    expectIcon(numbered(5, 5, Format::RGB), 1, 1, 1, 0, 0);
    expectIcon(numbered(1, 1, Format::RGB), 7, 7, 7, 0, 0);
    expectIcon(numbered(33, 33, Format::RGBA), 8, 8, 8, 0, 0);
}

TEST(Icon, the_ratio_is_a_single) {
    // 6 / 5 as a single is above 1.2, so that 3 divided by it is below 2.5; 5 / 6 is below too.
    expectIcon(numbered(6, 5, Format::RGB), 3, 3, 2, 0, 0);
    expectIcon(numbered(5, 6, Format::RGB), 3, 2, 3, 0, 0);
    // 4 * 0.625 is exactly 2.5, which is rounded up.
    expectIcon(numbered(5, 8, Format::RGB), 4, 3, 4, 0, 0);
}

TEST(Icon, the_alpha_of_the_picture_replaces_that_of_the_background) {
    const Image clear = imageOf<std::uint8_t>(1, 1, Format::RGBA, {1, 2, 3, 0});
    EXPECT_EQ(bytesOf(iconOf(clear, 1).icon, 1, 1, Format::RGBA), (std::vector<int>{1, 2, 3, 0}));
}

TEST(Icon, every_format) {
    for (const Format format : allFormats()) {
        const Image source = numbered(8, 4, format);
        const std::string before = rawPixels(source);
        const Result result = iconOf(source, 4);
        EXPECT_EQ(rawPixels(source), before);
        EXPECT_EQ(source->GetFormat(), format);
        EXPECT_EQ(referencesOf(source), 1U);
        if (format == Format::BGR_f16 || format == Format::BGRA_f16) {
            EXPECT_EQ(result.status, E_NOTIMPL);
            EXPECT_FALSE(result.icon);
            continue;
        }
        EXPECT_EQ(result.status, S_OK);
        EXPECT_EQ(referencesOf(result.icon), 1U);
        const imaging::PixelLayout& layout = imaging::layoutOf(format);
        Image shown = source;
        if (layout.type == imaging::ChannelType::Float)
            shown = Image::Adopt(Services::ConvertFloatTextureToRGBA(source.Get()));
        if (layout.type == imaging::ChannelType::Half)
            shown = Image::Adopt(Services::ConvertHalfFloatTextureToRGBA(source.Get()));
        EXPECT_EQ(bytesOf(result.icon, 4, 4, Format::RGBA), expectedIcon(shown, 4, 4, 2, 0, 1))
            << layout.name;
    }
}

TEST(Icon, float_pictures_have_the_tone_of_the_conversion) {
    const Image grey = imageOf<float>(2, 1, Format::L_f, {0.5F, 0.5F});
    const std::vector<int> icon = bytesOf(iconOf(grey, 2).icon, 2, 2, Format::RGBA);
    EXPECT_EQ(icon, (std::vector<int>{151, 151, 151, 255, 151, 151, 151, 255,  //
                                      125, 125, 125, 255, 125, 125, 125, 255}));
}

TEST(Icon, null_and_sizes_without_meaning_fail) {
    const Image image = numbered(2, 2, Format::RGB);
    KVRPixelImage* icon = image.Get();
    EXPECT_EQ(Services::ComputeIconImage(nullptr, 8, icon), E_FAIL);
    for (const int size : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(Services::ComputeIconImage(image.Get(), size, icon), E_FAIL);
    for (const int size : {16385, std::numeric_limits<int>::max()})
        EXPECT_EQ(Services::ComputeIconImage(image.Get(), size, icon), E_FAIL);
    EXPECT_EQ(icon, image.Get());
    EXPECT_EQ(referencesOf(image), 1U);
    const Image unknown = numbered(2, 2, Format::BGRA_f16);
    EXPECT_EQ(Services::ComputeIconImage(unknown.Get(), 0, icon), E_FAIL);
}

TEST(Icon, a_picture_that_cannot_be_zoomed_leaves_an_empty_icon) {
    const Image sources[] = {numbered(0, 0, Format::RGB), numbered(0, 0, Format::L_f),
                             numbered(0, 0, Format::L_f16),
                             numbered(100, 1, Format::RGB),  // 4 / 100 of a pixel high
                             numbered(1, 100, Format::RGB)};
    for (const Image& source : sources) {
        const Result result = iconOf(source, 4);
        EXPECT_EQ(result.status, E_FAIL);
        EXPECT_EQ(bytesOf(result.icon, 4, 4, Format::RGBA), background(4));
        EXPECT_EQ(referencesOf(result.icon), 1U);
    }
}

TEST(Icon, a_failed_conversion_is_logged) {
    unsigned char pixels = 0;
    for (const Format format : {Format::L_f, Format::L_f16}) {
        const Image huge = hugeImage(format, &pixels);
        Result result{};
        const std::string log = written([&] { result = iconOf(huge, 4); });
        EXPECT_EQ(result.status, E_FAIL);
        EXPECT_FALSE(result.icon);
        EXPECT_NE(log.find(" rgba_image is false.\n[WARNING] : ("), std::string::npos) << log;
        EXPECT_TRUE(log.ends_with(" converted is false.\n")) << log;
    }
}

}  // namespace rb::test
