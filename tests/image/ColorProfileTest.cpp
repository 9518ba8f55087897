#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;
using Profile = KVRVar<KVRMMColorProfile>;

const std::string kSamples = RB_SOURCE_DIR "/samples/images/";

Image pixel(Format format, const std::vector<std::uint8_t>& values) {
    Image image = Image::Adopt(new KVRPixelImage(1, 1, format));
    std::memcpy(image->GetRawPixels().data(), values.data(), values.size());
    return image;
}

std::vector<int> bytesOf(const Image& image) {
    std::vector<int> values;
    for (const std::byte value : image->GetRawPixels())
        values.push_back(std::to_integer<int>(value));
    return values;
}

Profile sampleProfile(const char* file) {
    const Image image = Image::Adopt(KVRPixelImage::CreateFromFile(kSamples + file, 1, 0));
    EXPECT_TRUE(image) << KVRLastImageError().Message();
    return image ? Profile::Adopt(image->GetColorProfile()) : Profile();
}

/// A grey profile without a curve, made by the engine itself.
Profile linearGrey() {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1.0);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<std::byte> data(size);
    cmsSaveProfileToMem(profile, data.data(), &size);
    cmsCloseProfile(profile);
    cmsFreeToneCurve(curve);
    return Profile::Adopt(KVRMMColorProfile::CreateFromMemory(data));
}

Profile swapped() { return sampleProfile("swapped.png"); }
Profile wide() { return sampleProfile("wide-gamut.png"); }
Profile sRGB() { return Profile::Adopt(KVRMMColorProfile::CreateSRGB()); }

}  // namespace

TEST(KVRMMColorProfile, the_built_in_profile_has_fixed_bytes_and_date) {
    const Profile first = sRGB(), second = sRGB();
    ASSERT_TRUE(first);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(first->getProfileModel(), KVRUnicodeString("sRGB"));
    EXPECT_EQ(first->getProfileName(), KVRUnicodeString("sRGB IEC61966-2.1"));
    EXPECT_EQ(first->getProfileCreationDate(), KVRUnicodeString("2026-01-01 00:00:00"));
    const Profile again = Profile::Adopt(KVRMMColorProfile::CreateFromMemory(first->GetData()));
    ASSERT_TRUE(again);
    EXPECT_TRUE(std::ranges::equal(again->GetData(), first->GetData()));
}

TEST(KVRMMColorProfile, what_is_no_profile_gives_null) {
    EXPECT_EQ(KVRMMColorProfile::CreateFromMemory({}), nullptr);
    const std::vector<std::byte> zeros(4096);
    EXPECT_EQ(KVRMMColorProfile::CreateFromMemory(zeros), nullptr);
    auto cut = std::vector<std::byte>(sRGB()->GetData().begin(), sRGB()->GetData().begin() + 100);
    EXPECT_EQ(KVRMMColorProfile::CreateFromMemory(cut), nullptr);
    const rb::test::TempFolder folder;
    EXPECT_EQ(KVRMMColorProfileFactory::CreateColorProfileFromFile(folder.file("none.icc")),
              nullptr);
    EXPECT_EQ(KVRMMColorProfileFactory::CreateColorProfileFromFile(
                  folder.write("text.icc", "not a profile")),
              nullptr);
}

TEST(KVRMMColorProfile, a_file_gives_the_same_profile_as_its_bytes) {
    const auto data = sRGB()->GetData();
    const rb::test::TempFolder folder;
    const std::string path =
        folder.write("s.icc", {reinterpret_cast<const char*>(data.data()), data.size()});
    const Profile profile =
        Profile::Adopt(KVRMMColorProfileFactory::CreateColorProfileFromFile(path));
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
}

TEST(KVRMMColorProfile, the_model_is_told_from_the_colours_when_the_header_has_none) {
    std::vector<std::byte> data(sRGB()->GetData().begin(), sRGB()->GetData().end());
    std::memset(data.data() + 52, 0, 4);  // the device model
    const Profile unnamed = Profile::Adopt(KVRMMColorProfile::CreateFromMemory(data));
    ASSERT_TRUE(unnamed);
    EXPECT_EQ(unnamed->getProfileModel(), KVRUnicodeString("sRGB"));
    EXPECT_NE(wide()->getProfileModel(), KVRUnicodeString("sRGB"));
    EXPECT_NE(swapped()->getProfileModel(), KVRUnicodeString("sRGB"));
}

TEST(KVRPixelImageColor, assigning_tags_and_changes_no_pixel) {
    const Image image = pixel(Format::RGB, {10, 20, 30});
    EXPECT_EQ(image->GetColorProfile(), nullptr);
    EXPECT_EQ(image->AssignColorProfile(swapped().Get(), 0), S_OK);
    EXPECT_EQ(bytesOf(image), (std::vector<int>{10, 20, 30}));
    EXPECT_NE(Profile::Adopt(image->GetColorProfile())->getProfileModel(),
              KVRUnicodeString("sRGB"));
    EXPECT_EQ(image->AssignColorProfile(nullptr, 0), S_OK);
    EXPECT_EQ(Profile::Adopt(image->GetColorProfile())->getProfileModel(),
              KVRUnicodeString("sRGB"));
}

TEST(KVRPixelImageColor, a_profile_that_swaps_red_and_green_swaps_them_in_every_format) {
    // Values up to 1 in every format; half precision and 8 bits bound what can be seen.
    for (const Format format :
         {Format::RGB, Format::RGBA, Format::BGR, Format::BGRA, Format::ARGB, Format::ABGR,
          Format::RGB_16, Format::RGBA_16, Format::RGB_f, Format::RGBA_f, Format::RGB_f16,
          Format::BGR_f16, Format::RGBA_f16, Format::BGRA_f16}) {
        const Image image = pixel(Format::RGBA, {200, 50, 100, 77});
        ASSERT_EQ(image->ChangeFormat(format), S_OK);
        ASSERT_EQ(image->AssignColorProfile(swapped().Get(), 0), S_OK);
        ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
        EXPECT_EQ(image->GetFormat(), format);
        const bool alpha = rb::imaging::layoutOf(format).hasAlpha();
        ASSERT_EQ(image->ChangeFormat(Format::RGBA), S_OK);
        const char* name = rb::imaging::layoutOf(format).name;
        EXPECT_NEAR(image->GetPixelsToRead()[0], 50, 1) << name;
        EXPECT_NEAR(image->GetPixelsToRead()[1], 200, 1) << name;
        EXPECT_NEAR(image->GetPixelsToRead()[2], 100, 1) << name;
        EXPECT_EQ(image->GetPixelsToRead()[3], alpha ? 77 : 255) << name;
        EXPECT_EQ(Profile::Adopt(image->GetColorProfile())->getProfileModel(),
                  KVRUnicodeString("sRGB"));
    }
}

TEST(KVRPixelImageColor, the_swapped_sample_comes_back_swapped) {
    const Image stored =
        Image::Adopt(KVRPixelImage::CreateFromFile(kSamples + "swapped.png", 1, 0));
    ASSERT_TRUE(stored);
    const Image shown = Image::Adopt(new KVRPixelImage(*stored.Get()));
    ASSERT_EQ(shown->ApplyColorProfile(nullptr, 0), S_OK);
    const std::vector<int> before = bytesOf(stored), after = bytesOf(shown);
    ASSERT_EQ(before.size(), after.size());
    bool differs = false;
    for (std::size_t i = 0; i + 2 < before.size(); i += 3) {
        ASSERT_NEAR(after[i], before[i + 1], 1);
        ASSERT_NEAR(after[i + 1], before[i], 1);
        ASSERT_NEAR(after[i + 2], before[i + 2], 1);
        differs = differs || std::abs(before[i] - before[i + 1]) > 50;
    }
    EXPECT_TRUE(differs);  // or the picture would prove nothing
}

TEST(KVRPixelImageColor, srgb_to_srgb_changes_nothing) {
    std::vector<std::uint8_t> values;
    for (int i = 0; i < 3 * 4096; ++i)
        values.push_back(static_cast<std::uint8_t>(i * 31 + i / 256));
    const Image image = Image::Adopt(new KVRPixelImage(64, 64, Format::RGB));
    std::memcpy(image->GetPixelsToModify(), values.data(), values.size());
    ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
    EXPECT_EQ(std::memcmp(image->GetPixelsToRead(), values.data(), values.size()), 0);
}

TEST(KVRPixelImageColor, wide_gamut_colours_land_where_the_engines_own_tool_puts_them) {
    const rb::test::TempFolder folder;
    const auto save = [&](const char* name, const Profile& profile) {
        const auto data = profile->GetData();
        return folder.write(name, {reinterpret_cast<const char*>(data.data()), data.size()});
    };
    const std::string wideFile = save("wide.icc", wide()), srgbFile = save("srgb.icc", sRGB());
    for (const auto& [r, g, b] : std::vector<std::array<int, 3>>{
             {0, 255, 0}, {200, 30, 60}, {128, 128, 128}, {10, 200, 220}, {255, 255, 255}}) {
        const std::string colour =
            folder.write("colour.txt", std::to_string(r) + "\n" + std::to_string(g) + "\n" +
                                           std::to_string(b) + "\n");
        const std::string printed = rb::test::runProgram("transicc -n -t 1 -b -i " + wideFile +
                                                         " -o " + srgbFile + " < " + colour);
        std::istringstream stream(printed);
        double expected[3] = {-1, -1, -1};
        stream >> expected[0] >> expected[1] >> expected[2];
        ASSERT_TRUE(stream) << printed;

        const Image image =
            pixel(Format::RGB, {static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
                                static_cast<std::uint8_t>(b)});
        image->AssignColorProfile(wide().Get(), 0);
        ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
        for (int c = 0; c < 3; ++c)  // the tool computes in floating point and does not clip
            EXPECT_NEAR(image->GetPixelsToRead()[c], std::clamp(expected[c], 0.0, 255.0), 1.0)
                << printed;
    }
}

TEST(KVRPixelImageColor, a_space_that_does_not_fit_fails_and_changes_nothing) {
    const Profile grey = linearGrey();
    ASSERT_TRUE(grey);
    const Image image = pixel(Format::RGB, {10, 20, 30});
    EXPECT_EQ(image->ApplyColorProfile(grey.Get(), 0), E_FAIL);
    EXPECT_EQ(bytesOf(image), (std::vector<int>{10, 20, 30}));
    EXPECT_EQ(image->GetColorProfile(), nullptr);
    image->AssignColorProfile(grey.Get(), 0);
    EXPECT_EQ(image->ApplyColorProfile(nullptr, 0), E_FAIL);
    EXPECT_EQ(bytesOf(image), (std::vector<int>{10, 20, 30}));
    const Image none = Image::Adopt(new KVRPixelImage(1, 1, Format::None));
    EXPECT_EQ(none->ApplyColorProfile(nullptr, 0), E_FAIL);
}

TEST(KVRPixelImageColor, grey_images_convert_from_grey_and_from_colour_profiles) {
    // Linear one half is 188 in sRGB (IEC 61966-2-1: 187.5).
    const Profile grey = linearGrey();
    for (const Format format : {Format::L, Format::LA, Format::L_16, Format::L_f, Format::L_f16}) {
        const Image image = pixel(Format::LA, {128, 40});
        ASSERT_EQ(image->ChangeFormat(format), S_OK);
        image->AssignColorProfile(grey.Get(), 0);
        ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
        const bool alpha = rb::imaging::layoutOf(format).hasAlpha();
        ASSERT_EQ(image->ChangeFormat(Format::LA), S_OK);
        EXPECT_NEAR(image->GetPixelsToRead()[0], 188, 1) << rb::imaging::layoutOf(format).name;
        EXPECT_EQ(image->GetPixelsToRead()[1], alpha ? 40 : 255);
    }
    // The grey axis of a colour profile stays grey: its curve is 2.2, near sRGB's.
    const Image image = pixel(Format::L, {128});
    image->AssignColorProfile(wide().Get(), 0);
    ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
    EXPECT_NEAR(image->GetPixelsToRead()[0], 128, 2);
}

TEST(KVRPixelImageColor, bilevel_keeps_black_and_white) {
    const Image image = pixel(Format::Bilevel, {1});
    image->AssignColorProfile(wide().Get(), 0);
    ASSERT_EQ(image->ApplyColorProfile(nullptr, 0), S_OK);
    EXPECT_EQ(bytesOf(image), (std::vector<int>{1}));
}

TEST(KVRPixelImageColor, a_large_image_on_several_threads_equals_its_rows_on_one) {
    const int width = 1031, height = 1024;
    const Image whole = Image::Adopt(new KVRPixelImage(width, height, Format::RGBA));
    for (unsigned i = 0; i < 4U * width * height; ++i)
        whole->GetPixelsToModify()[i] = static_cast<std::uint8_t>((i * 2654435761U) >> 24);
    const int rowBytes = 4 * width;
    std::vector<std::byte> expected;
    for (int y = 0; y < height; ++y) {
        const Image row = Image::Adopt(new KVRPixelImage(width, 1, Format::RGBA));
        std::memcpy(row->GetPixelsToModify(), whole->GetPixelsToRead() + y * rowBytes, rowBytes);
        row->AssignColorProfile(wide().Get(), 0);
        ASSERT_EQ(row->ApplyColorProfile(nullptr, 0), S_OK);
        expected.insert(expected.end(), row->GetRawPixels().begin(), row->GetRawPixels().end());
    }
    whole->AssignColorProfile(wide().Get(), 0);
    ASSERT_EQ(whole->ApplyColorProfile(nullptr, 0), S_OK);
    EXPECT_TRUE(std::ranges::equal(whole->GetRawPixels(), expected));
}
