// Imports in a process in which KVR_TEXTURE_NO_COLOR_PROFILE is defined.

#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tests/support/TempFolder.h"
#include "tests/texture/TaggedImages.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace rb::test {
namespace {

TEST(TextureProfile, is_left_alone_when_the_switch_is_defined) {
    if (!std::getenv("KVR_TEXTURE_NO_COLOR_PROFILE"))
        GTEST_SKIP() << "KVR_TEXTURE_NO_COLOR_PROFILE is not defined; run by CTest";
    const TempFolder folder;
    const std::string path =
        writeTagged(folder.file("a.png"), {200, 40, 90}, profileOfSample("swapped.png"));
    TextureResult result;
    ASSERT_EQ(KVRRbaTextureLoader::GetInstance().ImportTexture(path, result), S_OK);
    const Image image = Image::Adopt(result.GetPixelImage());
    EXPECT_EQ(bytesOf(image, 1, 1, Format::RGB), (std::vector<int>{200, 40, 90}));
    const auto tag = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    ASSERT_TRUE(tag);
    EXPECT_NE(tag->getProfileModel(), KVRUnicodeString("sRGB"));
}

}  // namespace
}  // namespace rb::test
