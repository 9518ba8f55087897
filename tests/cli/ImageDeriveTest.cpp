#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

namespace rb::test {
namespace {

namespace fs = std::filesystem;

using Image = KVRVar<KVRPixelImage>;
using Pixel = PictureFile::Pixel;

/// Writes 4 x 2 pixels of one colour.
std::string writeColor(const TempFolder& folder, Pixel color) {
    const auto image = Image::Adopt(new KVRPixelImage(4, 2, KVRPixelImageFormat::RGBA));
    const auto bytes = image->GetRawPixels();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::byte>(color[i % color.size()]);
    const std::string path = folder.file("in.png");
    EXPECT_EQ(image->WriteToFile(path, "PNG"), S_OK);
    return path;
}

Pixel derived(const char* command, Pixel color) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const RbaResult result = runRba({"image", command, writeColor(folder, color), out});
    EXPECT_EQ(result.status, 0) << result.err;
    return PictureFile(out).at(1, 1);
}

TEST(ImageDerive, every_command_makes_its_picture) {
    const Pixel color{200, 100, 40, 30};
    EXPECT_EQ(derived("grey", color), (Pixel{120, 120, 120, 30}));
    EXPECT_EQ(derived("mono", color), (Pixel{0, 0, 0, 30}));
    EXPECT_EQ(derived("negative", color), (Pixel{55, 155, 215, 30}));
    EXPECT_EQ(derived("alpha-invert", color), (Pixel{200, 100, 40, 225}));
    EXPECT_EQ(derived("mask", color), (Pixel{225, 225, 225, 255}));
    EXPECT_EQ(derived("bump", color), (Pixel{127, 127, 255, 255}));
}

TEST(ImageDerive, json_has_the_keys_of_the_table) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const Json json =
        runRba({"image", "mono", writeColor(folder, {1, 2, 3, 4}), out, "--json"}).json();
    EXPECT_EQ(json, (Json{{"path", out}, {"width", 4}, {"height", 2}, {"format", 3}}));
}

TEST(ImageDerive, what_cannot_be_derived_is_told) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    EXPECT_EQ(runRba({"image", "mask", folder.file("missing.png"), out}).status, 1);
    EXPECT_FALSE(fs::exists(out));
    EXPECT_EQ(runRba({"image", "bump", sampleImage("grey.tif"), "out.xyz"}).status, 2);
}

}  // namespace
}  // namespace rb::test
