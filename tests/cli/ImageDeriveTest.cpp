#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

namespace rb::test {
namespace {

namespace fs = std::filesystem;

using Image = KVRVar<KVRPixelImage>;
using Pixel = PictureFile::Pixel;

TEST(ImageDerive, jpeg_is_told_without_the_transparency_that_it_lacks) {
    const TempFolder folder;
    const std::string in = writeColor(folder, 4, 2, {1, 2, 3, 4}), out = folder.file("out.jpg");
    const RbaResult text = runRba({"image", "alpha-invert", in, out});
    EXPECT_EQ(text.out, out + ": 4 x 2 px, RGB\n");
    EXPECT_EQ(runRba({"--json", "image", "alpha-invert", in, out}).json()["format"], 2);
    const std::string png = folder.file("out.png");
    EXPECT_EQ(runRba({"--json", "image", "alpha-invert", in, png}).json()["format"], 3);
}

Pixel derived(const char* command, Pixel color) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const RbaResult result = runRba({"image", command, writeColor(folder, 4, 2, color), out});
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
        runRba({"image", "mono", writeColor(folder, 4, 2, {1, 2, 3, 4}), out, "--json"}).json();
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
