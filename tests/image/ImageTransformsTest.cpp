// Images derived from images: formats, sizes, attributes, references.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/DerivedImages.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace rb::test {
namespace {

using Services = KVRRbaImageServices;
using Transform = KVRPixelImage* (*)(const KVRPixelImage*);

constexpr Transform kTransforms[] = {
    Services::ComputeGreyScaleImage, Services::ComputeMonochromaImage,
    Services::ComputeNegativeImage, Services::ComputeAlphaInvertImage,
    Services::GenerateMaskFromAlpha};

/// The pixels of a transformed image of one pixel.
std::vector<int> onePixel(Transform transform, Format from, const std::vector<int>& values,
                          Format to) {
    const Image image =
        imageOf(1, 1, from, std::vector<std::uint8_t>(values.begin(), values.end()));
    return bytesOf(Image::Adopt(transform(image.Get())), 1, 1, to);
}

bool hasByteChannels(Format format) { return imaging::layoutOf(format).bytesPerChannel() == 1; }

}  // namespace

TEST(ImageTransforms, null_gives_null) {
    for (const Transform transform : kTransforms) EXPECT_EQ(transform(nullptr), nullptr);
}

TEST(ImageTransforms, every_format_gives_a_new_image_and_keeps_the_source) {
    for (const Format format : allFormats()) {
        const Image source = numbered(5, 3, format);
        source->SetResolution(300, 200, 2);
        const std::string before = rawPixels(source);
        for (const Transform transform : kTransforms) {
            const Image result = Image::Adopt(transform(source.Get()));
            ASSERT_TRUE(result) << static_cast<int>(format);
            EXPECT_NE(result.Get(), source.Get());
            EXPECT_EQ(referencesOf(result), 1U);
            EXPECT_EQ(result->GetXResolution(), 300);
            int width = 0, height = 0;
            result->GetSize(width, height);
            EXPECT_EQ(width, 5);
            EXPECT_EQ(height, 3);
        }
        EXPECT_EQ(referencesOf(source), 1U);
        EXPECT_EQ(source->GetFormat(), format);
        EXPECT_EQ(rawPixels(source), before);
    }
}

TEST(ImageTransforms, other_channels_than_bytes_are_copied) {
    for (const Format format : allFormats()) {
        if (hasByteChannels(format)) continue;
        const Image source = numbered(3, 1, format);
        for (const Transform transform : kTransforms) {
            const Image result = Image::Adopt(transform(source.Get()));
            EXPECT_EQ(result->GetFormat(), format);
            EXPECT_EQ(rawPixels(result), rawPixels(source)) << static_cast<int>(format);
        }
    }
}

TEST(ImageTransforms, images_without_pixels_or_format) {
    for (const Transform transform : kTransforms) {
        for (const Format format : allFormats()) {
            const Image empty = Image::Adopt(new KVRPixelImage(0, 0, format));
            const Image result = Image::Adopt(transform(empty.Get()));
            ASSERT_TRUE(result);
            EXPECT_EQ(rawPixels(result), "");
            // The format is the one that an image with pixels gets.
            const Image full = Image::Adopt(transform(numbered(1, 1, format).Get()));
            ASSERT_TRUE(full);
            EXPECT_EQ(result->GetFormat(), full->GetFormat()) << static_cast<int>(format);
        }
        const Image formless = Image::Adopt(new KVRPixelImage(2, 2, Format::None));
        const Image copy = Image::Adopt(transform(formless.Get()));
        ASSERT_TRUE(copy);
        EXPECT_EQ(copy->GetFormat(), Format::None);
    }
}

TEST(ImageTransforms, without_memory_there_is_no_image) {
    unsigned char pixels = 0;
    const Image huge = hugeImage(Format::L, &pixels);
    for (const Transform transform : kTransforms) EXPECT_EQ(transform(huge.Get()), nullptr);
}

TEST(ImageTransforms, grey_takes_the_first_three_bytes_of_every_byte_format) {
    const Transform grey = Services::ComputeGreyScaleImage;
    using Values = std::vector<int>;
    EXPECT_EQ(onePixel(grey, Format::L, {9}, Format::L), (Values{9}));
    EXPECT_EQ(onePixel(grey, Format::LA, {9, 70}, Format::LA), (Values{9, 70}));
    EXPECT_EQ(onePixel(grey, Format::Bilevel, {1}, Format::Bilevel), (Values{1}));
    for (const Format format : {Format::RGB, Format::BGR})
        EXPECT_EQ(onePixel(grey, format, {0, 90, 255}, format), (Values{127, 127, 127}));
    for (const Format format : {Format::RGBA, Format::BGRA, Format::ARGB, Format::ABGR})
        EXPECT_EQ(onePixel(grey, format, {20, 10, 11, 200}, format), (Values{15, 15, 15, 200}));
}

TEST(ImageTransforms, black_and_white_comes_in_rgba) {
    const Transform mono = Services::ComputeMonochromaImage;
    const std::vector<int> black{0, 0, 0, 255}, white{255, 255, 255, 255};
    EXPECT_EQ(onePixel(mono, Format::RGBA, {127, 128, 128, 5}, Format::RGBA),
              (std::vector<int>{255, 255, 255, 5}));
    EXPECT_EQ(onePixel(mono, Format::RGBA, {127, 128, 127, 0}, Format::RGBA),
              (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(onePixel(mono, Format::RGB, {0, 128, 255}, Format::RGBA), white);
    EXPECT_EQ(onePixel(mono, Format::L, {127}, Format::RGBA), black);
    EXPECT_EQ(onePixel(mono, Format::L, {128}, Format::RGBA), white);
    EXPECT_EQ(onePixel(mono, Format::LA, {200, 3}, Format::RGBA),
              (std::vector<int>{255, 255, 255, 3}));
    EXPECT_EQ(onePixel(mono, Format::Bilevel, {1}, Format::RGBA), white);
    EXPECT_EQ(onePixel(mono, Format::ABGR, {9, 128, 128, 127}, Format::RGBA),
              (std::vector<int>{255, 255, 255, 9}));
}

TEST(ImageTransforms, alpha_is_inverted_in_rgba) {
    const Transform invert = Services::ComputeAlphaInvertImage;
    EXPECT_EQ(onePixel(invert, Format::RGBA, {1, 2, 3, 100}, Format::RGBA),
              (std::vector<int>{1, 2, 3, 155}));
    EXPECT_EQ(onePixel(invert, Format::BGRA, {1, 2, 3, 0}, Format::RGBA),
              (std::vector<int>{3, 2, 1, 255}));
    EXPECT_EQ(onePixel(invert, Format::RGB, {1, 2, 3}, Format::RGBA),
              (std::vector<int>{1, 2, 3, 0}));
    EXPECT_EQ(onePixel(invert, Format::L, {7}, Format::RGBA), (std::vector<int>{7, 7, 7, 0}));
}

TEST(ImageTransforms, negative_of_every_byte_format) {
    const Transform negative = Services::ComputeNegativeImage;
    using Values = std::vector<int>;
    EXPECT_EQ(onePixel(negative, Format::L, {7}, Format::L), (Values{248}));
    EXPECT_EQ(onePixel(negative, Format::LA, {7, 9}, Format::LA), (Values{248, 9}));
    EXPECT_EQ(onePixel(negative, Format::Bilevel, {1}, Format::L), (Values{0}));
    EXPECT_EQ(onePixel(negative, Format::Bilevel, {0}, Format::L), (Values{255}));
    for (const Format format : {Format::RGB, Format::BGR})
        EXPECT_EQ(onePixel(negative, format, {0, 1, 255}, format), (Values{255, 254, 0}));
    for (const Format format : {Format::RGBA, Format::BGRA, Format::ARGB, Format::ABGR})
        EXPECT_EQ(onePixel(negative, format, {0, 1, 255, 9}, format), (Values{255, 254, 0, 9}));
}

TEST(ImageTransforms, mask_of_every_byte_format) {
    const Transform mask = Services::GenerateMaskFromAlpha;
    using Values = std::vector<int>;
    EXPECT_EQ(onePixel(mask, Format::L, {7}, Format::L), (Values{0}));
    EXPECT_EQ(onePixel(mask, Format::Bilevel, {1}, Format::Bilevel), (Values{0}));
    EXPECT_EQ(onePixel(mask, Format::LA, {7, 9}, Format::LA), (Values{246, 255}));
    for (const Format format : {Format::RGB, Format::BGR})
        EXPECT_EQ(onePixel(mask, format, {1, 2, 3}, format), (Values{0, 0, 0}));
    for (const Format format : {Format::RGBA, Format::BGRA, Format::ARGB, Format::ABGR})
        EXPECT_EQ(onePixel(mask, format, {1, 2, 3, 200}, format), (Values{55, 55, 55, 255}));
}

}  // namespace rb::test
