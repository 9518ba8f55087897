#include "tests/image/DerivedImages.h"
#include "tests/support/TempFolder.h"
#include "tests/texture/TextureFiles.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>

namespace rb::test {
namespace {

using Code = IVisTextureFormat;

void expectDescription(const IVisTexturePtr& texture, unsigned width, unsigned height,
                       unsigned levels, unsigned faces) {
    ASSERT_TRUE(texture) << KVRLastImageError().Message();
    const IVisTexture::Description description = texture->GetDescription();
    EXPECT_EQ(description.width, width);
    EXPECT_EQ(description.height, height);
    EXPECT_EQ(description.levels, levels);
    EXPECT_EQ(description.faces, faces);
}

IVisTexturePtr textureOf(const Image& image, bool mipMaps = false) {
    return VisTextureFactory::CreateTexture(image.Get(), mipMaps, true);
}

/// The error lines that @p work writes to the host trace of this name.
template <class Work>
std::string tracedErrors(const char* name, Work&& work) {
    setenv("ZWTSysTraces", name, 1);
    testing::internal::CaptureStderr();
    work();
    unsetenv("ZWTSysTraces");
    return testing::internal::GetCapturedStderr();
}

TEST(VisTextureFactory, keeps_the_channels_of_an_image) {
    const std::vector<std::pair<Format, Code::Type>> pairs{{Format::L, Code::L},
                                                           {Format::LA, Code::LA},
                                                           {Format::RGB, Code::RGB},
                                                           {Format::RGBA, Code::RGBA},
                                                           {Format::BGRA, Code::BGRA},
                                                           {Format::ARGB, Code::ARGB},
                                                           {Format::ABGR, Code::ABGR},
                                                           {Format::RGB_16, Code::RGB16},
                                                           {Format::RGBA_16, Code::RGBA16},
                                                           {Format::L_f16, Code::L_f16},
                                                           {Format::RGB_f16, Code::RGB_f16},
                                                           {Format::RGBA_f16, Code::RGBA_f16}};
    for (const auto& [pixels, code] : pairs) {
        const Image image = numbered(5, 3, pixels);
        const IVisTexturePtr texture = textureOf(image);
        expectDescription(texture, 5, 3, 1, 1);
        EXPECT_EQ(texture->GetFormat(), code);
        EXPECT_EQ(texelsOf(texture, image->GetRawPixels().size()), rawPixels(image));
        EXPECT_EQ(texture->ReadFloatPixels(0, 0), nullptr);
        EXPECT_EQ(referencesOf(image), 1U) << "the texture has texels of its own";
    }
}

TEST(VisTextureFactory, keeps_the_floats_of_an_image) {
    const std::vector<std::pair<Format, Code::Type>> pairs{
        {Format::L_f, Code::L_f}, {Format::RGB_f, Code::RGB_f}, {Format::RGBA_f, Code::RGBA_f}};
    for (const auto& [pixels, code] : pairs) {
        const Image image = Image::Adopt(new KVRPixelImage(2, 3, pixels));
        const std::size_t count = image->GetRawPixels().size() / sizeof(float);
        for (std::size_t i = 0; i < count; ++i)
            image->GetFloatingPixelsToModify()[i] = static_cast<float>(i) - 2.5F;
        const IVisTexturePtr texture = textureOf(image);
        ASSERT_TRUE(texture);
        EXPECT_EQ(texture->GetFormat(), code);
        EXPECT_EQ(floatTexelsOf(texture, count), floatsOf(image, 2, 3, pixels));
        EXPECT_EQ(texture->ReadPixels(0, 0), nullptr);
    }
}

TEST(VisTextureFactory, turns_pixels_without_a_code_into_the_nearest_that_have_one) {
    const Image bgr = imageOf<std::uint8_t>(1, 1, Format::BGR, {1, 2, 3});
    EXPECT_EQ(textureOf(bgr)->GetFormat(), Code::RGB);
    EXPECT_EQ(texelsOf(textureOf(bgr), 3), bytes({3, 2, 1}));
    const Image grey = imageOf<std::uint16_t>(1, 1, Format::L_16, {0x1234});
    EXPECT_EQ(textureOf(grey)->GetFormat(), Code::RGB16);
    EXPECT_EQ(texelsOf(textureOf(grey), 6), bytes({0x34, 0x12, 0x34, 0x12, 0x34, 0x12}));
    const Image halves = imageOf<std::uint16_t>(1, 1, Format::BGR_f16, {0x3C00, 0x4000, 0x4200});
    EXPECT_EQ(textureOf(halves)->GetFormat(), Code::RGB_f16);
    EXPECT_EQ(texelsOf(textureOf(halves), 6), bytes({0, 0x42, 0, 0x40, 0, 0x3C}));
    const Image clear =
        imageOf<std::uint16_t>(1, 1, Format::BGRA_f16, {0x3C00, 0x4000, 0x4200, 0x4400});
    EXPECT_EQ(textureOf(clear)->GetFormat(), Code::RGBA_f16);
    EXPECT_EQ(texelsOf(textureOf(clear), 8), bytes({0, 0x42, 0, 0x40, 0, 0x3C, 0, 0x44}));
}

TEST(VisTextureFactory, refuses_what_is_no_picture) {
    EXPECT_TRUE(VisTextureFactory::CreateTexture(nullptr, true, true) == IVisTexturePtr::kNullPtr);
    EXPECT_FALSE(textureOf(numbered(2, 2, Format::Bilevel)));
    EXPECT_FALSE(textureOf(Image::Adopt(new KVRPixelImage(0, 0, Format::RGB))));
    EXPECT_FALSE(VisTextureFactory::CreateTextureFromFile(nullptr, true, true, 0));
    EXPECT_FALSE(textureFrom("/nowhere/at all.png"));
    const TempFolder folder;
    EXPECT_FALSE(textureFrom(folder.write("a.png", "no picture")));
}

TEST(VisTextureFactory, does_not_follow_later_changes_of_the_image) {
    const Image image = imageOf<std::uint8_t>(1, 1, Format::L, {7});
    const IVisTexturePtr texture = textureOf(image, true);
    *image->GetPixelsToModify() = 9;
    EXPECT_EQ(texelsOf(texture, 1), "\x07");
}

TEST(VisTextureFactory, makes_levels_down_to_one_texel) {
    // Columns of 0 and 200 in turns: each level below has their mean, up to the edges of the
    // picture, which repeat.
    std::vector<std::uint8_t> columns;
    for (int i = 0; i < 20 * 6; ++i) columns.push_back(i % 2 == 0 ? 0 : 200);
    const IVisTexturePtr texture =
        textureOf(imageOf<std::uint8_t>(20, 6, Format::L, columns), true);
    expectDescription(texture, 20, 6, 5, 1);
    EXPECT_EQ(texelsOf(texture, 120), std::string(columns.begin(), columns.end()));
    const std::string second = texelsOf(texture, 30, 0, 1);
    ASSERT_EQ(second.size(), 30U);
    for (int y = 0; y < 3; ++y)
        for (int x = 1; x < 9; ++x)
            EXPECT_NEAR(static_cast<unsigned char>(second[static_cast<std::size_t>(10 * y + x)]),
                        100, 1);
    EXPECT_FALSE(texelsOf(texture, 1, 0, 4).empty());
    EXPECT_EQ(texture->ReadPixels(0, 5), nullptr);
    EXPECT_EQ(texture->ReadPixels(1, 0), nullptr);
}

TEST(VisTextureFactory, makes_levels_of_half_the_sides_rounded_down) {
    const IVisTexturePtr texture =
        textureOf(imageOf<std::uint8_t>(3, 1, Format::L, {30, 60, 90}), true);
    expectDescription(texture, 3, 1, 2, 1);
    EXPECT_EQ(texelsOf(texture, 1, 0, 1), "\x3C");  // one texel, the mean
}

TEST(VisTextureFactory, keeps_the_levels_of_a_file_that_ends_early) {
    const TempFolder folder;
    DdsBuilder dds = rgbaDds(8, 8, std::string(256, '\x01') + std::string(64, '\x02'));
    dds.levels = 2;
    const IVisTexturePtr texture = textureFrom(folder.write("a.dds", dds.build()));
    expectDescription(texture, 8, 8, 2, 1);
    EXPECT_EQ(texelsOf(texture, 64, 0, 1), std::string(64, '\x02'));
    EXPECT_EQ(texture->ReadPixels(0, 2), nullptr);
}

TEST(VisTextureFactory, makes_levels_of_every_format) {
    for (const Format format : allFormats()) {
        if (format == Format::Bilevel) continue;
        const IVisTexturePtr texture = textureOf(numbered(3, 5, format), true);
        expectDescription(texture, 3, 5, 3, 1);
        const bool isOfFloats = numbered(1, 1, format)->GetFloatingPixelsToRead() != nullptr;
        const std::unique_ptr<float[]> floats(texture->ReadFloatPixels(0, 2));
        const std::unique_ptr<unsigned char[]> others(texture->ReadPixels(0, 2));
        EXPECT_EQ(floats != nullptr, isOfFloats) << static_cast<int>(format);
        EXPECT_EQ(others != nullptr, !isOfFloats) << static_cast<int>(format);
    }
}

TEST(VisTextureFactory, makes_no_levels_when_none_are_wanted) {
    const IVisTexturePtr texture = textureOf(numbered(8, 8, Format::RGB), false);
    expectDescription(texture, 8, 8, 1, 1);
    EXPECT_EQ(texture->ReadPixels(0, 1), nullptr);
    expectDescription(textureFrom(sampleFile("grating-mips.dds"), false), 128, 96, 1, 1);
}

TEST(VisTextureFactory, reads_every_image_file) {
    for (const char* name : {"studio.png", "studio.jpg", "studio.bmp", "studio.rgb", "studio.pic",
                             "grey.tif", "alpha.tga", "sky.hdr", "sky-half.exr"})
        EXPECT_TRUE(textureFrom(sampleFile(name))) << KVRLastImageError().Message();
    const IVisTexturePtr texture = textureFrom(sampleFile("alpha.png"));
    expectDescription(texture, 256, 256, 9, 1);
    EXPECT_EQ(texture->GetFormat(), Code::RGBA);
    EXPECT_EQ(texelsOf(texture, 256 * 256 * 4), rawPixels(loadFile(sampleFile("alpha.png"))));
}

TEST(VisTextureFactory, keeps_the_levels_of_a_file) {
    // Levels that no filter would make of one another.
    const TempFolder folder;
    DdsBuilder dds = rgbaDds(2, 2, std::string(16, '\x01') + std::string(4, '\x99'));
    dds.levels = 2;
    const IVisTexturePtr texture = textureFrom(folder.write("a.dds", dds.build()));
    expectDescription(texture, 2, 2, 2, 1);
    EXPECT_EQ(texelsOf(texture, 16, 0, 0), std::string(16, '\x01'));
    EXPECT_EQ(texelsOf(texture, 4, 0, 1), std::string(4, '\x99'));
}

TEST(VisTextureFactory, keeps_the_faces_of_a_file) {
    constexpr std::uint32_t kCubeCaps = 0xFE00;
    const TempFolder folder;
    for (const std::uint32_t levels : {1U, 2U}) {
        DdsBuilder dds = rgbaDds(2, 2, {});
        dds.levels = levels;
        dds.caps2 = kCubeCaps;
        for (char face = 0; face < 6; ++face) {
            dds.data += std::string(16, face);
            if (levels == 2) dds.data += std::string(4, static_cast<char>(face + 10));
        }
        const IVisTexturePtr texture = textureFrom(folder.write("a.dds", dds.build()));
        expectDescription(texture, 2, 2, 2, 6);
        for (unsigned face = 0; face < 6; ++face) {
            const char value = static_cast<char>(face);
            EXPECT_EQ(texelsOf(texture, 16, face, 0), std::string(16, value));
            // A level that the file lacks is made of the face.
            const char small = static_cast<char>(levels == 2 ? value + 10 : value);
            EXPECT_EQ(texelsOf(texture, 4, face, 1), std::string(4, small));
        }
        EXPECT_EQ(texture->ReadPixels(6, 0), nullptr);
    }
}

TEST(VisTextureFactory, reads_ktx2_and_textures_under_any_name) {
    expectDescription(textureFrom(sampleFile("cube-mips.ktx2")), 64, 64, 7, 6);
    const TempFolder folder;
    const std::string path = folder.file("sky.png");
    std::filesystem::copy_file(sampleFile("cube-mips.dds"), path);
    expectDescription(textureFrom(path), 128, 128, 8, 6);
}

TEST(VisTextureFactory, tells_why_a_file_is_refused) {
    const TempFolder folder;
    EXPECT_FALSE(textureFrom(folder.write("a.dds", rgbaDds(2, 2, "short").build())));
    EXPECT_NE(lastRefusal().find("bytes"), std::string::npos) << lastRefusal();
    EXPECT_FALSE(textureFrom(folder.write("b.png", "\x89PNG\r\n\x1a\n")));
    EXPECT_NE(KVRLastImageError().expected, "a dds or ktx2 file");
}

TEST(VisTextureFactory, serves_the_interactive_thread_only) {
    const Image image = numbered(2, 2, Format::RGB);
    const auto traced = tracedErrors("VisTextureFactory", [&] {
        onAnotherThread([&] {
            EXPECT_FALSE(textureFrom(sampleFile("studio.bmp")));
            EXPECT_FALSE(textureOf(image));
        });
    });
    EXPECT_NE(traced.find("expected the interactive thread"), std::string::npos) << traced;
}

TEST(VisTexture, is_read_on_the_interactive_thread_only) {
    const IVisTexturePtr bytes = textureOf(numbered(2, 2, Format::RGB));
    const IVisTexturePtr floats = textureOf(numbered(2, 2, Format::RGB_f));
    const auto traced = tracedErrors("IVisTexture", [&] {
        onAnotherThread([&] {
            EXPECT_EQ(bytes->ReadPixels(0, 0), nullptr);
            EXPECT_EQ(floats->ReadFloatPixels(0, 0), nullptr);
        });
    });
    EXPECT_NE(traced.find("expected the interactive thread"), std::string::npos) << traced;
    EXPECT_FALSE(texelsOf(bytes, 12).empty());
}

TEST(VisTexturePtr, counts) {
    EXPECT_FALSE(IVisTexturePtr::kNullPtr);
    IVisTexturePtr first = textureOf(numbered(1, 1, Format::L));
    IVisTexture* const texture = first.Get();
    texture->AddRef();
    EXPECT_EQ(texture->Release(), 1U);
    IVisTexturePtr second = first;
    EXPECT_TRUE(first == second);
    first.Reset();
    EXPECT_TRUE(first == IVisTexturePtr::kNullPtr);
    EXPECT_EQ(second.Get(), texture);
    texture->AddRef();
    EXPECT_EQ(texture->Release(), 1U);
    // Handles may be dropped anywhere.
    onAnotherThread([&] { second.Reset(); });
}

}  // namespace
}  // namespace rb::test
