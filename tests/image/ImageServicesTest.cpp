#include "RenderingBase/KVRRbaModel.m/src/LoadedFormat.h"
#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/support/LoadTimeEnvironment.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using Services = KVRRbaImageServices;
using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;
using rb::test::TempFolder;

constexpr const char* kProfileSwitch = "KVR_TEXTURE_NO_COLOR_PROFILE";
// A colour conversion through 8 bits may round either way.
constexpr int kColorTolerance = 1;

Image load(const std::string& path) {
    return Image::Adopt(Services::CreatePixelImageFromFullPath(KVRUnicodeString(path), {}, 96));
}

Image picture(Format format, int width, int height, std::vector<std::uint8_t> pixel) {
    Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    const auto raw = image->GetRawPixels();
    for (std::size_t i = 0; i < raw.size(); ++i) raw[i] = std::byte{pixel[i % pixel.size()]};
    return image;
}

std::vector<int> firstPixel(const Image& image) {
    const unsigned char* pixels = image->GetPixelsToRead();
    return {pixels, pixels + image->GetBytesPerPixel()};
}

/// Writes @p image, tagged with the sample profile that swaps red and green.
std::string writeSwapped(const TempFolder& folder, const Image& image) {
    const Image sample = Image::Adopt(
        KVRPixelImage::CreateFromFileEx(RB_SOURCE_DIR "/samples/images/swapped.png", 1, 0));
    EXPECT_TRUE(sample) << KVRLastImageError().Message();
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(sample->GetColorProfile());
    image->AssignColorProfile(profile.Get(), 0);
    const std::string path = folder.file("swapped.png");
    EXPECT_EQ(image->WriteToFile(KVRUnicodeString(path), "PNG"), S_OK);
    return path;
}

void expectNear(const std::vector<int>& actual, const std::vector<int>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], kColorTolerance) << "channel " << i;
    }
}

struct Infos {
    int width = -7, height = -7;
    float dpi = -7, widthMm = -7, heightMm = -7;
};

HRESULT measure(KVRPixelImage* image, Infos& infos) {
    return Services::GiveImageInfos(image, infos.width, infos.height, infos.dpi, infos.widthMm,
                                    infos.heightMm);
}

HRESULT measureFile(const std::string& path, Infos& infos) {
    return Services::GiveImageInfos(KVRUnicodeString(path), infos.width, infos.height, infos.dpi,
                                    infos.widthMm, infos.heightMm);
}

}  // namespace

TEST(CreatePixelImageFromFullPath, loads_the_pixels_of_a_file) {
    const TempFolder folder;
    const std::string path = folder.file("a.png");
    ASSERT_EQ(
        picture(Format::RGB, 3, 2, {200, 50, 100})->WriteToFile(KVRUnicodeString(path), "PNG"),
        S_OK);
    const Image image = load(path);
    ASSERT_TRUE(image);
    int width = 0, height = 0;
    image->GetSize(width, height);
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(firstPixel(image), (std::vector<int>{200, 50, 100}));
}

TEST(CreatePixelImageFromFullPath, understands_backslashes_and_every_call_gives_a_new_image) {
    const TempFolder folder;
    std::filesystem::create_directory(folder.path() / "sub");
    std::string path = folder.file("sub/a.png");
    std::replace(path.begin(), path.end(), '/', '\\');
    ASSERT_EQ(picture(Format::L, 1, 1, {9})->WriteToFile(KVRUnicodeString(path), "PNG"), S_OK);
    const Image first = load(path), second = load(path);
    ASSERT_TRUE(first);
    EXPECT_NE(first.Get(), second.Get());
}

TEST(CreatePixelImageFromFullPath, gives_null_for_what_cannot_be_read) {
    const TempFolder folder;
    EXPECT_FALSE(load(""));
    EXPECT_FALSE(load(folder.file("missing.png")));
    EXPECT_FALSE(load(folder.path().string()));
    EXPECT_FALSE(load(folder.write("text.png", "no picture at all")));
    EXPECT_FALSE(load(folder.write("empty.png")));
}

TEST(CreatePixelImageFromFullPath, takes_no_notice_of_groups_and_resolution_for_rasters) {
    const TempFolder folder;
    const KVRUnicodeString path(folder.file("a.png"));
    ASSERT_EQ(picture(Format::RGB, 3, 2, {1, 2, 3})->WriteToFile(path, "PNG"), S_OK);
    KVRListValKVRUnicodeString groups;
    groups.Append("no such group");
    const Image image = Image::Adopt(Services::CreatePixelImageFromFullPath(path, groups, -5));
    ASSERT_TRUE(image);
    EXPECT_EQ(firstPixel(image), (std::vector<int>{1, 2, 3}));
}

TEST(CreatePixelImageFromFullPath, gives_rgb_and_rgba_and_leaves_other_formats) {
    const TempFolder folder;
    const KVRUnicodeString path(folder.file("a.png"));
    const std::vector<std::pair<Format, Format>> storedAndLoaded = {
        {Format::L, Format::L},       {Format::LA, Format::LA},     {Format::RGB, Format::RGB},
        {Format::BGR, Format::RGB},   {Format::RGBA, Format::RGBA}, {Format::BGRA, Format::RGBA},
        {Format::ARGB, Format::RGBA}, {Format::ABGR, Format::RGBA},
    };
    for (const auto& [stored, loaded] : storedAndLoaded) {
        const Image before = picture(stored, 2, 2, {10, 20, 30, 40});
        ASSERT_EQ(before->WriteToFile(path, "PNG"), S_OK);
        const Image after = load(folder.file("a.png"));
        ASSERT_TRUE(after);
        EXPECT_EQ(after->GetFormat(), loaded);
        const Image expected = Image::Adopt(before->Duplicate(loaded));
        EXPECT_EQ(firstPixel(after), firstPixel(expected)) << static_cast<int>(stored);
    }
    const Image sky = load(RB_SOURCE_DIR "/samples/images/sky.hdr");
    ASSERT_TRUE(sky);
    EXPECT_EQ(sky->GetFormat(), Format::RGB_f);
    const Image half = load(RB_SOURCE_DIR "/samples/images/sky-half.exr");
    ASSERT_TRUE(half);
    EXPECT_TRUE(half->GetPixelsBufferToRead());
}

TEST(CreatePixelImageFromFullPath, turns_every_order_of_colours_into_rgb_or_rgba) {
    for (int code = 0; code <= 20; ++code) {
        const int expected = code == 6 ? 2 : code >= 7 && code <= 9 ? 3 : code;
        EXPECT_EQ(static_cast<int>(rb::loadedFormat(static_cast<Format>(code))), expected);
    }
}

TEST(CreatePixelImageFromFullPath, applies_an_embedded_profile) {
    unsetenv(kProfileSwitch);
    const TempFolder folder;
    const Image rgb = load(writeSwapped(folder, picture(Format::RGB, 2, 1, {200, 50, 100})));
    ASSERT_TRUE(rgb);
    expectNear(firstPixel(rgb), {50, 200, 100});
    const Image rgba = load(writeSwapped(folder, picture(Format::RGBA, 2, 1, {200, 50, 100, 77})));
    ASSERT_TRUE(rgba);
    expectNear(firstPixel(rgba), {50, 200, 100, 77});
    EXPECT_EQ(KVRVar<KVRMMColorProfile>::Adopt(rgba->GetColorProfile())->getProfileModel(),
              KVRUnicodeString("sRGB"));
}

TEST(CreatePixelImageFromFullPath, leaves_the_profile_alone_when_the_switch_is_defined) {
    const TempFolder folder;
    const std::string path = writeSwapped(folder, picture(Format::RGB, 2, 1, {200, 50, 100}));
    for (const char* value : {"1", "0", ""}) {  // it is the definition that counts
        setenv(kProfileSwitch, value, 1);
        const Image image = load(path);
        unsetenv(kProfileSwitch);
        ASSERT_TRUE(image);
        EXPECT_EQ(firstPixel(image), (std::vector<int>{200, 50, 100}));
        const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
        ASSERT_TRUE(profile);
        EXPECT_NE(profile->getProfileModel(), KVRUnicodeString("sRGB"));
    }
    expectNear(firstPixel(load(path)), {50, 200, 100});  // read at each call
}

TEST(CreatePixelImageFromFullPath, tags_no_image_that_has_no_profile) {
    unsetenv(kProfileSwitch);
    const TempFolder folder;
    const std::string path = folder.file("a.png");
    ASSERT_EQ(picture(Format::RGB, 1, 1, {7, 8, 9})->WriteToFile(KVRUnicodeString(path), "PNG"),
              S_OK);
    const Image image = load(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetColorProfile(), nullptr);
}

TEST(GiveImageInfos, measures_an_image_with_a_resolution) {
    const Image image = Image::Adopt(new KVRPixelImage(300, 150, Format::RGB));
    image->SetResolution(300, 600, 2);  // only the horizontal one counts
    Infos infos;
    EXPECT_EQ(measure(image.Get(), infos), S_OK);
    EXPECT_EQ(infos.width, 300);
    EXPECT_EQ(infos.height, 150);
    EXPECT_FLOAT_EQ(infos.dpi, 300.0F);
    EXPECT_FLOAT_EQ(infos.widthMm, 25.4F);
    EXPECT_FLOAT_EQ(infos.heightMm, 12.7F);
    image->SetResolution(100, 100, 3);  // to the centimetre
    EXPECT_EQ(measure(image.Get(), infos), S_OK);
    EXPECT_FLOAT_EQ(infos.dpi, 254.0F);
    EXPECT_FLOAT_EQ(infos.widthMm, 30.0F);
    EXPECT_FLOAT_EQ(infos.heightMm, 15.0F);
}

TEST(GiveImageInfos, leaves_the_millimetres_without_a_resolution) {
    const Image image = Image::Adopt(new KVRPixelImage(30, 20, Format::L));
    Infos infos;
    EXPECT_EQ(measure(image.Get(), infos), S_OK);
    EXPECT_EQ(infos.width, 30);
    EXPECT_EQ(infos.height, 20);
    EXPECT_EQ(infos.dpi, 0.0F);
    EXPECT_EQ(infos.widthMm, -7.0F);
    EXPECT_EQ(infos.heightMm, -7.0F);
}

TEST(GiveImageInfos, fails_for_null_and_touches_nothing) {
    Infos infos;
    EXPECT_EQ(measure(nullptr, infos), E_FAIL);
    EXPECT_EQ(infos.width, -7);
    EXPECT_EQ(infos.height, -7);
    EXPECT_EQ(infos.dpi, -7.0F);
}

TEST(GiveImageInfos, measures_a_file) {
    const TempFolder folder;
    const std::string path = folder.file("a.tif");
    const Image image = picture(Format::RGB, 144, 72, {1, 2, 3});
    image->SetResolution(72, 72, 2);
    ASSERT_EQ(image->WriteToFile(KVRUnicodeString(path), "TIFF"), S_OK);
    Infos infos;
    EXPECT_EQ(measureFile(path, infos), S_OK);
    EXPECT_EQ(infos.width, 144);
    EXPECT_EQ(infos.height, 72);
    EXPECT_FLOAT_EQ(infos.dpi, 72.0F);
    EXPECT_FLOAT_EQ(infos.widthMm, 50.8F);
    EXPECT_FLOAT_EQ(infos.heightMm, 25.4F);
}

TEST(GiveImageInfos, fails_for_an_empty_path_and_for_a_file_that_cannot_be_read) {
    const TempFolder folder;
    Infos infos;
    EXPECT_EQ(measureFile("", infos), E_FAIL);
    EXPECT_EQ(measureFile(folder.file("missing.png"), infos), E_FAIL);
    EXPECT_EQ(infos.width, -7);
}

TEST(ImageSizes, infer_dpi_rounds_halves_away_from_zero) {
    EXPECT_EQ(Services::InferDpi(100, 25.4F), 100);
    EXPECT_EQ(Services::InferDpi(100, 0.0F), 0);
    EXPECT_EQ(Services::InferDpi(100, -0.0F), 0);
    EXPECT_EQ(Services::InferDpi(0, 25.4F), 0);
    // 2 * 25.4 is a float exactly twice another, so these quotients are exact:
    // 0.5, 2.5, 1.25, 1.75.
    EXPECT_EQ(Services::InferDpi(1, 50.8F), 1);
    EXPECT_EQ(Services::InferDpi(5, 50.8F), 3);
    EXPECT_EQ(Services::InferDpi(5, 101.6F), 1);
    EXPECT_EQ(Services::InferDpi(7, 101.6F), 2);
    EXPECT_EQ(Services::InferDpi(-1, 50.8F), -1);
    EXPECT_EQ(Services::InferDpi(1, -50.8F), -1);
    EXPECT_EQ(Services::InferDpi(-5, 50.8F), -3);
}

TEST(ImageSizes, compute_size_px_rounds_halves_away_from_zero) {
    EXPECT_EQ(Services::ComputeSizePx(25.4F, 300), 300);
    EXPECT_EQ(Services::ComputeSizePx(12.7F, 1), 1);
    EXPECT_EQ(Services::ComputeSizePx(12.7F, 5), 3);
    EXPECT_EQ(Services::ComputeSizePx(-12.7F, 1), -1);
    EXPECT_EQ(Services::ComputeSizePx(12.7F, -5), -3);
    EXPECT_EQ(Services::ComputeSizePx(25.4F, 0), 0);
    EXPECT_EQ(Services::ComputeSizePx(0.0F, 300), 0);
}

TEST(ImageSizes, are_computed_in_single_precision) {
    // 2^24 + 1 is the first whole number that single precision does not have.
    EXPECT_EQ(Services::ComputeSizePx(25.4F, 16777217), 16777216);
    EXPECT_EQ(Services::InferDpi(16777217, 25.4F), 16777216);
}

TEST(ImageSizes, stay_in_the_range_of_int) {
    constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Services::InferDpi(kMost, 1e-30F), kMost);
    EXPECT_EQ(Services::InferDpi(kLeast, 1e-30F), kLeast);
    EXPECT_EQ(Services::InferDpi(1, std::nanf("")), 0);
    EXPECT_EQ(Services::ComputeSizePx(kInfinite, 300), kMost);
    EXPECT_EQ(Services::ComputeSizePx(-kInfinite, 300), kLeast);
    EXPECT_EQ(Services::ComputeSizePx(kInfinite, 0), 0);  // no number
    EXPECT_EQ(Services::ComputeSizePx(25.4F, kMost), kMost);
    EXPECT_EQ(Services::ComputeSizePx(25.4F, 16777216), 16777216);
}

TEST(ImageSizes, compute_size_mm_is_zero_without_a_resolution) {
    EXPECT_EQ(Services::ComputeSizeMM(300, 300.0F), 25.4F);
    EXPECT_EQ(Services::ComputeSizeMM(1, 2.0F), 12.7F);
    EXPECT_EQ(Services::ComputeSizeMM(300, 0.0F), 0.0F);
    EXPECT_EQ(Services::ComputeSizeMM(300, -0.0F), 0.0F);
    EXPECT_EQ(Services::ComputeSizeMM(0, 72.0F), 0.0F);
}

TEST(ImageSizes, dots_per_inch_to_dots_per_mm_gives_the_size_of_a_dot) {
    EXPECT_EQ(Services::DotsPerInchToDotsPerMM(25.4F), 1.0F);
    EXPECT_EQ(Services::DotsPerInchToDotsPerMM(2.0F), 12.7F);
    EXPECT_EQ(Services::DotsPerInchToDotsPerMM(0.0F), 0.0F);
}

TEST(ImageSizes, pixels_survive_the_way_to_millimetres_and_back) {
    for (const int dpi : {1, 72, 96, 300, 1200}) {
        for (int pixels = 0; pixels <= 20000; pixels += 7) {
            const float mm = Services::ComputeSizeMM(pixels, static_cast<float>(dpi));
            ASSERT_EQ(Services::ComputeSizePx(mm, dpi), pixels) << dpi;
            if (pixels >= 8000) {
                ASSERT_EQ(Services::InferDpi(pixels, mm), dpi) << pixels;
            }
        }
    }
}

TEST(ImageRatio, is_width_over_height) {
    float ratio = -7;
    EXPECT_EQ(Services::Compute2DImageRatio(300, 200, ratio), S_OK);
    EXPECT_EQ(ratio, 1.5F);
    EXPECT_EQ(Services::Compute2DImageRatio(1, 4, ratio), S_OK);
    EXPECT_EQ(ratio, 0.25F);
    EXPECT_EQ(Services::Compute2DImageRatio(-1, 4, ratio), S_OK);
    EXPECT_EQ(ratio, -0.25F);
}

TEST(ImageRatio, is_one_and_a_failure_when_a_side_is_zero) {
    for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {0, 0}}) {
        float ratio = -7;
        EXPECT_EQ(Services::Compute2DImageRatio(width, height, ratio), E_FAIL);
        EXPECT_EQ(ratio, 1.0F);
    }
}

TEST(TextureCoordinate, narrow_pictures_scale_u_wide_ones_v) {
    const auto adjusted = [](float ratio) {
        float u = 0.5F, v = 0.75F;
        const HRESULT status = Services::ComputeAdjusted2DTextureCoordinate(ratio, u, v);
        return std::tuple(status, u, v);
    };
    EXPECT_EQ(adjusted(0.5F), std::tuple(S_OK, 0.25F, 0.75F));
    EXPECT_EQ(adjusted(1.0F), std::tuple(S_OK, 0.5F, 0.75F));
    EXPECT_EQ(adjusted(2.0F), std::tuple(S_OK, 0.5F, 0.375F));
    EXPECT_EQ(adjusted(0.0F), std::tuple(E_FAIL, 0.5F, 0.75F));
    EXPECT_EQ(adjusted(-2.0F), std::tuple(E_FAIL, 0.5F, 0.75F));
}

TEST(FindImageInPaths, has_no_more_places_without_a_startup_path) {
    const TempFolder folder, configuration;
    setenv("XDG_CONFIG_HOME", configuration.path().c_str(), 1);
    std::filesystem::current_path(folder.path());
    folder.write("materials/oak.png", "content");
    KVRUnicodeString found("not cleared");
    EXPECT_EQ(Services::FindImageInPaths(1, "oak.png", found, nullptr), -2);
    EXPECT_EQ(found, KVRUnicodeString());
    std::filesystem::current_path("/");
}

int main(int argc, char** argv) {
    rb::test::ensureLoadTimeEnvironment(argv, {{"KVRStartupPath", nullptr}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
