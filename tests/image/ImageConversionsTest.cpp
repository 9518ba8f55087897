// Conversions of whole images and of format codes.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "RenderingBase/public/openexr_half.h"
#include "tests/image/DerivedImages.h"
#include "tests/support/LoadTimeEnvironment.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace rb::test {
namespace {

using Services = KVRRbaImageServices;
using Bytes = std::vector<int>;
using Floats = std::vector<float>;

Image fromFloats(const Image& source) {
    return Image::Adopt(Services::ConvertFloatTextureToRGBA(source.Get()));
}

Image fromHalves(const Image& source) {
    return Image::Adopt(Services::ConvertHalfFloatTextureToRGBA(source.Get()));
}

std::vector<std::uint16_t> halves(const Floats& values) {
    std::vector<std::uint16_t> bits;
    for (const float value : values) bits.push_back(float_to_half(value).bits());
    return bits;
}

bool isOneOf(Format format, const std::vector<Format>& formats) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

const std::vector<Format> kFloatFormats{Format::L_f, Format::RGB_f, Format::RGBA_f};
const std::vector<Format> kHalfFormats{Format::L_f16, Format::RGB_f16, Format::RGBA_f16};

}  // namespace

TEST(ImageConversions, null_gives_nothing) {
    EXPECT_EQ(Services::ConvertFloatTextureToRGBA(nullptr), nullptr);
    EXPECT_EQ(Services::ConvertHalfFloatTextureToRGBA(nullptr), nullptr);
    KVRPixelImage* rgb = nullptr;
    Services::ConvertRTextureToRGB(nullptr, rgb);
    EXPECT_EQ(rgb, nullptr);
}

TEST(ImageConversions, floats_become_rgba) {
    EXPECT_EQ(
        bytesOf(fromFloats(imageOf<float>(2, 1, Format::L_f, {0.2F, 0.5F})), 2, 1, Format::RGBA),
        (Bytes{98, 98, 98, 255, 151, 151, 151, 255}));
    EXPECT_EQ(bytesOf(fromFloats(imageOf<float>(1, 2, Format::RGB_f, {0, 0, 0, 1, 1, 1})), 1, 2,
                      Format::RGBA),
              (Bytes{0, 0, 0, 255, 255, 255, 255, 255}));
    EXPECT_EQ(bytesOf(fromFloats(imageOf<float>(1, 2, Format::RGBA_f,
                                                {0.5F, 0.5F, 0.5F, 2.0F, 1, 1, 1, -1.0F})),
                      1, 2, Format::RGBA),
              (Bytes{151, 151, 151, 254, 255, 255, 255, 1}));
}

TEST(ImageConversions, halves_become_rgba) {
    EXPECT_EQ(bytesOf(fromHalves(imageOf(1, 1, Format::L_f16, halves({0.5F}))), 1, 1, Format::RGBA),
              (Bytes{151, 151, 151, 255}));
    EXPECT_EQ(
        bytesOf(fromHalves(imageOf(1, 1, Format::RGB_f16, halves({1, 0, 0}))), 1, 1, Format::RGBA),
        (Bytes{255, 0, 0, 255}));
    EXPECT_EQ(bytesOf(fromHalves(imageOf(2, 1, Format::RGBA_f16,
                                         halves({0.5F, 0.5F, 0.5F, 2.0F, 0, 0, 0, -1.0F}))),
                      2, 1, Format::RGBA),
              (Bytes{151, 151, 151, 255, 0, 0, 0, 0}));
}

TEST(ImageConversions, every_half_becomes_what_its_float_becomes) {
    std::vector<std::uint16_t> bits;
    Floats values;
    for (unsigned i = 0; i < 0x10000; ++i) {
        bits.push_back(static_cast<std::uint16_t>(i));
        values.push_back(half_to_float(openexr_half(bits.back())));
    }
    EXPECT_EQ(rawPixels(fromHalves(imageOf(256, 256, Format::L_f16, bits))),
              rawPixels(fromFloats(imageOf(256, 256, Format::L_f, values))));
}

TEST(ImageConversions, halves_of_any_number_of_pixels_are_all_converted) {
    for (const int width : {1, 3, 1023, 1024, 1025, 2500}) {
        for (const Format format : {Format::RGB_f16, Format::RGBA_f16}) {
            Floats values(static_cast<std::size_t>(3 * width) *
                          (format == Format::RGB_f16 ? 3U : 4U));
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = static_cast<float>(i % 257) / 256;  // halves exactly
            const Format floats = format == Format::RGB_f16 ? Format::RGB_f : Format::RGBA_f;
            EXPECT_EQ(rawPixels(fromHalves(imageOf(width, 3, format, halves(values)))),
                      rawPixels(fromFloats(imageOf(width, 3, floats, values))))
                << width;
        }
    }
}

TEST(ImageConversions, results_are_new_and_bare_and_sources_stay) {
    for (const Format format : allFormats()) {
        const bool isFloat = isOneOf(format, kFloatFormats);
        if (!isFloat && !isOneOf(format, kHalfFormats)) continue;
        const Image source = numbered(7, 5, format);
        source->SetResolution(300, 300, 2);
        const std::string before = rawPixels(source);
        const Image rgba = isFloat ? fromFloats(source) : fromHalves(source);
        ASSERT_TRUE(rgba);
        EXPECT_EQ(bytesOf(rgba, 7, 5, Format::RGBA).size(), 4U * 7 * 5);
        EXPECT_EQ(rgba->GetXResolution(), 0);
        EXPECT_EQ(referencesOf(rgba), 1U);
        EXPECT_EQ(referencesOf(source), 1U);
        EXPECT_EQ(source->GetFormat(), format);
        EXPECT_EQ(rawPixels(source), before);
    }
}

TEST(ImageConversions, without_source_pixels_the_image_stays_black) {
    for (const Format format : kFloatFormats) {
        EXPECT_EQ(bytesOf(fromFloats(imageOf<float>(0, 0, format, {})), 0, 0, Format::RGBA),
                  Bytes{});
        const Image nothing = Image::Adopt(
            new KVRPixelImage(2, 1, format, static_cast<float*>(nullptr), KVRPixelDealloc::Viewed));
        EXPECT_EQ(bytesOf(fromFloats(nothing), 2, 1, Format::RGBA), Bytes(8, 0));
    }
    for (const Format format : kHalfFormats) {
        EXPECT_EQ(bytesOf(fromHalves(imageOf<float>(0, 0, format, {})), 0, 0, Format::RGBA),
                  Bytes{});
        const Image nothing = Image::Adopt(new KVRPixelImage(
            2, 1, format, static_cast<unsigned char*>(nullptr), KVRPixelDealloc::Viewed));
        EXPECT_EQ(bytesOf(fromHalves(nothing), 2, 1, Format::RGBA), Bytes(8, 0));
    }
}

TEST(ImageConversions, without_memory_there_is_a_warning_and_null) {
    unsigned char pixels = 0;
    const Image floats = hugeImage(Format::L_f, &pixels);
    const Image halfs = hugeImage(Format::L_f16, &pixels);
    for (const bool isFloat : {true, false}) {
        KVRPixelImage* result = floats.Get();
        const std::string log = written([&] {
            result = isFloat ? Services::ConvertFloatTextureToRGBA(floats.Get())
                             : Services::ConvertHalfFloatTextureToRGBA(halfs.Get());
        });
        EXPECT_EQ(result, nullptr);
        EXPECT_TRUE(log.starts_with("[WARNING] : (")) << log;
        EXPECT_NE(log.find(" ms) RenderingBase/KVRRbaModel.m/src/KVRRbaImageServices "),
                  std::string::npos)
            << log;
        EXPECT_TRUE(log.ends_with(" rgba_image is false.\n")) << log;
    }
    KVRPixelImage* rgb = nullptr;
    Services::ConvertRTextureToRGB(floats.Get(), rgb);
    EXPECT_EQ(rgb, nullptr);
}

TEST(ImageConversions, what_goes_well_is_not_logged) {
    EXPECT_EQ(written([] { fromFloats(imageOf<float>(1, 1, Format::L_f, {0})); }), "");
}

TEST(ImageConversionsDeathTest, other_formats_than_floats_are_fatal) {
    for (const Format format : allFormats()) {
        if (isOneOf(format, kFloatFormats)) continue;
        const Image image = numbered(1, 1, format);
        EXPECT_EXIT(fromFloats(image), testing::KilledBySignal(SIGABRT),
                    "format == RGBA_f \\|\\| format == RGB_f \\|\\| format == L_f([^0-9]|$)")
            << static_cast<int>(format);
    }
}

TEST(ImageConversionsDeathTest, other_formats_than_halves_are_fatal) {
    for (const Format format : allFormats()) {
        if (isOneOf(format, kHalfFormats)) continue;
        const Image image = numbered(1, 1, format);
        EXPECT_EXIT(fromHalves(image), testing::KilledBySignal(SIGABRT),
                    "format == RGBA_f16 \\|\\| format == RGB_f16 \\|\\| format == L_f16")
            << static_cast<int>(format);
    }
}

TEST(ImageConversions, one_float_channel_becomes_three) {
    const Image source = imageOf<float>(2, 2, Format::L_f, {0.5F, -3, 1e30F, 7});
    KVRPixelImage* rgb = nullptr;
    Services::ConvertRTextureToRGB(source.Get(), rgb);
    const Image image = Image::Adopt(rgb);
    EXPECT_EQ(floatsOf(image, 2, 2, Format::RGB_f),
              (Floats{0.5F, 0.5F, 0.5F, -3, -3, -3, 1e30F, 1e30F, 1e30F, 7, 7, 7}));
    EXPECT_EQ(referencesOf(image), 1U);
    EXPECT_EQ(referencesOf(source), 1U);
}

TEST(ImageConversions, one_float_channel_without_pixels) {
    KVRPixelImage* rgb = nullptr;
    Services::ConvertRTextureToRGB(imageOf<float>(0, 0, Format::L_f, {}).Get(), rgb);
    EXPECT_EQ(floatsOf(Image::Adopt(rgb), 0, 0, Format::RGB_f), Floats{});
    const Image nothing = Image::Adopt(new KVRPixelImage(
        2, 1, Format::L_f, static_cast<float*>(nullptr), KVRPixelDealloc::Viewed));
    Services::ConvertRTextureToRGB(nothing.Get(), rgb);
    EXPECT_EQ(floatsOf(Image::Adopt(rgb), 2, 1, Format::RGB_f), Floats(6, 0));
}

TEST(ImageConversions, other_formats_than_one_float_channel_leave_the_output) {
    const Image present = numbered(1, 1, Format::RGB);
    for (const Format format : allFormats()) {
        if (format == Format::L_f) continue;
        KVRPixelImage* rgb = present.Get();
        Services::ConvertRTextureToRGB(numbered(1, 1, format).Get(), rgb);
        EXPECT_EQ(rgb, present.Get()) << static_cast<int>(format);
    }
    EXPECT_EQ(referencesOf(present), 1U);
}

TEST(ImageConversions, texture_formats_with_a_pixel_format) {
    for (int code = -2; code < 260; ++code) {
        const int expected = code == 1                ? 0
                             : code == 2              ? 1
                             : code == 3              ? 2
                             : code == 4 || code == 8 ? 3
                             : code == 18             ? 14
                             : code == 19             ? 10
                             : code == 20             ? 11
                                                      : -1;
        EXPECT_EQ(Services::ConvertTextureFormat(static_cast<IVisTextureFormat::Type>(code)),
                  expected)
            << code;
    }
}

}  // namespace rb::test

int main(int argc, char** argv) {
    // Warnings are written.
    rb::test::ensureLoadTimeEnvironment(argv, {{"QLT_TRACE_SEVERITY", "2"}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
