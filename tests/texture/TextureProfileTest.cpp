// What an import makes of colour profiles.

#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tests/host/EnvironmentVariable.h"
#include "tests/support/TempFolder.h"
#include "tests/texture/TaggedImages.h"

#include <gtest/gtest.h>
#include <span>

namespace rb::test {
namespace {

Image imported(const std::string& path) {
    TextureResult result;
    EXPECT_EQ(KVRRbaTextureLoader::GetInstance().ImportTexture(path, result), S_OK);
    return Image::Adopt(result.GetPixelImage());
}

std::vector<int> colorOf(const Image& image) { return bytesOf(image, 1, 1, Format::RGB); }

TEST(TextureProfile, another_than_sRGB_is_applied) {
    const TempFolder folder;
    const auto wide = profileOfSample("wide-gamut.png");
    const std::array<std::array<std::uint8_t, 3>, 4> colors{
        {{100, 150, 90}, {200, 180, 160}, {60, 70, 90}, {30, 255, 10}}};
    for (const auto& color : colors) {
        const Image image = imported(writeTagged(folder.file("a.png"), color, wide));
        const std::array<double, 3> expected = sRgbOfAdobeRgb(color);
        const std::vector<int> actual = colorOf(image);
        ASSERT_EQ(actual.size(), 3U);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(actual[i], expected[i], 1.5) << i;
        // Converted, and tagged so.
        const auto tag = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
        ASSERT_TRUE(tag);
        EXPECT_EQ(tag->getProfileModel(), KVRUnicodeString("sRGB"));
    }
}

TEST(TextureProfile, of_exchanged_channels_exchanges_them) {
    const TempFolder folder;
    const std::string path =
        writeTagged(folder.file("a.png"), {200, 40, 90}, profileOfSample("swapped.png"));
    const std::vector<int> actual = colorOf(imported(path));
    ASSERT_EQ(actual.size(), 3U);
    EXPECT_NEAR(actual[0], 40, 1);
    EXPECT_NEAR(actual[1], 200, 1);
    EXPECT_NEAR(actual[2], 90, 1);
}

TEST(TextureProfile, that_says_it_is_sRGB_changes_nothing) {
    // Red and green would be exchanged if it were applied.
    const KVRVar<KVRMMColorProfile> swapping = profileOfSample("swapped.png");
    const std::span<const std::byte> data = swapping->GetData();
    std::vector<std::byte> icc(data.begin(), data.end());
    constexpr std::size_t kDeviceModel = 52;  // ICC.1:2010, 7.2
    std::memcpy(&icc[kDeviceModel], "sRGB", 4);
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateFromMemory(icc));
    ASSERT_TRUE(profile);
    ASSERT_EQ(profile->getProfileModel(), KVRUnicodeString("sRGB"));
    const TempFolder folder;
    const std::string path = writeTagged(folder.file("a.png"), {200, 40, 90}, profile);
    EXPECT_EQ(colorOf(imported(path)), (std::vector<int>{200, 40, 90}));
}

TEST(TextureProfile, sRGB_changes_nothing) {
    const TempFolder folder;
    const auto sRgb = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const std::string path = writeTagged(folder.file("a.png"), {1, 127, 254}, sRgb);
    EXPECT_EQ(colorOf(imported(path)), (std::vector<int>{1, 127, 254}));
}

TEST(TextureProfile, none_changes_nothing_and_tags_nothing) {
    const TempFolder folder;
    const Image image = imported(writeTagged(folder.file("a.png"), {1, 127, 254}, {}));
    EXPECT_EQ(colorOf(image), (std::vector<int>{1, 127, 254}));
    EXPECT_EQ(image->GetColorProfile(), nullptr);
}

TEST(TextureProfile, the_switch_is_read_when_the_loader_is_made) {
    const TempFolder folder;
    const std::string path =
        writeTagged(folder.file("a.png"), {200, 40, 90}, profileOfSample("swapped.png"));
    const std::vector<int> before = colorOf(imported(path));
    const EnvironmentVariable defined("KVR_TEXTURE_NO_COLOR_PROFILE", "1");
    EXPECT_EQ(colorOf(imported(path)), before);
}

}  // namespace
}  // namespace rb::test
