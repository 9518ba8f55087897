// Colours of PSD files: profiles, inks and Lab.

#include "tests/image/ImageFiles.h"
#include "tests/image/InkProfile.h"
#include "tests/image/LabColors.h"
#include "tests/image/PsdBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <cmath>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;
using Profile = KVRVar<KVRMMColorProfile>;

std::string bytesOfProfile(const Profile& profile) {
    const auto data = profile->GetData();
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

/// A plane of one row; 16-bit samples repeat their byte.
PsdBuilder::Plane row(const Values& values, unsigned bits) {
    PsdBuilder::Plane plane;
    for (const int value : values) plane.insert(plane.end(), bits / 8, value);
    return plane;
}

}  // namespace

TEST(PsdColor, embedded_profile_is_kept) {
    const cmsHPROFILE made = cmsCreate_sRGBProfile();
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(made, nullptr, &size);
    std::string profile(size, '\0');
    cmsSaveProfileToMem(made, profile.data(), &size);
    cmsCloseProfile(made);
    PsdBuilder psd(1, 1);
    psd.planes({{1}, {2}, {3}});
    EXPECT_FALSE(Profile::Adopt(loadBytes(psd.build())->GetColorProfile()));
    psd.resource(1039, profile);
    const auto found = Profile::Adopt(loadBytes(psd.build())->GetColorProfile());
    ASSERT_TRUE(found);
    EXPECT_TRUE(bytesOfProfile(found) == profile);
}

TEST(PsdColor, inks_without_a_fitting_profile_are_mixed_and_called_srgb) {
    PsdBuilder psd(1, 1, 4);
    psd.planes({{255}, {155}, {55}, {204}});
    const auto sRGB = Profile::Adopt(KVRMMColorProfile::CreateSRGB());
    for (const bool withProfile : {false, true}) {
        if (withProfile) psd.resource(1039, bytesOfProfile(sRGB));
        const Image image = loadBytes(psd.build());
        // (255 - C) (255 - K) / 255 with what is left of the paper stored: 255 * 0.8, 155 * 0.8 ...
        EXPECT_EQ(bytesOf(image, 1, 1, Format::RGB), (Values{204, 124, 44}));
        const auto profile = Profile::Adopt(image->GetColorProfile());
        ASSERT_TRUE(profile);
        EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
    }
}

TEST(PsdColor, embedded_profile_of_inks_is_used) {
    const std::vector<double> expected = sRgbOfAll(kPaperAndInks);
    std::vector<double> withAlpha;
    int alpha = 10;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        withAlpha.push_back(expected[i]);
        if (i % 3 == 2) withAlpha.push_back(alpha++);
    }
    for (const unsigned bits : {8U, 16U})
        for (const bool opacity : {false, true}) {
            PsdBuilder psd(5, 1, 4, bits);
            psd.resource(1039, profileOfInks());
            std::vector<PsdBuilder::Plane> planes{
                row({255, 0, 255, 255, 255}, bits), row({255, 255, 0, 255, 255}, bits),
                row({255, 255, 255, 0, 255}, bits), row({255, 255, 255, 255, 0}, bits)};
            if (opacity) {
                planes.push_back(row({10, 11, 12, 13, 14}, bits));
                psd.layerCount(-1);
            }
            const Image image = loadBytes(psd.planes(planes).build());
            constexpr double kEngineRounding = 2;
            expectNear(bytesOf(image, 5, 1, opacity ? Format::RGBA : Format::RGB),
                       opacity ? withAlpha : expected, kEngineRounding);
            const auto profile = Profile::Adopt(image->GetColorProfile());
            ASSERT_TRUE(profile);
            EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
        }
}

TEST(PsdColor, lab_becomes_srgb) {
    const std::vector<double> expected = sRgbOfAll(kLabColors);
    for (const unsigned bits : {8U, 16U}) {
        std::vector<PsdBuilder::Plane> planes(3);
        const auto store = [&](std::size_t plane, double value) {
            const long whole = std::lround(value);
            if (bits == 16) planes[plane].push_back(static_cast<int>(whole >> 8));
            planes[plane].push_back(static_cast<int>(whole & 255));
        };
        for (const LabColor& color : kLabColors) {
            store(0, color.l / 100 * (bits == 8 ? 255 : 65535));
            store(1, bits == 8 ? color.a + 128 : (color.a + 128) * 256);
            store(2, bits == 8 ? color.b + 128 : (color.b + 128) * 256);
        }
        PsdBuilder psd(6, 1, 9, bits);
        const Image image = loadBytes(psd.planes(planes).build());
        // A step of L in 8 bits is up to two of sRGB near black and none of these are there.
        const double kRounding = bits == 8 ? 2 : 1;
        expectNear(bytesOf(image, 6, 1, Format::RGB), expected, kRounding);
        const auto profile = Profile::Adopt(image->GetColorProfile());
        ASSERT_TRUE(profile);
        EXPECT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
    }
}

TEST(PsdColor, inks_of_another_program) {
    const TempFolder folder;
    constexpr int kWidth = 61, kHeight = 43;
    const std::string in = writePortableMap(folder, "in.ppm", gradients(kWidth, kHeight, 3));
    const std::string out = folder.file("a.psd");
    runProgram("convert " + shellWord(in) + " -colorspace CMYK -depth 8 " + shellWord(out));
    // The merged picture, without the layer that is there too; 255 is full ink there.
    const std::string inks = decodedByConvert(out + "[0]", "cmyk");
    const Values found = bytesOf(loadFile(out), kWidth, kHeight, Format::RGB);
    ASSERT_EQ(found.size() / 3, inks.size() / 4);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const auto ink = [&](std::size_t c) {
            return 255 - static_cast<unsigned char>(inks[i / 3 * 4 + c]);
        };
        ASSERT_EQ(found[i], (ink(i % 3) * ink(3) + 127) / 255) << i;
    }
}
