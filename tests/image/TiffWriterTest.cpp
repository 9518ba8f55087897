// TIFF files that are written: other programs and our own reader read them back.

#include "tests/image/ImageFiles.h"
#include "tests/image/WrittenImages.h"
#include "tests/support/ForeignPrograms.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;

}  // namespace

TEST(TiffWriter, pixels_come_back) {
    const TempFolder folder;
    // One pixel; one strip; more strips than are made at once; rows longer than a strip.
    constexpr std::pair<int, int> kSizes[] = {{1, 1}, {61, 23}, {1200, 1900}, {100003, 70}};
    for (const auto& [width, height] : kSizes)
        for (const int channels : {1, 2, 3, 4}) {
            const RawPicture picture = gradients(width, height, channels);
            const Image back = loadFile(written(folder, imageOf(picture), "TIFF"));
            const auto found = valuesOf<char>(back, width, height, kFormatOfChannels[channels]);
            EXPECT_TRUE(std::string(found.begin(), found.end()) == picture.samples)
                << width << " x " << height << ", channels: " << channels;
        }
}

TEST(TiffWriter, other_programs_read_the_pixels) {
    const TempFolder folder;
    for (const int channels : {1, 3, 4}) {
        const RawPicture picture = gradients(61, 23, channels);
        const std::string path = written(folder, imageOf(picture), "TIFF");
        const char* const words[] = {"", "gray", "", "rgb", "rgba"};
        EXPECT_TRUE(decodedByConvert(path, words[channels]) == picture.samples) << channels;
    }
    const RawPicture picture = gradients(61, 23, 3);
    const std::string map = folder.file("out.ppm");
    runProgram("oiiotool " + shellWord(written(folder, imageOf(picture), "TIFF")) +
               " -d uint8 -o " + shellWord(map));
    const std::string content = contentOf(map);
    ASSERT_GE(content.size(), picture.samples.size());
    EXPECT_TRUE(content.substr(content.size() - picture.samples.size()) == picture.samples);
}

TEST(TiffWriter, alpha_is_marked_as_not_multiplied_in) {
    const TempFolder folder;
    for (const int channels : {2, 4}) {
        const std::string path = written(folder, imageOf(gradients(9, 4, channels)), "TIFF");
        const std::string info = runProgram("oiiotool --info -v " + shellWord(path));
        EXPECT_NE(info.find("tiff:UnassociatedAlpha: 1"), std::string::npos) << info;
    }
}

TEST(TiffWriter, resolution_and_profile_come_back) {
    const TempFolder folder;
    const Image image = imageOf(gradients(9, 4, 3));
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    ASSERT_EQ(image->AssignColorProfile(profile.Get(), 0), S_OK);
    for (const int unit : {2, 3}) {
        image->SetResolution(150.5, 75, unit);
        const Image back = loadFile(written(folder, image, "TIFF"));
        ASSERT_TRUE(back);
        EXPECT_DOUBLE_EQ(back->GetXResolution(), 150.5);
        EXPECT_DOUBLE_EQ(back->GetYResolution(), 75);
        EXPECT_EQ(back->GetResolutionUnit(), unit);
        const auto found = KVRVar<KVRMMColorProfile>::Adopt(back->GetColorProfile());
        ASSERT_TRUE(found);
        ASSERT_EQ(found->GetData().size(), profile->GetData().size());
        EXPECT_EQ(std::memcmp(found->GetData().data(), profile->GetData().data(),
                              profile->GetData().size()),
                  0);
    }
    const Image plain = loadFile(written(folder, imageOf(gradients(9, 4, 3)), "TIFF"));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->GetXResolution(), 0);
    EXPECT_EQ(plain->GetResolutionUnit(), 1);
    EXPECT_FALSE(KVRVar<KVRMMColorProfile>::Adopt(plain->GetColorProfile()));
}
