// Real files of other programs: each loads as what other readers say of it, or is refused with a
// reason. They lie outside the project, in the folder that RB_DATA_DIR names.

#include "RenderingBase/host/imaging/KVRMMColorProfile.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/DataFolder.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string_view>

namespace rb::test {
namespace {

TEST(DataFolder, files_load_as_other_readers_describe_them) {
    for (const RealFile& real : kRealFiles) {
        SCOPED_TRACE(real.path);
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const Image image = loadFile(file);
        if (!image) continue;
        EXPECT_EQ(image->GetFormat(), real.format);
        int width = 0, height = 0;
        float dpi = 0, widthMm = 0, heightMm = 0;
        KVRRbaImageServices::GiveImageInfos(image.Get(), width, height, dpi, widthMm, heightMm);
        EXPECT_EQ(width, real.width);
        EXPECT_EQ(height, real.height);
        EXPECT_FLOAT_EQ(dpi, real.dpi);
    }
}

TEST(DataFolder, beginnings_of_files_are_read_or_refused_with_a_reason) {
    expectBeginningsToBeReadOrRefused(kRealFiles, [](const std::string& bytes, const char* name) {
        return bool(tryToLoad(bytes, name));
    });
}

TEST(DataFolder, unusable_files_are_refused_with_their_reason) {
    expectRefusals(kRefusedFiles, [](const std::string& bytes) { return refusalOf(bytes); });
}

TEST(DataFolder, png_samples_are_those_of_another_reader) {
    for (const auto& [path, width, height, format, dpi] : kRealFiles) {
        if (!std::string_view(path).ends_with(".png")) continue;
        SCOPED_TRACE(path);
        const std::string file = dataFile(path);
        RB_NEED_DATA(file);
        const char* const channels = format == L ? "gray" : format == RGB ? "rgb" : "rgba";
        const std::string theirs = decodedByConvert(file, channels);
        const std::vector<int> ours = bytesOf(loadFile(file), width, height, format);
        ASSERT_EQ(ours.size(), theirs.size());
        int widest = 0;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            widest = std::max(widest, std::abs(ours[i] - static_cast<unsigned char>(theirs[i])));
        }
        EXPECT_LE(widest, 1);  // 16-bit samples may be rounded either way
    }
}

TEST(DataFolder, exr_samples_are_those_of_another_reader) {
    for (const RealFile& real : kRealFiles) {
        if (!std::string(real.path).ends_with(".exr")) continue;
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const TempFolder folder;
        const std::string tif = folder.file("float.tif");
        runProgram("oiiotool " + shellWord(file) + " --fullpixels -d float -o " + shellWord(tif));
        const Format floats = real.format == Format::L_f16 ? Format::L_f : Format::RGB_f;
        EXPECT_EQ(halvesOf(loadFile(file), real.width, real.height, real.format),
                  floatsOf(loadFile(tif), real.width, real.height, floats))
            << real.path;
    }
}

TEST(DataFolder, icc_profiles_are_taken_and_other_files_refused) {
    const char* const profiles[] = {
        "icc/compact/AdobeCompat-v2.icc",   "icc/compact/ColorMatchCompat-v2.icc",
        "icc/compact/DisplayP3-v4.icc",     "icc/compact/ProPhoto-v2-micro.icc",
        "icc/compact/Rec2020-v4.icc",       "icc/compact/Rec601NTSC-v2-micro.icc",
        "icc/compact/Rec709-v2-magic.icc",  "icc/compact/sGrey-v2-magic.icc",
        "icc/compact/sRGB-v2-micro.icc",    "icc/lcms/test4.icc",
        "icc/sharp/invalid-illuminant.icc",
    };
    using Profile = KVRVar<KVRMMColorProfile>;
    const auto load = [](const std::string& file) {
        return Profile::Adopt(KVRMMColorProfileFactory::CreateColorProfileFromFile(file));
    };
    for (const char* const path : profiles) {
        const std::string file = dataFile(path);
        RB_NEED_DATA(file);
        EXPECT_TRUE(load(file)) << path;
    }
    EXPECT_FALSE(load(dataFile("icc/lcms/bad.icc")));  // a makefile in disguise
}

TEST(DataFolder, srgb_is_recognised_by_its_colours_alone) {
    const std::string file = dataFile("icc/compact/sRGB-v2-micro.icc");
    RB_NEED_DATA(file);
    const auto model = [](const char* path) -> std::string {
        const auto profile = KVRVar<KVRMMColorProfile>::Adopt(
            KVRMMColorProfileFactory::CreateColorProfileFromFile(dataFile(path)));
        return profile ? profile->getProfileModel().CastToCharPtr() : "none";
    };
    EXPECT_NE(model("icc/compact/DisplayP3-v4.icc"), "sRGB");
    EXPECT_NE(model("icc/compact/AdobeCompat-v2.icc"), "sRGB");
    EXPECT_EQ(model("icc/compact/sRGB-v2-micro.icc"), "sRGB");
}

}  // namespace
}  // namespace rb::test
